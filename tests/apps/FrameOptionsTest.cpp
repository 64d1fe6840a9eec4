#include "apps/tarvo-dewarp/PictureFile.h"
#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tarvo::apps {
namespace {

using testing::HasSubstr;

/// `still` with frames of every form.
class FrameOptions : public CAppTest {
protected:
    Outcome still(const std::string& input, const std::string& output,
                  std::vector<std::string> options) const {
        options.insert(options.begin(), {"still", input, fileText(output)});
        return run(options);
    }

    Picture view(const std::string& input, const std::vector<std::string>& options) const {
        const Outcome outcome = still(input, "out.png", options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return readPicture(file("out.png"));
    }

    std::string sceneFile() const {
        EXPECT_EQ(run({"scene", fileText("scene.png"), "--size", "320x240"}).status, 0);
        return fileText("scene.png");
    }

    std::string rawFile(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
        writeBytes(file(name), bytes);
        return fileText(name);
    }
};

const std::vector<std::string> smallOutput{"--output-width", "64", "--output-height", "48"};

std::vector<std::string> with(std::vector<std::string> options) {
    options.insert(options.end(), smallOutput.begin(), smallOutput.end());
    return options;
}

TEST_F(FrameOptions, everyFormatShowsTheSameView) {
    const std::string input = sceneFile();
    const Picture plain = view(input, smallOutput);
    for (const std::string in : {"rgb32", "yv12", "yuy2"}) {
        for (const std::string out : {"rgb32", "yv12"}) {
            SCOPED_TRACE(in + " to " + out);
            const Picture shown = view(input, with({"--input-format", in, "--output-format", out}));
            const bool isExact = in == "rgb32" && out == "rgb32";
            // What sharing chroma costs along the scene's edges; another colour for a surface is tens of
            // levels.
            EXPECT_LE(meanDifference(shown, plain), isExact ? 0.0 : 5.0);
            EXPECT_EQ(meanDifference(shown, plain) == 0.0, isExact);
        }
    }
}

TEST_F(FrameOptions, theOrderOfRowsInMemoryDoesNotShow) {
    const std::string input = pictureFile("in.png", 33, 17);
    const Picture plain = view(input, with({"--bypass"}));
    EXPECT_EQ(meanDifference(view(input, with({"--bypass", "--input-bottom-up"})), plain), 0.0);
    EXPECT_EQ(meanDifference(view(input, with({"--bypass", "--output-bottom-up"})), plain), 0.0);
    EXPECT_EQ(
        meanDifference(view(input, with({"--bypass", "--input-bottom-up", "--output-bottom-up"})), plain),
        0.0);
}

TEST_F(FrameOptions, rawFramesPassByteForByte) {
    // Shown 1:1 the bypass copies every pixel.
    std::vector<std::uint8_t> bytes(6 * 4 * 4);
    std::generate(bytes.begin(), bytes.end(),
                  [value = 7]() mutable { return static_cast<std::uint8_t>(value += 9); });
    const std::vector<std::string> options{"--bypass", "--input-size",    "6x4", "--output-width",
                                           "6",        "--output-height", "4"};
    ASSERT_EQ(still(rawFile("in.raw", bytes), "out.raw", options).status, 0);
    EXPECT_EQ(readBytes(file("out.raw")), bytes);

    std::vector<std::string> bottomUp = options;
    bottomUp.push_back("--output-bottom-up");
    ASSERT_EQ(still(fileText("in.raw"), "up.RAW", bottomUp).status, 0);
    std::vector<std::uint8_t> turned;
    for (int row = 3; row >= 0; --row) {
        turned.insert(turned.end(), bytes.begin() + row * 24, bytes.begin() + (row + 1) * 24);
    }
    EXPECT_EQ(readBytes(file("up.RAW")), turned);
}

TEST_F(FrameOptions, paddingOfRawRowsIsSkipped) {
    const std::string input = pictureFile("in.png", 6, 4);
    const std::vector<std::string> to{"--bypass", "--output-width", "6", "--output-height", "4"};
    ASSERT_EQ(still(input, "tight.raw", to).status, 0);
    const std::vector<std::uint8_t> tight = readBytes(file("tight.raw"));
    ASSERT_EQ(tight.size(), 96U);
    std::vector<std::uint8_t> padded;
    for (int row = 0; row < 4; ++row) {
        padded.insert(padded.end(), tight.begin() + row * 24, tight.begin() + (row + 1) * 24);
        padded.insert(padded.end(), 7, 0xAB);
    }
    std::vector<std::string> options = to;
    options.insert(options.end(), {"--input-size", "6x4", "--input-stride", "31"});
    ASSERT_EQ(still(rawFile("padded.raw", padded), "again.raw", options).status, 0);
    EXPECT_EQ(readBytes(file("again.raw")), tight);
}

TEST_F(FrameOptions, deliveredYv12HasThreePlanes) {
    ASSERT_EQ(still(sceneFile(), "out.raw", with({"--output-format", "yv12"})).status, 0);
    EXPECT_EQ(readBytes(file("out.raw")).size(), 64U * 48U * 3U / 2U);
}

// A row of odd width is padded by a byte, which is no pixel.
TEST_F(FrameOptions, deliveredYv12OfOddWidthIsTheSameView) {
    const std::string input = sceneFile();
    const Picture plain = view(input, {"--output-width", "161"});
    ASSERT_EQ(plain.width, 161);
    EXPECT_LE(meanDifference(view(input, {"--output-width", "161", "--output-format", "yv12"}), plain), 5.0);
}

TEST_F(FrameOptions, refusesWhatDoesNotFit) {
    const std::string raw = rawFile("in.raw", std::vector<std::uint8_t>(96));
    const std::string odd = pictureFile("odd.png", 5, 4);
    const std::string thin = pictureFile("thin.png", 1, 8);
    const struct {
        std::string input;
        std::vector<std::string> options;
        int status;
        std::string message;
    } cases[]{
        {raw, {}, 2, "give --input-size"},
        {raw, {"--input-size", "6x5"}, 1, "it has 96 bytes, and a frame of 6x5 in this format has 120"},
        {raw, {"--input-size", "6x3"}, 1, "it has 96 bytes, and a frame of 6x3 in this format has 72"},
        {raw, {"--input-size", "6x4", "--input-stride", "23"}, 2, "a row takes 24 bytes"},
        {raw, {"--input-size", "6x4", "--input-stride", "0"}, 2, "--input-stride"},
        {raw, {"--input-size", "6x4", "--input-stride", "24.5"}, 2, "--input-stride"},
        {raw, {"--input-size", "16384x16384", "--input-stride", "1048576"}, 2, "is too large"},
        {raw, {"--input-size", "7x4", "--input-format", "yuy2"}, 2, "a yuy2 frame has an even width"},
        {raw, {"--input-size", "96x1", "--input-format", "yv12"}, 2, "a yv12 frame has at least 2x2 pixels"},
        {odd, {"--input-format", "yuy2"}, 2, "a yuy2 frame has an even width"},
        {thin, {"--input-format", "yv12"}, 2, "a yv12 frame has at least 2x2 pixels"},
        {odd, {"--input-size", "5x4"}, 2, "--input-size goes with a raw frame only"},
        {odd, {"--input-stride", "20"}, 2, "--input-stride goes with a raw frame only"},
        {odd, {"--input-format", "nv12"}, 2, "rgb32, yv12 or yuy2"},
        {odd, {"--output-format", "yuy2"}, 2, "rgb32 or yv12"},
        {fileText("absent.raw"), {"--input-size", "6x4"}, 1, "absent.raw"},
    };
    for (const auto& wrong : cases) {
        SCOPED_TRACE(testing::PrintToString(wrong.options));
        const Outcome outcome = still(wrong.input, "refused.png", wrong.options);
        EXPECT_EQ(outcome.status, wrong.status);
        EXPECT_THAT(outcome.err, HasSubstr(wrong.message));
        EXPECT_FALSE(std::filesystem::exists(file("refused.png")));
    }
}

} // namespace
} // namespace tarvo::apps
