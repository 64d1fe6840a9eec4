#include "scene/Patterns.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::scene {
namespace {

TEST(Patterns, anEdgeIsARampCentredOnIt) {
    EXPECT_EQ(softAbove(0.875, 1.0, 0.25), 0.0);
    EXPECT_EQ(softAbove(0.9375, 1.0, 0.25), 0.15625); // a quarter up the ramp: t²(3 - 2t) = 5/32
    EXPECT_EQ(softAbove(1.0, 1.0, 0.25), 0.5);
    EXPECT_EQ(softAbove(1.125, 1.0, 0.25), 1.0);
    EXPECT_EQ(softSpan(0.5, 0.0, 1.0, 0.1), 1.0);
    EXPECT_DOUBLE_EQ(softSpan(1.0, 0.0, 1.0, 0.1), 0.5);
    EXPECT_EQ(softSpan(1.2, 0.0, 1.0, 0.1), 0.0);
}

TEST(Patterns, linesAndFieldsRepeatAlsoBelowZero) {
    for (const double start : {-1.2, 0.0, 2.4}) {
        EXPECT_EQ(softLines(start, 0.4, 0.1, 0.02), 1.0);
        EXPECT_EQ(softLines(start + 0.4, 0.4, 0.1, 0.02), 1.0);
        EXPECT_EQ(softLines(start + 0.2, 0.4, 0.1, 0.02), 0.0);
    }
    for (const double start : {-1.6, 0.0, 0.8}) {
        EXPECT_EQ(softSquareWave(start + 0.2, 0.4, 0.02), 1.0);
        EXPECT_EQ(softSquareWave(start + 0.6, 0.4, 0.02), -1.0);
        EXPECT_EQ(softChecker(start + 0.2, start + 0.2, 0.4, 0.02), 1.0);
        EXPECT_EQ(softChecker(start + 0.2, start + 0.6, 0.4, 0.02), 0.0);
    }
}

TEST(Patterns, noiseIsFixedBoundedAndSmooth) {
    EXPECT_EQ(cellValue(3, -7, 5), cellValue(3, -7, 5));
    EXPECT_NE(cellValue(3, -7, 5), cellValue(4, -7, 5));
    EXPECT_NE(cellValue(3, -7, 5), cellValue(3, -7, 6));
    double least = 1.0;
    double most = 0.0;
    for (double u = -5.0; u < 5.0; u += 0.01) {
        const double value = smoothNoise(u, 0.3 * u, 1);
        least = std::fmin(least, value);
        most = std::fmax(most, value);
        // The ramp between two cells is nowhere steeper than 1.5.
        ASSERT_NEAR(smoothNoise(u + 0.001, 0.3 * u, 1), value, 0.0016);
    }
    EXPECT_GE(least, 0.0);
    EXPECT_LE(most, 1.0);
    EXPECT_GT(most - least, 0.5);
    // On the corners of the cells the noise is the cells' value.
    EXPECT_DOUBLE_EQ(smoothNoise(2.0, -3.0, 9), cellValue(2, -3, 9));
}

TEST(Patterns, lettersAreReadable) {
    const auto ink = [](char letter, double u, double v) {
        return softLetter(letter, u, v, 1.0, 0.01) > 0.5;
    };
    // F: a bar down its left, arms at the top and in the middle, nothing at the lower right.
    EXPECT_TRUE(ink('F', -0.33, -0.4));
    EXPECT_TRUE(ink('F', 0.3, 0.42));
    EXPECT_TRUE(ink('F', 0.1, 0.0));
    EXPECT_FALSE(ink('F', 0.3, -0.4));
    // E has what F lacks; C is open to the right; N falls from the upper left to the lower right.
    EXPECT_TRUE(ink('E', 0.3, -0.42));
    EXPECT_TRUE(ink('C', -0.33, 0.0));
    EXPECT_FALSE(ink('C', 0.33, 0.0));
    EXPECT_TRUE(ink('N', -0.17, 0.21));
    EXPECT_FALSE(ink('N', 0.17, 0.21));
    EXPECT_TRUE(ink('S', 0.33, -0.2));
    EXPECT_FALSE(ink('S', -0.33, -0.12));
    EXPECT_FALSE(ink('S', 0.33, 0.12));
    EXPECT_TRUE(ink('W', 0.0, 0.2));
    EXPECT_FALSE(ink('W', 0.0, -0.3));
    for (double u = -0.5; u <= 0.5; u += 0.05) {
        EXPECT_FALSE(ink('?', u, 0.0));
    }
}

} // namespace
} // namespace tarvo::scene
