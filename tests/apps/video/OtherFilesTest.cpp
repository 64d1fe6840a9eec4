
#include "tests/apps/video/VideoTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::apps {
namespace {

using testing::HasSubstr;

class OtherFiles : public CVideoTest {
protected:
    std::vector<std::uint8_t> shownFrom(const std::string& input,
                                        const std::vector<std::string>& options = {}) {
        makeVideo(input, fileText("again.y4m"), options);
        return readBytes(file("again.y4m"));
    }
};

TEST_F(OtherFiles, giveTheSameFramesWithoutLoss) {
    writeBytes(file("in.y4m"), noiseClip(96, 72, 5));
    const std::vector<std::string> whole{"--bypass"};
    const std::vector<std::string> lossless{"--bypass", "--encoder", "ffv1"};
    const std::vector<std::uint8_t> expected = shownFrom(fileText("in.y4m"), whole);
    // Once shown through, in either kind of file; shown again from there, both have the same frames.
    makeVideo(fileText("in.y4m"), fileText("once.mkv"), lossless);
    makeVideo(fileText("in.y4m"), fileText("once.y4m"), whole);
    const std::vector<std::uint8_t> twice = shownFrom(fileText("once.y4m"), whole);
    EXPECT_EQ(shownFrom(fileText("once.mkv"), whole), twice);
    EXPECT_NE(twice, expected);
}

TEST_F(OtherFiles, keepRateAndLength) {
    writeBytes(file("in.y4m"), noiseClip(96, 72, 6));
    for (const char* const name : {"out.mkv", "out.mp4", "out.avi"}) {
        SCOPED_TRACE(name);
        makeVideo(fileText("in.y4m"), fileText(name));
        const std::vector<std::uint8_t> again = shownFrom(fileText(name));
        const Y4mClip clip = parseClip({reinterpret_cast<const char*>(again.data()), again.size()});
        EXPECT_THAT(clip.header, HasSubstr(" W64 H48 F30:1 "));
        EXPECT_EQ(clip.frames.size(), 6U);
        const std::vector<std::uint8_t> half = shownFrom(fileText(name), {"--output-frame-rate", "15"});
        EXPECT_EQ(parseClip({reinterpret_cast<const char*>(half.data()), half.size()}).frames.size(), 3U);
    }
}

TEST_F(OtherFiles, takeWholeColours) {
    // Red, green and blue survive frames of RGB32 both ways; a lossless file of those loses nothing.
    writeBytes(file("in.y4m"), noiseClip(64, 48, 2));
    const std::vector<std::string> rgb{"--bypass", "--input-format", "rgb32", "--output-format",
                                       "rgb32",    "--encoder",      "ffv1"};
    makeVideo(fileText("in.y4m"), fileText("once.mkv"), rgb);
    makeVideo(fileText("once.mkv"), fileText("twice.mkv"), rgb);
    const std::vector<std::string> toYv12{"--bypass", "--input-format", "rgb32"};
    EXPECT_EQ(shownFrom(fileText("once.mkv"), toYv12), shownFrom(fileText("twice.mkv"), toYv12));
}

TEST_F(OtherFiles, areRefusedWhenTheyBreakOff) {
    writeBytes(file("in.y4m"), noiseClip(96, 72, 20));
    for (const char* const name : {"out.mkv", "out.mp4", "out.avi"}) {
        SCOPED_TRACE(name);
        makeVideo(fileText("in.y4m"), fileText(name));
        std::vector<std::uint8_t> bytes = readBytes(file(name));
        bytes.resize(bytes.size() * 2 / 3);
        writeBytes(file(name), bytes);
        expectFailure(video(fileText(name), fileText("again.y4m")), 1, std::string(name) + ": it ");
    }
}

TEST_F(OtherFiles, areRefusedWhenTheyAreNone) {
    writeBytes(file("text.mp4"), "This is no video.\n");
    expectFailure(video(fileText("text.mp4"), fileText("out.y4m")), 1, "it cannot be read as a video");
    writeBytes(file("empty.mp4"), "");
    expectFailure(video(fileText("empty.mp4"), fileText("out.y4m")), 1, "it is empty");
    writeBytes(file("in.y4m"), noiseClip(16, 16, 1));
    const std::string in = fileText("in.y4m");
    expectFailure(video(in, fileText("out.png")), 1, "do not hold a whole video");
    expectFailure(video(in, fileText("out.nothing")), 1, "no kind of video");
    expectFailure(video(in, fileText("out")), 1, "no kind of video");
    expectFailure(video(in, fileText("out.mkv"), {"--encoder", "nothing"}), 2,
                  "no video encoder \"nothing\"");
    expectFailure(video(in, fileText("out.mp4"), {"--encoder", "ffv1"}), 2, "cannot hold");
}

TEST_F(OtherFiles, readKindsOfYuv4Mpeg2ThatHaveOtherColours) {
    // Grey of 4:4:4 is grey of 4:2:0.
    const std::string luma = noiseFrame(16, 16, 0).substr(6, 256);
    const std::string grey444 = "YUV4MPEG2 W16 H16 F30:1 C444\nFRAME\n" + luma + std::string(512, '\x80');
    const std::string grey420 = "YUV4MPEG2 W16 H16 F30:1 C420jpeg\nFRAME\n" + luma + std::string(128, '\x80');
    writeBytes(file("444.y4m"), grey444);
    writeBytes(file("420.y4m"), grey420);
    EXPECT_EQ(shownFrom(fileText("444.y4m")), shownFrom(fileText("420.y4m")));
}

} // namespace
} // namespace tarvo::apps
