#include "apps/tarvo-dewarp/PictureCoding.h"
#include "apps/tarvo-dewarp/video/Y4mHeader.h"
#include "tests/apps/video/VideoTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace tarvo::apps::video {
namespace {

TEST(Y4mHeader, isRead) {
    const Y4mHeader header = parseY4mHeader("YUV4MPEG2 W640 H481 F30000:1001 It A128:117 C420paldv Xa=b");
    EXPECT_EQ(header.width, 640);
    EXPECT_EQ(header.height, 481);
    EXPECT_EQ(header.rate, (FrameRate{30000, 1001}));
    EXPECT_EQ(header.colourSpace, "420paldv");
    EXPECT_TRUE(header.isYv12());
}

TEST(Y4mHeader, hasDefaults) {
    const Y4mHeader header = parseY4mHeader("YUV4MPEG2 H2 W16384");
    EXPECT_EQ(header.width, 16384);
    EXPECT_EQ(header.rate, (FrameRate{25, 1}));
    EXPECT_TRUE(header.isYv12());
    EXPECT_EQ(parseY4mHeader("YUV4MPEG2 W1 H1 F0:0").rate, (FrameRate{25, 1}));
    EXPECT_EQ(parseY4mHeader("YUV4MPEG2  W1   H1 ").width, 1);
}

TEST(Y4mHeader, tellsOtherKinds) {
    for (const char* const kind : {"422", "444", "411", "mono", "420p10", "444alpha", ""}) {
        EXPECT_FALSE(parseY4mHeader("YUV4MPEG2 W4 H4 C" + std::string(kind)).isYv12()) << kind;
    }
}

TEST(Y4mHeader, isRefusedWhenItLies) {
    for (const char* const line : {"",
                                   "YUV4MPEG",
                                   "YUV4MPEG23 W4 H4",
                                   "yuv4mpeg2 W4 H4",
                                   "RIFF",
                                   "YUV4MPEG2",
                                   "YUV4MPEG2 W4",
                                   "YUV4MPEG2 H4",
                                   "YUV4MPEG2 W0 H4",
                                   "YUV4MPEG2 W4 H0",
                                   "YUV4MPEG2 W-4 H4",
                                   "YUV4MPEG2 W4 H16385",
                                   "YUV4MPEG2 W99999999999999999999 H4",
                                   "YUV4MPEG2 W4x H4",
                                   "YUV4MPEG2 W H4",
                                   "YUV4MPEG2 W4 H4 F30",
                                   "YUV4MPEG2 W4 H4 F30:0",
                                   "YUV4MPEG2 W4 H4 F0:1",
                                   "YUV4MPEG2 W4 H4 F-30:1",
                                   "YUV4MPEG2 W4 H4 F:",
                                   "YUV4MPEG2 W4 H4 F2000:1",
                                   "YUV4MPEG2 W4 H4 F1:999999999",
                                   "YUV4MPEG2 W4 H4 F30:1:1"}) {
        EXPECT_THROW(parseY4mHeader(line), CodingError) << line;
    }
}

TEST(Y4mHeader, hasAnEnd) {
    std::istringstream endless(std::string(maxY4mLine + 1, 'Y'));
    EXPECT_THROW(readY4mLine(endless), CodingError);
    std::istringstream longest(std::string(maxY4mLine, 'Y') + "\nZ");
    EXPECT_EQ(readY4mLine(longest).size(), maxY4mLine);
    EXPECT_EQ(readY4mLine(longest), "Z");
    EXPECT_TRUE(longest.eof());
}

TEST(Y4mHeader, isWrittenAsItIsRead) {
    const std::string line = y4mHeaderLine(64, 48, {25, 2}, false);
    const Y4mHeader header = parseY4mHeader(line);
    EXPECT_EQ(header.width, 64);
    EXPECT_EQ(header.height, 48);
    EXPECT_EQ(header.rate, (FrameRate{25, 2}));
    EXPECT_TRUE(header.isYv12());
    EXPECT_THAT(line, testing::EndsWith("XCOLORRANGE=LIMITED"));
    EXPECT_THAT(y4mHeaderLine(64, 48, {25, 2}, true), testing::EndsWith("XCOLORRANGE=FULL"));
}

class Y4mVideo : public CVideoTest {
protected:
    /// As a file and as standard input.
    void expectBroken(const std::string& stream, const std::string& reason) const {
        writeBytes(file("in.y4m"), stream);
        expectFailure(video(fileText("in.y4m"), fileText("out.y4m")), 1, "in.y4m: " + reason);
        const Outcome piped = runWithInput(video("-", fileText("out.y4m")), stream);
        EXPECT_EQ(piped.status, 1);
        EXPECT_THAT(piped.err, testing::StartsWith("tarvo-dewarp: standard input: " + reason));
        EXPECT_THAT(names(), testing::ElementsAre("in.y4m"));
    }
};

TEST_F(Y4mVideo, isRefusedWhenItIsBroken) {
    expectBroken("", "it is empty");
    expectBroken("FRAME\n", "it is no YUV4MPEG2 stream");
    expectBroken("YUV4MPEG2 W16 H16", "it ends in its first line");
    expectBroken("YUV4MPEG2 W16 H16\n", "it holds no frames");
    expectBroken("YUV4MPEG2 W0 H16\n" + noiseFrame(16, 16, 0), "its width \"0\"");
    expectBroken("YUV4MPEG2 W16384 H16384\n" + noiseFrame(16, 16, 0), "it ends in the middle of frame 1");
    expectBroken("YUV4MPEG2 W16 H16 F1:0\n" + noiseFrame(16, 16, 0), "its frame rate \"1:0\"");
}

TEST_F(Y4mVideo, isRefusedWhenItBreaksOff) {
    const std::string whole = noiseClip(16, 16, 2);
    const std::size_t frame = 6 + 16 * 16 * 3 / 2;
    // Within the second frame's picture, its last byte, its first line, and just before it.
    for (const std::size_t missing : {frame - 100, std::size_t{1}, frame - 3, frame - 5, frame - 6}) {
        expectBroken(whole.substr(0, whole.size() - missing), "it ends in the middle of frame 2");
    }
}

TEST_F(Y4mVideo, isRefusedWhenItsSizeLies) {
    // Frames larger than the first line says: what follows is no frame.
    expectBroken("YUV4MPEG2 W8 H8\n" + noiseFrame(16, 16, 0), "frame 2 does not begin with FRAME");
    expectBroken(noiseClip(16, 16, 1) + "FRAMES\n" + std::string(384, 'x'), "frame 2 does not begin");
    expectBroken(noiseClip(16, 16, 1) + std::string(5000, 'x'), "frame 2 does not begin");
}

TEST_F(Y4mVideo, mayHaveParametersOfFrames) {
    std::string stream = noiseClip(16, 16, 1);
    const std::string plain = stream;
    stream.insert(stream.find("FRAME\n") + 5, " Ip X=1");
    EXPECT_EQ(shown(stream).frames, shown(plain).frames);
}

TEST_F(Y4mVideo, mayHaveOddSides) {
    // Of 17x13 the last column and row have colours which the transform has no place for.
    const Y4mClip clip = shown(noiseClip(17, 13, 2), {"--bypass"});
    EXPECT_EQ(clip.frames.size(), 2U);
    // As the transform takes it: rows of luma padded by one, 8 colours from 6 rows, 9 apart, in planes of a
    // quarter.
    const std::string frame = noiseFrame(17, 13, 0).substr(6);
    std::string raw(18 * 13 / 2 * 3, '\0');
    for (std::size_t y = 0; y < 13; ++y) {
        raw.replace(y * 18, 17, frame, y * 17, 17);
    }
    for (std::size_t y = 0; y < 6; ++y) {
        raw.replace(234 + 58 + y * 9, 8, frame, 221 + y * 9, 8);
        raw.replace(234 + y * 9, 8, frame, 221 + 63 + y * 9, 8);
    }
    writeBytes(file("odd.raw"), raw);
    const Outcome outcome = run({"still", fileText("odd.raw"), fileText("still.raw"), "--input-format",
                                 "yv12", "--input-size", "17x13", "--output-format", "yv12", "--output-width",
                                 "64", "--output-height", "48", "--bypass"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(clip.yv12(0), readBytes(file("still.raw")));
}

TEST_F(Y4mVideo, wantsEvenSidesToWrite) {
    writeBytes(file("in.y4m"), noiseClip(64, 48, 1));
    // A panorama of 100 degrees, 64 wide: 64 · 67.5 / 100 = 43.2 rows.
    const std::vector<std::string> arguments{
        "video",       fileText("in.y4m"), fileText("out.y4m"),        "--module", TARVO_PRODUCT_MODULE,
        "--view-type", "panoramaSingle",   "--panorama-field-of-view", "100",      "--output-width",
        "64"};
    expectFailure(arguments, 2, "the output would have 64x43 pixels");
}

TEST_F(Y4mVideo, isReadAsYv12AloneFromStandardInput) {
    const Outcome outcome =
        runWithInput(video("-", fileText("out.y4m"), {"--input-format", "rgb32"}), noiseClip(16, 16, 1));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, testing::HasSubstr("yv12 only"));
    expectFailure(video("-", fileText("out.y4m"), {"--output-format", "rgb32"}), 2, "yv12 frames only");
    expectFailure(video("-", fileText("out.y4m"), {"--encoder", "ffv1"}), 2, "is not encoded");
}

} // namespace
} // namespace tarvo::apps::video
