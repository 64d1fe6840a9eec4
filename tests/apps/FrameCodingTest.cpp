#include "apps/tarvo-dewarp/FrameCoding.h"

#include "render/colour/ConvertRGB32ToYV12.h"
#include "render/colour/YuvToBgra.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace tarvo::apps {
namespace {

using render::Bgra;
using render::InputFormat;
using render::OutputFormat;
using render::Picture;
using render::PixelFormat;

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
    EXPECT_EQ(inputFrameFormat(PixelFormat::rgb32, 6, 4, true),
              (InputFormat{PixelFormat::rgb32, 6, 4, 24, 96, true}));
    EXPECT_EQ(inputFrameFormat(PixelFormat::yuy2, 6, 4, true),
              (InputFormat{PixelFormat::yuy2, 6, 4, 12, 48, false}));
    EXPECT_EQ(inputFrameFormat(PixelFormat::yv12, 6, 4, false),
              (InputFormat{PixelFormat::yv12, 6, 4, 6, 36, false}));
    // 5 x 3 rows of 6 bytes, chroma 2 x 1: the planes are found at two thirds and a quarter of that.
    const InputFormat odd = inputFrameFormat(PixelFormat::yv12, 5, 3, false);
    EXPECT_EQ(odd.frameBytes, 27U);
    EXPECT_EQ(render::yv12Plane(odd, 0), (render::PlaneFormat{5, 3, 6, 18}));
    EXPECT_EQ(render::yv12Plane(odd, 1), (render::PlaneFormat{2, 1, 3, 4}));
    EXPECT_EQ(inputFrameFormat(PixelFormat::yv12, 6, 4, false, 10).frameBytes, 60U);
    EXPECT_EQ(frameBytes(outputFrameFormat(PixelFormat::rgb32, 6, 4, false)), 96U);
    EXPECT_EQ(frameBytes(outputFrameFormat(PixelFormat::yv12, 6, 4, false)), 36U);
}

TEST(FrameCoding, rgb32CarriesEveryByte) {
    const Picture picture = blocks(5, 3);
    for (const bool isBottomUp : {false, true}) {
        const InputFormat format = inputFrameFormat(PixelFormat::rgb32, 5, 3, isBottomUp, 23);
        const std::vector<std::byte> frame = encodeFrame(picture, format);
        ASSERT_EQ(frame.size(), 69U);
        const Bgra first = picture.at(0, 0);
        const std::size_t at = isBottomUp ? 46 : 0;
        EXPECT_EQ(std::to_integer<int>(frame[at]), first.blue);
        EXPECT_EQ(std::to_integer<int>(frame[at + 1]), first.green);
        EXPECT_EQ(std::to_integer<int>(frame[at + 2]), first.red);
        EXPECT_EQ(std::to_integer<int>(frame[at + 3]), 255);
        expectClose(decodeFrame(frame, {PixelFormat::rgb32, 5, 3, 23, isBottomUp}), picture, 0);
    }
}

TEST(FrameCoding, yv12InputComesBackThroughTheComponentsConversion) {
    // One colour at a time: chroma is mixed across neighbours.
    const Picture colours = blocks(12, 8);
    for (int i = 0; i < 24; ++i) {
        const Picture picture(12, 8, colours.at(i % 6 * 2, i / 6 * 2));
        const std::vector<std::byte> frame =
            encodeFrame(picture, inputFrameFormat(PixelFormat::yv12, 12, 8, false, 16));
        Picture shown(12, 8);
        const std::uint8_t* const bytes = bytesOf(frame);
        render::convertYv12ToBgra({12, 8, {bytes, bytes + 128, bytes + 160}, {16, 8, 8}}, targetIn(shown),
                                  {0, 0, 12, 8});
        expectClose(shown, picture, 2);
    }
}

TEST(FrameCoding, yuy2InputComesBackThroughTheComponentsConversion) {
    const Picture picture = blocks(12, 8);
    const std::vector<std::byte> frame =
        encodeFrame(picture, inputFrameFormat(PixelFormat::yuy2, 12, 8, false));
    Picture shown(12, 8);
    render::convertYuy2ToBgra({12, 8, bytesOf(frame), frame.size()}, targetIn(shown), {0, 0, 12, 8});
    expectClose(shown, picture, 2);
}

TEST(FrameCoding, deliveredYv12ComesBackAsThePictureItWasMadeFrom) {
    const Picture picture = blocks(12, 8);
    const OutputFormat format = outputFrameFormat(PixelFormat::yv12, 12, 8, false);
    std::vector<std::byte> frame(frameBytes(format));
    auto* const bytes = reinterpret_cast<std::uint8_t*>(frame.data());
    ASSERT_EQ(render::ConvertRGB32ToYV12(&picture.pixels.front().blue, 48,
                                         {bytes, bytes + 12 * 8 * 5 / 4, bytes + 12 * 8}, {12, 6, 6},
                                         {12, 8}),
              render::ImageStatus::done);
    expectClose(decodeFrame(frame, format), picture, 3);
}

} // namespace
} // namespace tarvo::apps
