#include "render/colour/YuvToBgra.h"
#include "tests/render/colour/Plane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarvo::render {
namespace {

using Pixel = std::array<int, 4>;

/// A picture put together sample by sample, and its conversion.
struct Yv12Picture {
    int width;
    int height;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> cr;
    std::vector<std::uint8_t> cb;

    Yv12Source source() const {
        return {width, height, {luma.data(), cr.data(), cb.data()}, {width, width / 2, width / 2}};
    }

    std::vector<Pixel> converted() const {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * height * 4);
        convertYv12ToBgra(source(), {bytes.data(), width * 4}, {0, 0, width, height});
        std::vector<Pixel> pixels;
        for (std::size_t i = 0; i < bytes.size(); i += 4)
            pixels.push_back({bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]});
        return pixels;
    }
};

Pixel uniform(std::uint8_t luma, std::uint8_t cr, std::uint8_t cb) {
    const std::vector<Pixel> pixels =
        Yv12Picture{2, 2, std::vector<std::uint8_t>(4, luma), {cr}, {cb}}.converted();
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), pixels[0]), 4);
    return pixels[0];
}

TEST(Yv12, oneColour) {
    // Half of full scale is 127.5, so 128 adds half a level: 0.69 of red, −0.52 of green, 0.87 of blue.
    EXPECT_EQ(uniform(100, 128, 128), (Pixel{101, 99, 101, 255}));
    // No offset of 16: black stays as bright as it is.
    EXPECT_EQ(uniform(16, 128, 128), (Pixel{17, 15, 17, 255}));
    // a = 72.5: red 100 + 99.38; green 100 − 50.61 − 0.17; b = 0.5.
    EXPECT_EQ(uniform(100, 200, 128), (Pixel{101, 49, 199, 255}));
    // b = −87.5: blue 200 − 151.59; green 200 − 0.35 + 29.54; a = 0.5.
    EXPECT_EQ(uniform(200, 128, 40), (Pixel{48, 229, 201, 255}));
}

TEST(Yv12, whatLeavesTheRangeIsSaturated) {
    // a = b = 127.5: red 255 + 174.8, blue 255 + 220.9, green 255 − 88.995 − 43.05 = 122.96
    EXPECT_EQ(uniform(255, 255, 255), (Pixel{255, 123, 255, 255}));
    // a = b = −127.5: green 255 + 132.0; red 255 − 174.76 = 80.24, blue 255 − 220.89 = 34.11
    EXPECT_EQ(uniform(255, 0, 0), (Pixel{34, 255, 80, 255}));
    EXPECT_EQ(uniform(0, 0, 0), (Pixel{0, 132, 0, 255}));
}

TEST(Yv12, chromaIsMixedAlongARowAndGoesOnAtItsEnds) {
    // Cr 0 and 240 in a row of four become 0, 60, 180, 240; less 127.5: −127.5, −67.5, 52.5, 112.5.
    const Yv12Picture picture{4, 2, std::vector<std::uint8_t>(8, 100), {0, 240}, {128, 128}};
    const std::vector<Pixel> row{
        {101, 189, 0, 255}, {101, 147, 7, 255}, {101, 63, 172, 255}, {101, 21, 254, 255}};
    const std::vector<Pixel> pixels = picture.converted();
    EXPECT_EQ(std::vector<Pixel>(pixels.begin(), pixels.begin() + 4), row);
    EXPECT_EQ(std::vector<Pixel>(pixels.begin() + 4, pixels.end()), row);
}

TEST(Yv12, chromaIsMixedBetweenRows) {
    // The same, turned.
    const Yv12Picture picture{2, 4, std::vector<std::uint8_t>(8, 100), {0, 240}, {128, 128}};
    const std::vector<Pixel> pixels = picture.converted();
    EXPECT_EQ(pixels[0], (Pixel{101, 189, 0, 255}));
    EXPECT_EQ(pixels[2], (Pixel{101, 147, 7, 255}));
    EXPECT_EQ(pixels[4], (Pixel{101, 63, 172, 255}));
    EXPECT_EQ(pixels[7], (Pixel{101, 21, 254, 255}));
}

TEST(Yv12, chromaIsMixedOfFour) {
    // (1, 1): 9/16 · 0 + 3/16 · 160 + 3/16 · 80 + 1/16 · 240 = 60, as above.
    const Yv12Picture picture{
        4, 4, std::vector<std::uint8_t>(16, 100), {0, 160, 80, 240}, {128, 128, 128, 128}};
    EXPECT_EQ(picture.converted()[5], (Pixel{101, 147, 7, 255}));
}

TEST(Yv12, thePlaneAfterLumaIsRed) {
    EXPECT_EQ(uniform(0, 228, 128), (Pixel{1, 0, 138, 255})); // red 1.370705 · 100.5 = 137.8
    EXPECT_EQ(uniform(0, 128, 228), (Pixel{174, 0, 1, 255})); // blue 1.732446 · 100.5 = 174.1
}

