#include "geometry/PtzLimits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarvo::geometry {
namespace {

TEST(PtzLimits, rangesByMounting) {
    const auto wall = ptzLimits(TiltOrientation::wall, 1.0);
    ASSERT_TRUE(wall);
    EXPECT_EQ(wall->panMinimum, -90.0F);
    EXPECT_EQ(wall->panMaximum, 90.0F);
    EXPECT_EQ(wall->tiltMinimum, -90.0F);
    EXPECT_EQ(wall->tiltMaximum, 90.0F);
    const auto ceiling = ptzLimits(TiltOrientation::ceiling, 1.0);
    ASSERT_TRUE(ceiling);
    EXPECT_EQ(ceiling->panMinimum, -180.0F);
    EXPECT_EQ(ceiling->panMaximum, 180.0F);
    EXPECT_EQ(ceiling->tiltMinimum, -90.0F);
    EXPECT_EQ(ceiling->tiltMaximum, 0.0F);
    const auto desk = ptzLimits(TiltOrientation::desk, 1.0);
    ASSERT_TRUE(desk);
    EXPECT_EQ(desk->panMinimum, -180.0F);
    EXPECT_EQ(desk->panMaximum, 180.0F);
    EXPECT_EQ(desk->tiltMinimum, 0.0F);
    EXPECT_EQ(desk->tiltMaximum, 90.0F);
    EXPECT_FALSE(ptzLimits(TiltOrientation::undef, 1.0));
    EXPECT_FALSE(ptzLimits(static_cast<TiltOrientation>(7), 1.0));
}

TEST(PtzLimits, wideOutputOpensTheDefaultView) {
    const auto ceiling = ptzLimits(TiltOrientation::ceiling, 16.0 / 9.0);
    ASSERT_TRUE(ceiling);
    EXPECT_NEAR(ceiling->defaultFieldOfView, 39.1111F, 1e-4F); // 22 · 16 / 9
    EXPECT_NEAR(ceiling->defaultTilt, -28.0F, 1e-4F);          // 22 + 6
    EXPECT_NEAR(ptzLimits(TiltOrientation::desk, 16.0 / 9.0)->defaultTilt, 28.0F, 1e-4F);
}

TEST(PtzLimits, wallDefaultNeverExceeds36) {
    EXPECT_EQ(ptzLimits(TiltOrientation::wall, 16.0 / 9.0)->defaultFieldOfView, 36.0F);
    EXPECT_EQ(ptzLimits(TiltOrientation::wall, 1.0)->defaultFieldOfView, 22.0F);
    EXPECT_EQ(ptzLimits(TiltOrientation::wall, 16.0 / 9.0)->defaultTilt, 0.0F);
}

TEST(PtzLimits, unknownAspectGivesThirty) {
    for (const double aspect : {0.0, -1.0}) {
        EXPECT_EQ(ptzLimits(TiltOrientation::wall, aspect)->defaultFieldOfView, 30.0F);
        EXPECT_EQ(ptzLimits(TiltOrientation::ceiling, aspect)->defaultFieldOfView, 30.0F);
        EXPECT_EQ(ptzLimits(TiltOrientation::ceiling, aspect)->defaultTilt, -30.0F);
        EXPECT_EQ(ptzLimits(TiltOrientation::desk, aspect)->defaultTilt, 30.0F);
    }
}

TEST(PtzLimits, panWrapsOnceUnlessOnAWall) {
    for (const auto orientation : {TiltOrientation::ceiling, TiltOrientation::desk, TiltOrientation::undef}) {
        EXPECT_EQ(wrapPan(orientation, 190.0F), -170.0F);
        EXPECT_EQ(wrapPan(orientation, -190.0F), 170.0F);
        EXPECT_EQ(wrapPan(orientation, 180.0F), 180.0F);
        EXPECT_EQ(wrapPan(orientation, -180.0F), -180.0F);
        EXPECT_EQ(wrapPan(orientation, 600.0F), 240.0F);
    }
    EXPECT_EQ(wrapPan(TiltOrientation::wall, 190.0F), 190.0F);
}

TEST(PtzLimits, clampTakesTheLowerBoundFirst) {
    EXPECT_EQ(clampToRange(-3.0F, -1.0F, 1.0F), -1.0F);
    EXPECT_EQ(clampToRange(3.0F, -1.0F, 1.0F), 1.0F);
    EXPECT_EQ(clampToRange(0.5F, -1.0F, 1.0F), 0.5F);
    EXPECT_TRUE(std::isnan(clampToRange(std::numeric_limits<float>::quiet_NaN(), -1.0F, 1.0F)));
}

} // namespace
} // namespace tarvo::geometry
