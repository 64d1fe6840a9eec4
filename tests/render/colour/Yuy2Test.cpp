#include "render/colour/YuvToBgra.h"
#include "tests/render/colour/Plane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarvo::render {
namespace {

using Pixel = std::array<int, 4>;

std::vector<Pixel> converted(int width, int height, const std::vector<std::uint8_t>& words) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * height * 4, 0xA5);
    convertYuy2ToBgra({width, height, words.data(), words.size()}, {bytes.data(), width * 4},
                      {0, 0, width, height});
    std::vector<Pixel> pixels;
    for (std::size_t i = 0; i < bytes.size(); i += 4)
        pixels.push_back({bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]});
    return pixels;
}

constexpr Pixel beyondTheEnd{0, 135, 0, 1}; // green 0.344·128 + 0.714·128 = 135.42, of 256: 134.9

TEST(Yuy2, twoPixelsShareTheirChroma) {
    // U 28, V 228: blue Y − 177.2, green Y + 34.4 − 71.4, red Y + 140.2; times 255/256.
    // 16: −161, −21, 156.2 → 155.6; 200: 22.8 → 22.7, 163.0 → 162.4, 340
    EXPECT_EQ(converted(2, 1, {16, 28, 200, 228}), (std::vector<Pixel>{{0, 0, 156, 1}, {23, 162, 255, 1}}));
}

TEST(Yuy2, theDivisorIs256) {
    // 255 · 255/256 = 254.004; 64 · 255/256 = 63.75; alpha 255/256.
    EXPECT_EQ(converted(2, 1, {255, 128, 64, 128}),
              (std::vector<Pixel>{{254, 254, 254, 1}, {64, 64, 64, 1}}));
}

TEST(Yuy2, rowsOfOddWidthBeginInTheMiddleOfAWord) {
    const std::vector<Pixel> pixels = converted(3, 2, {10, 128, 20, 128, 30, 128, 40, 128, 50, 128, 60, 128});
    for (std::size_t i = 0; i < 6; ++i) {
        const int grey = 10 * (static_cast<int>(i) + 1); // less than half a level lost
        EXPECT_EQ(pixels[i], (Pixel{grey, grey, grey, 1})) << i;
    }
}

TEST(Yuy2, zerosAreReadBeyondTheEnd) {
    EXPECT_EQ(converted(2, 2, {10, 128, 20, 128}),
              (std::vector<Pixel>{{10, 10, 10, 1}, {20, 20, 20, 1}, beyondTheEnd, beyondTheEnd}));
    EXPECT_EQ(converted(3, 1, {10, 128, 20, 128}),
              (std::vector<Pixel>{{10, 10, 10, 1}, {20, 20, 20, 1}, beyondTheEnd}));
    // What does not fill a word is no word.
    EXPECT_EQ(converted(2, 1, {10, 128, 20}), (std::vector<Pixel>{beyondTheEnd, beyondTheEnd}));
    EXPECT_EQ(converted(2, 1, {}), (std::vector<Pixel>{beyondTheEnd, beyondTheEnd}));
}

TEST(Yuy2, areasAreClippedToThePicture) {
    const std::vector<std::uint8_t> words(16, 128);
    const CPlane target({16, 2}, guard);
    const CPlane before({16, 2}, guard);
    const Yuy2Source source{4, 2, words.data(), words.size()};
    const BgraTarget pixels{target.first(), target.step()};
    for (const PixelArea nothing : {PixelArea{2, 0, 2, 2}, PixelArea{3, 0, 1, 2}, PixelArea{0, 1, 4, 1},
                                    PixelArea{4, 0, 9, 2}, PixelArea{-5, 0, 0, 2}, PixelArea{}})
        convertYuy2ToBgra(source, pixels, nothing);
    EXPECT_TRUE(sameContent(target, before));
    convertYuy2ToBgra(source, pixels, {-100, -100, 100, 100});
    const auto content = target.content();
    EXPECT_EQ(std::count(content.begin(), content.end(), 1), 8);
    EXPECT_EQ(std::count(content.begin(), content.end(), 128), 24); // 127.5
    EXPECT_EQ(std::count(content.begin(), content.end(), 0xA5), 2 * guard);
}

TEST(Yuy2, isThePixelProgramRoundedToTheNearestLevelForEveryColour) {
    constexpr int width = 256;
    std::vector<std::uint8_t> words(static_cast<std::size_t>(width) * 2);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * 4);
    // Exact counts of 1/1000 level of 256, so that nothing is rounded before the comparison.
    const auto isNearest = [](int stored, int thousandths) {
        const int inRange = std::clamp(thousandths, 0, 256000);
        return std::abs(stored * 256000 - inRange * 255) <= 128000 + 8; // 8: the last bits of a float
    };
    for (int u = 0; u < 256; ++u) {
        for (int v = 0; v < 256; ++v) {
            for (std::size_t i = 0; i < words.size(); i += 4) {
                words[i] = static_cast<std::uint8_t>(i / 2);
                words[i + 1] = static_cast<std::uint8_t>(u);
                words[i + 2] = static_cast<std::uint8_t>(i / 2 + 1);
                words[i + 3] = static_cast<std::uint8_t>(v);
            }
            convertYuy2ToBgra({width, 1, words.data(), words.size()}, {bytes.data(), 0}, {0, 0, width, 1},
                              colourKernels(InstructionSet::reference));
            bool isRight = true;
            for (int y = 0; y < 256; ++y) {
                const std::uint8_t* const pixel = bytes.data() + static_cast<std::ptrdiff_t>(y) * 4;
                isRight = isRight && isNearest(pixel[0], 1000 * y + 1772 * (u - 128)) &&
                          isNearest(pixel[1], 1000 * y - 344 * (u - 128) - 714 * (v - 128)) &&
                          isNearest(pixel[2], 1000 * y + 1402 * (v - 128)) && pixel[3] == 1;
            }
            ASSERT_TRUE(isRight) << u << ", " << v;
        }
    }
}

} // namespace
} // namespace tarvo::render