TEST(Yv12, anOddWidthSpreadsItsChromaEvenly) {
    // Two samples, 0 and 200, over five pixels: 0.4·x − 0.3 is −0.3, 0.1, 0.5, 0.9, 1.3; so 0, 20, 100, 180,
    // 200. Red: 150 + 1.370705·(−127.5, −107.5, −27.5, 52.5, 72.5) = −24.8, 2.6, 112.3, 222.0, 249.4
    const Yv12Picture picture{5, 2, std::vector<std::uint8_t>(10, 150), {0, 200}, {128, 128}};
    const std::vector<Pixel> pixels = picture.converted();
    const std::array<int, 5> reds{0, 3, 112, 222, 249};
    for (std::size_t x = 0; x < 5; ++x)
        EXPECT_EQ(pixels[x][2], reds[x]) << x;
}

/// The pixel program's arithmetic in double precision; colours of full scale 1.
class CTruth {
public:
    explicit CTruth(const Yv12Source& source) : m_source(source) {}

    /// Unrounded levels: blue, green, red.
    std::array<double, 3> at(int x, int y) const {
        const double luma = m_source.planes[0][y * m_source.steps[0] + x] / 255.0;
        const double u = (x + 0.5) / m_source.width;
        const double v = (y + 0.5) / m_source.height;
        const double a = sample(1, u, v) - 0.5;
        const double b = sample(2, u, v) - 0.5;
        return {level(luma + 1.732446 * b), level(luma - 0.698001 * a - 0.337633 * b),
                level(luma + 1.370705 * a)};
    }

private:
    static double level(double value) { return 255.0 * std::clamp(value, 0.0, 1.0); }

    double sample(std::size_t plane, double u, double v) const {
        const int width = m_source.width / 2;
        const int height = m_source.height / 2;
        const double x = u * width - 0.5;
        const double y = v * height - 0.5;
        double sum = 0.0;
        for (const int dy : {0, 1}) {
            for (const int dx : {0, 1}) {
                const double column = std::floor(x) + dx;
                const double row = std::floor(y) + dy;
                const double weight = (1.0 - std::abs(x - column)) * (1.0 - std::abs(y - row));
                const int atX = std::clamp(static_cast<int>(column), 0, width - 1);
                const int atY = std::clamp(static_cast<int>(row), 0, height - 1);
                sum += weight * m_source.planes[plane][atY * m_source.steps[plane] + atX];
            }
        }
        return sum / 255.0;
    }

    Yv12Source m_source;
};

TEST(Yv12, isThePixelProgramRoundedToTheNearestLevel) {
    for (const auto& [width, height] :
         {std::pair{2, 2}, {3, 2}, {2, 3}, {64, 48}, {65, 47}, {70, 33}, {131, 70}}) {
        const CPlane luma({width, height});
        const CPlane cr({width / 2, height / 2});
        const CPlane cb({width / 2, height / 2});
        luma.fill(1);
        cr.fill(2);
        cb.fill(3);
        const Yv12Source source{
            width, height, {luma.first(), cr.first(), cb.first()}, {luma.step(), cr.step(), cb.step()}};
        const CPlane target({width * 4, height});
        convertYv12ToBgra(source, {target.first(), target.step()}, {0, 0, width, height});
        const CTruth truth(source);
        // Even sizes are converted in whole numbers, which may miss a half by a hundredth.
        const double most = width % 2 == 0 && height % 2 == 0 ? 0.51 : 0.5001;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const std::array<double, 3> levels = truth.at(x, y);
                const std::uint8_t* const pixel = target.row(y) + x * 4;
                for (std::size_t channel = 0; channel < 3; ++channel)
                    ASSERT_LT(std::abs(pixel[channel] - levels[channel]), most) << x << ", " << y;
                ASSERT_EQ(pixel[3], 255);
            }
        }
    }
}

TEST(Yv12, areasAreClippedToThePicture) {
    const Yv12Picture picture{4, 2, std::vector<std::uint8_t>(8, 100), {128, 128}, {128, 128}};
    const CPlane target({16, 2}, guard);
    const CPlane before({16, 2}, guard);
    const BgraTarget pixels{target.first(), target.step()};
    for (const PixelArea nothing :
         {PixelArea{2, 0, 2, 2}, PixelArea{3, 0, 1, 2}, PixelArea{0, 1, 4, 1}, PixelArea{4, 0, 9, 2},
          PixelArea{-5, 0, 0, 2}, PixelArea{0, -7, 4, 0}, PixelArea{}})
        convertYv12ToBgra(picture.source(), pixels, nothing);
    EXPECT_TRUE(sameContent(target, before));
    convertYv12ToBgra(picture.source(), pixels, {-100, -100, 100, 100});
    const auto content = target.content();
    EXPECT_EQ(std::count(content.begin(), content.end(), 255), 8);
    EXPECT_EQ(std::count(content.begin(), content.end(), 101), 16);
    EXPECT_EQ(std::count(content.begin(), content.end(), 0xA5), 2 * guard);
}

TEST(Yv12, aPictureWithoutChromaDrawsNothing) {
    const std::array<std::uint8_t, 4> luma{1, 2, 3, 4};
    std::array<std::uint8_t, 16> target{};
    const Yv12Source narrow{1, 4, {luma.data(), nullptr, nullptr}, {1, 0, 0}};
    const Yv12Source low{4, 1, {luma.data(), nullptr, nullptr}, {4, 0, 0}};
    convertYv12ToBgra(narrow, {target.data(), 4}, {0, 0, 1, 4});
    convertYv12ToBgra(low, {target.data(), 16}, {0, 0, 4, 1});
    EXPECT_EQ(target, (std::array<std::uint8_t, 16>{}));
}

} // namespace
} // namespace tarvo::render
