#include "tests/apps/video/VideoTest.h"

#include "apps/host/Module.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>

namespace tarvo::apps {
namespace {

const std::vector<std::string> smallView{"--output-width", "64", "--output-height", "48"};

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::size_t frameSize(int width, int height) {
    return static_cast<std::size_t>(width * height + 2 * ((width + 1) / 2) * ((height + 1) / 2));
}

} // namespace

std::vector<std::uint8_t> Y4mClip::yv12(std::size_t frame) const {
    const std::string& planes = frames.at(frame);
    const std::size_t luma = static_cast<std::size_t>(width * height);
    const std::string swapped =
        planes.substr(0, luma) + planes.substr(luma + luma / 4) + planes.substr(luma, luma / 4);
    return {swapped.begin(), swapped.end()};
}

Y4mClip parseClip(std::string_view text) {
    Y4mClip clip;
    clip.header = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(clip.header.size() + 1, text.size()));
    if (std::sscanf(clip.header.c_str(), "YUV4MPEG2 W%d H%d", &clip.width, &clip.height) != 2) {
        ADD_FAILURE() << "no YUV4MPEG2: " << clip.header;
        return clip;
    }
    const std::size_t size = frameSize(clip.width, clip.height);
    while (!text.empty()) {
        if (!text.starts_with("FRAME\n") || text.size() < 6 + size) {
            ADD_FAILURE() << "frame " << clip.frames.size() << " is not whole";
            return clip;
        }
        clip.frames.emplace_back(text.substr(6, size));
        text.remove_prefix(6 + size);
    }
    return clip;
}

std::string noiseFrame(int width, int height, unsigned number) {
    std::string frame = "FRAME\n";
    std::uint32_t state = 12345 + 977 * number;
    for (std::size_t i = 0; i < frameSize(width, height); ++i) {
        state = state * 1664525 + 1013904223;
        frame += static_cast<char>(state >> 24);
    }
    return frame;
}

std::string noiseClip(int width, int height, unsigned frames) {
    std::string clip =
        "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F30:1 Ip A1:1 C420jpeg\n";
    for (unsigned i = 0; i < frames; ++i) {
        clip += noiseFrame(width, height, i);
    }
    return clip;
}

Outcome runWithInput(const std::vector<std::string>& arguments, std::streambuf& input) {
    std::streambuf* const former = std::cin.rdbuf(&input);
    std::cin.clear();
    const Outcome outcome = run(arguments);
    std::cin.rdbuf(former);
    std::cin.clear();
    return outcome;
}

Outcome runWithInput(const std::vector<std::string>& arguments, const std::string& input) {
    std::stringbuf buffer(input, std::ios::in);
    return runWithInput(arguments, buffer);
}

void CVideoTest::SetUp() {
    const host::CModule module(TARVO_PRODUCT_MODULE);
    VARIANT_BOOL isCapable = VARIANT_FALSE;
    ASSERT_EQ(module.createTransform()->CheckDewarpingCapability(&isCapable), S_OK);
    if (isCapable == VARIANT_FALSE) {
        GTEST_SKIP() << "this machine cannot render";
    }
}

std::vector<std::string> CVideoTest::video(const std::string& input, const std::string& output,
                                           const std::vector<std::string>& options) const {
    return joined(joined({"video", input, output, "--module", TARVO_PRODUCT_MODULE}, smallView), options);
}

void CVideoTest::makeVideo(const std::string& input, const std::string& output,
                           const std::vector<std::string>& options) const {
    const Outcome outcome = run(video(input, output, options));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "");
}

Y4mClip CVideoTest::shown(const std::string& stream, const std::vector<std::string>& options) const {
    writeBytes(file("shown-in.y4m"), stream);
    makeVideo(fileText("shown-in.y4m"), fileText("shown-out.y4m"), options);
    const std::vector<std::uint8_t> bytes = readBytes(file("shown-out.y4m"));
    return parseClip({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::vector<std::uint8_t> CVideoTest::still(const Y4mClip& clip, std::size_t frame,
                                            const std::vector<std::string>& options) const {
    writeBytes(file("still-in.raw"), clip.yv12(frame));
    const std::string size = std::to_string(clip.width) + "x" + std::to_string(clip.height);
    const Outcome outcome = run(joined(joined({"still", fileText("still-in.raw"), fileText("still-out.raw"),
                                               "--module", TARVO_PRODUCT_MODULE, "--input-format", "yv12",
                                               "--output-format", "yv12", "--input-size", size},
                                              smallView),
                                       options));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return readBytes(file("still-out.raw"));
}

void CVideoTest::expectFailure(const std::vector<std::string>& arguments, int status,
                               const std::string& message) const {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const std::vector<std::string> before = names();
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, status);
    EXPECT_THAT(outcome.err, testing::HasSubstr(message));
    EXPECT_THAT(outcome.err, testing::StartsWith("tarvo-dewarp: "));
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << outcome.err;
    EXPECT_EQ(names(), before);
}

} // namespace tarvo::apps
