#include "render/colour/MirrorRGB24.h"

#include "tests/render/colour/Plane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

namespace tarvo::render {
namespace {

constexpr std::array<FlipMode, 3> allModes{FlipMode::upsideDown, FlipMode::leftToRight, FlipMode::halfTurn};

TEST(MirrorRGB24, theModesAreNumbered) {
    EXPECT_EQ(static_cast<int>(FlipMode::upsideDown), 0);
    EXPECT_EQ(static_cast<int>(FlipMode::leftToRight), 1);
    EXPECT_EQ(static_cast<int>(FlipMode::halfTurn), 2);
}

/// Three columns and three rows; the letters of a pixel are its bytes.
using Letters = std::array<char, 28>;
constexpr Letters picture{"abcdefghiABCDEFGHIjklmnopqr"};

std::string mirrored(FlipMode mode) {
    std::array<std::uint8_t, 27> bytes{};
    std::copy_n(picture.begin(), 27, bytes.begin());
    EXPECT_EQ(MirrorRGB24(bytes.data(), 9, {3, 3}, mode), ImageStatus::done);
    return {bytes.begin(), bytes.end()};
}

TEST(MirrorRGB24, rowsOrPixelsOrBothChangeTheirOrderAndTheBytesOfAPixelDoNot) {
    EXPECT_EQ(mirrored(FlipMode::upsideDown), "jklmnopqrABCDEFGHIabcdefghi");
    EXPECT_EQ(mirrored(FlipMode::leftToRight), "ghidefabcGHIDEFABCpqrmnojkl");
    EXPECT_EQ(mirrored(FlipMode::halfTurn), "pqrmnojklGHIDEFABCghidefabc");
}

TEST(MirrorRGB24, theChecksHaveTheirOrder) {
    std::array<std::uint8_t, 64> image{};
    const auto unknown = static_cast<FlipMode>(3);
    const auto negative = static_cast<FlipMode>(-1);
    EXPECT_EQ(MirrorRGB24(nullptr, 9, {0, 0}, unknown), ImageStatus::nullPointer);
    EXPECT_EQ(MirrorRGB24(nullptr, 9, {3, 3}, FlipMode::halfTurn), ImageStatus::nullPointer);
    EXPECT_EQ(MirrorRGB24(image.data(), 9, {0, 3}, unknown), ImageStatus::badSize);
    EXPECT_EQ(MirrorRGB24(image.data(), 9, {3, 3}, unknown), ImageStatus::badFlipMode);
    EXPECT_EQ(MirrorRGB24(image.data(), 9, {1, 1}, negative), ImageStatus::badFlipMode);
}

TEST(MirrorRGB24, eachModeNeedsTwoOfWhatItExchanges) {
    std::array<std::uint8_t, 64> image{};
    const auto status = [&](int width, int height, FlipMode mode) {
        return MirrorRGB24(image.data(), 6, {width, height}, mode);
    };
    EXPECT_EQ(status(1, 2, FlipMode::upsideDown), ImageStatus::done);
    EXPECT_EQ(status(2, 1, FlipMode::upsideDown), ImageStatus::badSize);
    EXPECT_EQ(status(2, 1, FlipMode::leftToRight), ImageStatus::done);
    EXPECT_EQ(status(1, 2, FlipMode::leftToRight), ImageStatus::badSize);
    EXPECT_EQ(status(2, 2, FlipMode::halfTurn), ImageStatus::done);
    EXPECT_EQ(status(2, 1, FlipMode::halfTurn), ImageStatus::badSize);
    EXPECT_EQ(status(1, 2, FlipMode::halfTurn), ImageStatus::badSize);
}

TEST(MirrorRGB24, tooSmallASizeChangesNothing) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    std::array<std::uint8_t, 64> image{};
    image.fill(7);
    const std::array<std::uint8_t, 64> before = image;
    for (const FlipMode mode : allModes) {
        for (const ImageRegion region :
             {ImageRegion{0, 2}, ImageRegion{2, 0}, ImageRegion{-3, 2}, ImageRegion{2, -3},
              ImageRegion{least, most}, ImageRegion{most, least}})
            EXPECT_EQ(MirrorRGB24(image.data(), 6, region, mode), ImageStatus::badSize);
    }
    EXPECT_EQ(MirrorRGB24(image.data(), 6, {most, 1}, FlipMode::upsideDown), ImageStatus::badSize);
    EXPECT_EQ(MirrorRGB24(image.data(), 6, {1, most}, FlipMode::leftToRight), ImageStatus::badSize);
    EXPECT_EQ(image, before);
}

/// The pixel that must stand at (x, y) afterwards.
const std::uint8_t* origin(const CPlane& before, ImageRegion region, FlipMode mode, int x, int y) {
    const int fromX = mode == FlipMode::upsideDown ? x : region.width - 1 - x;
    const int fromY = mode == FlipMode::leftToRight ? y : region.height - 1 - y;
    return before.row(fromY) + fromX * 3;
}

TEST(MirrorRGB24, everySizeComesOutPixelByPixel) {
    for (int width = 2; width <= 70; ++width) {
        for (const int height : {2, 3, 5}) {
            for (const FlipMode mode : allModes) {
                const PlaneShape shape{width * 3, height, width % 4, width % 5 == 0, width % 64};
                const CPlane image(shape, guard);
                image.fill(static_cast<std::uint32_t>(width));
                const CPlane before(shape, guard);
                before.fill(static_cast<std::uint32_t>(width));
                ASSERT_EQ(MirrorRGB24(image.first(), image.step(), {width, height}, mode), ImageStatus::done);
                for (int y = 0; y < height; ++y) {
                    for (int x = 0; x < width; ++x) {
                        const std::uint8_t* const expected = origin(before, {width, height}, mode, x, y);
                        ASSERT_TRUE(std::equal(expected, expected + 3, image.row(y) + x * 3))
                            << width << " × " << height << ", mode " << static_cast<int>(mode) << " at " << x
                            << ", " << y;
                    }
                }
                // Twice is once back, and what is no pixel never changed.
                ASSERT_EQ(MirrorRGB24(image.first(), image.step(), {width, height}, mode), ImageStatus::done);
                ASSERT_TRUE(sameContent(image, before));
            }
        }
    }
}

} // namespace
} // namespace tarvo::render
