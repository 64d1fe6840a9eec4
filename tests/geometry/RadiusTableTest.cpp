#include "geometry/RadiusTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarvo::geometry {
namespace {

constexpr double halfPi = 3.1415927410125732 / 2.0;

TEST(RadiusTable, equidistantLensIsInvertedExactly) {
    CRadiusTable table;
    table.rebuild({0.0F, 0.0F, 0.25F}); // radius in half heights = θ / 2
    EXPECT_EQ(table.size(), 21U);
    for (const double theta : {0.0, 0.1, 0.5, 1.0, 1.5}) {
        EXPECT_NEAR(table.angleAt(theta / 2.0), theta, 1e-12) << theta;
    }
}

TEST(RadiusTable, isLinearBetweenSamplesOfFourAndAHalfDegrees) {
    CRadiusTable table;
    table.rebuild({0.0F, 0.5F, 0.0F}); // radius in half heights = θ²
    const double step = halfPi / 20.0;
    // Halfway in radius between the third (2 steps) and the fourth sample (3 steps).
    EXPECT_NEAR(table.angleAt((4.0 + 9.0) / 2.0 * step * step), 2.5 * step, 1e-12);
    EXPECT_NEAR(table.angleAt(step * step), step, 1e-12);
}

TEST(RadiusTable, beyondTheLastSampleLiesTheHorizon) {
    CRadiusTable table;
    table.rebuild(defaultLensProfile);
    EXPECT_DOUBLE_EQ(table.angleAt(2.0), halfPi);
    EXPECT_DOUBLE_EQ(table.angleAt(std::numeric_limits<double>::infinity()), halfPi);
    EXPECT_DOUBLE_EQ(table.angleAt(0.0), 0.0);
}

TEST(RadiusTable, belowTheFirstSampleItsAngleHolds) {
    CRadiusTable table;
    table.rebuild({0.0F, 0.0F, -0.25F}); // keys run downward: the smallest belongs to the horizon
    EXPECT_DOUBLE_EQ(table.angleAt(-5.0), halfPi);
    EXPECT_DOUBLE_EQ(table.angleAt(1.0), 0.0);
}

TEST(RadiusTable, equalRadiiKeepOneEntryWithTheLastAngle) {
    CRadiusTable table;
    table.rebuild({0.0F, 0.0F, 0.0F});
    EXPECT_EQ(table.size(), 1U);
    EXPECT_DOUBLE_EQ(table.angleAt(0.0), halfPi);
    EXPECT_DOUBLE_EQ(table.angleAt(-1.0), halfPi);
}

TEST(RadiusTable, aLensThatIsNoNumberLeavesItHarmless) {
    CRadiusTable table;
    table.rebuild({std::numeric_limits<float>::quiet_NaN(), 0.0F, 0.0F});
    EXPECT_EQ(table.size(), 0U);
    EXPECT_DOUBLE_EQ(table.angleAt(0.5), 0.0);
    table.rebuild(defaultLensProfile);
    EXPECT_EQ(table.size(), 21U);
    EXPECT_FALSE(std::isnan(table.angleAt(std::numeric_limits<double>::quiet_NaN())));
}

} // namespace
} // namespace tarvo::geometry
