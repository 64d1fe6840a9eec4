#include "render/reference/Sampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarvo::render::reference {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float none = std::numeric_limits<float>::quiet_NaN();

/// Blue counts the column, green the row, 10 levels each.
Picture ramp(int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.at(x, y) = {static_cast<std::uint8_t>(10 * x), static_cast<std::uint8_t>(10 * y), 7, 255};
        }
    }
    return picture;
}

void expectLevels(const Colour& colour, float blue, float green) {
    EXPECT_NEAR(colour.blue * 255.0F, blue, 1e-3F);
    EXPECT_NEAR(colour.green * 255.0F, green, 1e-3F);
    EXPECT_NEAR(colour.red * 255.0F, 7.0F, 1e-3F);
    EXPECT_NEAR(colour.alpha, 1.0F, 1e-6F);
}

TEST(Sampler, pixelCentresGiveThePixels) {
    const Picture picture = ramp(4, 3);
    expectLevels(sampleBilinear(picture, 2.5F / 4.0F, 1.5F / 3.0F), 20.0F, 10.0F);
    expectLevels(sampleBilinear(picture, 0.5F / 4.0F, 0.5F / 3.0F), 0.0F, 0.0F);
}

TEST(Sampler, mixesTheFourNeighboursByDistance) {
    const Picture picture = ramp(4, 3);
    expectLevels(sampleBilinear(picture, 1.75F / 4.0F, 1.9F / 3.0F), 12.5F, 14.0F);
}

TEST(Sampler, edgePixelsGoOn) {
    const Picture picture = ramp(4, 3);
    expectLevels(sampleBilinear(picture, 0.0F, 0.0F), 0.0F, 0.0F);
    expectLevels(sampleBilinear(picture, 1.0F, 1.0F), 30.0F, 20.0F);
    expectLevels(sampleBilinear(picture, -5.0F, 0.5F), 0.0F, 10.0F);
    expectLevels(sampleBilinear(picture, 1e30F, -1e30F), 30.0F, 0.0F);
    expectLevels(sampleBilinear(picture, infinity, -infinity), 30.0F, 0.0F);
    expectLevels(sampleBilinear(picture, none, none), 0.0F, 0.0F);
    expectLevels(sampleBilinear(ramp(1, 1), 0.3F, 0.9F), 0.0F, 0.0F);
}

TEST(Sampler, storingSaturatesAndRoundsToNearest) {
    EXPECT_EQ(toBgra({1.7F, -0.3F, 0.5F, 1.0F}), (Bgra{128, 0, 255, 255})); // 127.5 rounds up
    EXPECT_EQ(toBgra({100.49F / 255.0F, 100.51F / 255.0F, none, 0.0F}), (Bgra{0, 101, 100, 0}));
}

TEST(Sampler, everyLevelSurvivesTheRoundTrip) {
    for (int level = 0; level < 256; ++level) {
        const auto byte = static_cast<std::uint8_t>(level);
        const Bgra pixel{byte, static_cast<std::uint8_t>(255 - level), 3, byte};
        EXPECT_EQ(toBgra(fromBgra(pixel)), pixel);
    }
}

} // namespace
} // namespace tarvo::render::reference
