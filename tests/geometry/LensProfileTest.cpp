#include "geometry/LensProfile.h"

#include "geometry/Angles.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace tarvo::geometry {
namespace {

TEST(LensProfile, defaultHasTheExactBits) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(defaultLensProfile.a), 0xBCB94ACCU);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(defaultLensProfile.b), 0x3C75A9BFU);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(defaultLensProfile.c), 0x3EBC816FU);
}

TEST(LensProfile, aRayAtARightAngleFallsJustOutsideTheCircle) {
    // -0.0226187·1.5708³ + 0.0149941·1.5708² + 0.3681750·1.5708 = -0.0876655 + 0.0369967 + 0.5783279
    EXPECT_NEAR(lensRadius(defaultLensProfile, 1.5707963267948966), 0.5276591, 1e-6);
}

TEST(LensProfile, eachCoefficientActsOnItsPower) {
    EXPECT_DOUBLE_EQ(lensRadius({1.0F, 0.0F, 0.0F}, 3.0), 27.0);
    EXPECT_DOUBLE_EQ(lensRadius({0.0F, 1.0F, 0.0F}, 3.0), 9.0);
    EXPECT_DOUBLE_EQ(lensRadius({0.0F, 0.0F, 1.0F}, 3.0), 3.0);
}

TEST(Angles, useTheSinglePrecisionValueOfPi) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(static_cast<float>(piSingle)), 0x40490FDBU);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(halfPiSingle), 0x3FC90FDBU);
    EXPECT_DOUBLE_EQ(radiansFromDegrees(180.0), 3.1415927410125732);
    EXPECT_DOUBLE_EQ(degreesFromRadians(3.1415927410125732), 180.0);
}

} // namespace
} // namespace tarvo::geometry
