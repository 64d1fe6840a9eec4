#include "apps/tarvo-dewarp/FrameCoding.h"

#include "apps/tarvo-dewarp/video/FramePlanes.h"
#include "render/colour/ConvertRGB32ToYV12.h"
#include "render/colour/YuvToBgra.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace tarvo::apps {
namespace {

using host::FramePixels;
using host::VideoFormat;

const std::uint8_t* bytesOf(const std::vector<std::byte>& frame) {
    return reinterpret_cast<const std::uint8_t*>(frame.data());
}

/// Colours that every format can hold, each over 2 × 2 pixels so that nothing is lost by sharing chroma.
Picture blocks(int width, int height) {
    std::mt19937 random(17);
    std::uniform_int_distribution<int> level(60, 190);
    Picture picture(width, height);
    for (int y = 0; y < height; y += 2) {
        for (int x = 0; x < width; x += 2) {
            const auto draw = [&] { return static_cast<std::uint8_t>(level(random)); };
            const Bgra colour{draw(), draw(), draw(), 255};
            for (int i = 0; i < 4; ++i) {
                if (x + i % 2 < width && y + i / 2 < height) {
                    picture.at(x + i % 2, y + i / 2) = colour;
                }
            }
        }
    }
    return picture;
}

void expectClose(const Picture& one, const Picture& other, int tolerance) {
    ASSERT_EQ(one.width, other.width);
    ASSERT_EQ(one.height, other.height);
    for (int y = 0; y < one.height; ++y) {
        for (int x = 0; x < one.width; ++x) {
            const Bgra a = one.at(x, y);
            const Bgra b = other.at(x, y);
            EXPECT_LE(std::abs(a.blue - b.blue), tolerance) << x << ',' << y;
            EXPECT_LE(std::abs(a.green - b.green), tolerance) << x << ',' << y;
            EXPECT_LE(std::abs(a.red - b.red), tolerance) << x << ',' << y;
        }
    }
}

render::BgraTarget targetIn(Picture& picture) {
    return {&picture.pixels.front().blue, picture.width * 4};
}

TEST(FrameCoding, layoutsHaveTheBytesOfTheirFormats) {
    EXPECT_EQ(frameFormat(FramePixels::rgb32, 6, 4, true), (VideoFormat{FramePixels::rgb32, 6, 4, 96}));
    EXPECT_EQ(frameFormat(FramePixels::yuy2, 6, 4, true), (VideoFormat{FramePixels::yuy2, 6, 4, 48}));
    EXPECT_EQ(frameFormat(FramePixels::yv12, 6, 4, false), (VideoFormat{FramePixels::yv12, 6, 4, 36}));
    // 5 x 3 rows of 6 bytes, chroma 2 x 1: the planes are found at two thirds and a quarter of that.
    const VideoFormat odd = frameFormat(FramePixels::yv12, 5, 3, false);
    EXPECT_EQ(odd.frameBytes, 27U);
    const video::Yv12Planes planes = video::yv12Planes(odd);
    EXPECT_EQ(planes.luma, (video::Plane{0, 6, 5, 3}));
    EXPECT_EQ(planes.red, (video::Plane{18, 3, 2, 1}));
    EXPECT_EQ(planes.blue, (video::Plane{22, 3, 2, 1}));
    EXPECT_EQ(frameFormat(FramePixels::yv12, 6, 4, false, 10).frameBytes, 60U);
    EXPECT_EQ(frameFormat(FramePixels::rgb32, 6, 4, false), (VideoFormat{FramePixels::rgb32, 6, -4, 96}));
    EXPECT_EQ(frameFormat(FramePixels::yv12, 6, 4, true), (VideoFormat{FramePixels::yv12, 6, 4, 36}));
}

TEST(FrameCoding, rgb32CarriesEveryByte) {
    const Picture picture = blocks(5, 3);
    for (const bool isBottomUp : {false, true}) {
        const VideoFormat format = frameFormat(FramePixels::rgb32, 5, 3, isBottomUp, 23);
        const std::vector<std::byte> frame = encodeFrame(picture, format);
        ASSERT_EQ(frame.size(), 69U);
        const Bgra first = picture.at(0, 0);
        const std::size_t at = isBottomUp ? 46 : 0;
        EXPECT_EQ(std::to_integer<int>(frame[at]), first.blue);
        EXPECT_EQ(std::to_integer<int>(frame[at + 1]), first.green);
        EXPECT_EQ(std::to_integer<int>(frame[at + 2]), first.red);
        EXPECT_EQ(std::to_integer<int>(frame[at + 3]), 255);
        expectClose(decodeFrame(frame, format), picture, 0);
    }
}

TEST(FrameCoding, yv12InputComesBackThroughTheComponentsConversion) {
    // One colour at a time: chroma is mixed across neighbours.
    const Picture colours = blocks(12, 8);
    for (int i = 0; i < 24; ++i) {
        const Picture picture(12, 8, colours.at(i % 6 * 2, i / 6 * 2));
        const std::vector<std::byte> frame =
            encodeFrame(picture, frameFormat(FramePixels::yv12, 12, 8, false, 16));
        Picture shown(12, 8);
        const std::uint8_t* const bytes = bytesOf(frame);
        render::convertYv12ToBgra({12, 8, {bytes, bytes + 128, bytes + 160}, {16, 8, 8}}, targetIn(shown),
                                  {0, 0, 12, 8});
        expectClose(shown, picture, 2);
    }
}

TEST(FrameCoding, yuy2InputComesBackThroughTheComponentsConversion) {
    const Picture picture = blocks(12, 8);
    const std::vector<std::byte> frame = encodeFrame(picture, frameFormat(FramePixels::yuy2, 12, 8, false));
    Picture shown(12, 8);
    render::convertYuy2ToBgra({12, 8, bytesOf(frame), frame.size()}, targetIn(shown), {0, 0, 12, 8});
    expectClose(shown, picture, 2);
}

TEST(FrameCoding, deliveredYv12ComesBackAsThePictureItWasMadeFrom) {
    const Picture picture = blocks(12, 8);
    const VideoFormat format = frameFormat(FramePixels::yv12, 12, 8, false);
    std::vector<std::byte> frame(format.frameBytes);
    auto* const bytes = reinterpret_cast<std::uint8_t*>(frame.data());
    ASSERT_EQ(render::ConvertRGB32ToYV12(&picture.pixels.front().blue, 48,
                                         {bytes, bytes + 12 * 8 * 5 / 4, bytes + 12 * 8}, {12, 6, 6},
                                         {12, 8}),
              render::ImageStatus::done);
    expectClose(decodeFrame(frame, format), picture, 3);
}

} // namespace
} // namespace tarvo::apps
