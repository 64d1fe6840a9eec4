#include "apps/tarvo-dewarp/PictureFile.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::apps {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class FileErrors : public CAppTest {
protected:
    /// Runs `still` on an unreadable input and expects the message, exit status 1 and no output.
    void expectUnreadable(const std::string& input, const std::string& reason) {
        SCOPED_TRACE(input);
        const Outcome outcome = run({"still", input, fileText("out.png")});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, AllOf(StartsWith("tarvo-dewarp: " + input + ": "), HasSubstr(reason)));
        EXPECT_FALSE(std::filesystem::exists(file("out.png")));
    }

    /// Runs `still` on a readable input and expects an exit status 1 that names the output.
    void expectUnwritable(const std::string& output, const std::string& reason) {
        SCOPED_TRACE(output);
        const Outcome outcome = run({"still", pictureFile("in.png", 8, 6), output, "--output-width", "8"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, AllOf(StartsWith("tarvo-dewarp: " + output + ": "), HasSubstr(reason)));
    }
};

TEST_F(FileErrors, nameAMissingInput) {
    expectUnreadable(fileText("missing.png"), "No such file or directory");
    expectUnreadable(fileText("missing/in.png"), "");
}

TEST_F(FileErrors, nameWhatIsNoPicture) {
    writeBytes(file("empty.png"), "");
    expectUnreadable(fileText("empty.png"), "it is empty");
    writeBytes(file("text.png"), "This is not a picture.\n");
    expectUnreadable(fileText("text.png"), "it is not a PNG, JPEG, binary PGM or binary PPM picture");
    writeBytes(file("short.png"), "x");
    expectUnreadable(fileText("short.png"), "it is not a PNG");
    std::filesystem::create_directory(file("directory.png"));
    expectUnreadable(fileText("directory.png"), "it is a directory");
}

TEST_F(FileErrors, nameATruncatedPicture) {
    const std::vector<std::uint8_t> whole = readBytes(pictureFile("whole.png", 40, 30));
    writeBytes(file("half.png"),
               {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2)});
    expectUnreadable(fileText("half.png"), "it cannot be read as a picture");
}

TEST_F(FileErrors, nameAnUnwritableOutput) {
    expectUnwritable(fileText("missing/out.png"), "there is no directory");
    std::filesystem::create_directory(file("directory.png"));
    expectUnwritable(fileText("directory.png"), "it is a directory");
    EXPECT_TRUE(std::filesystem::is_empty(file("directory.png")));
    // The input lies where a directory would have to be.
    expectUnwritable(fileText("in.png/out.png"), "there is no directory");
    const Outcome scene = run({"scene", fileText("missing/out.png"), "--size", "4x3"});
    EXPECT_EQ(scene.status, 1);
    EXPECT_THAT(scene.err, HasSubstr("there is no directory"));
    EXPECT_THAT(names(), ElementsAre("directory.png", "in.png"));
}

TEST_F(FileErrors, leaveNothingBehindWhenTheLastStepFails) {
    // No file system allows a name of this length, but that shows only when the written file gets it.
    expectUnwritable(fileText(std::string(300, 'n') + ".png"), "");
    EXPECT_THAT(names(), ElementsAre("in.png"));
}

TEST_F(FileErrors, leaveAnExistingOutputAsItWas) {
    writeBytes(file("out.png"), "precious");
    writeBytes(file("text.png"), "no picture");
    EXPECT_EQ(run({"still", fileText("text.png"), fileText("out.png")}).status, 1);
    // An output too large to make is a matter of the arguments.
    const std::string tall = pictureFile("tall.png", 1, 400);
    EXPECT_EQ(run({"still", tall, fileText("out.png")}).status, 2);
    EXPECT_EQ(readBytes(file("out.png")), bytesOf("precious"));
    EXPECT_THAT(names(), ElementsAre("out.png", "tall.png", "text.png"));
}

} // namespace
} // namespace tarvo::apps
