#include "scene/FisheyeLens.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <numbers>
#include <optional>
#include <stdexcept>

namespace tarvo::scene {
namespace {

using geometry::LensProfile;

constexpr double radiansPerDegree = std::numbers::pi / 180.0;

TEST(FisheyeLens, undoesTheRadiusPolynomial) {
    constexpr std::array profiles{
        geometry::defaultLensProfile,     LensProfile{0.0F, 0.0F, 0.3183F},   LensProfile{0.0F, 0.05F, 0.3F},
        LensProfile{-0.02F, 0.0F, 0.4F},  LensProfile{0.03F, -0.05F, 0.35F},  LensProfile{0.1F, 0.0F, 0.0F},
        LensProfile{0.0F, 0.2F, 0.0F},    LensProfile{-0.12F, 0.01F, 0.5F},   LensProfile{1e-9F, 0.0F, 1e-6F},
        LensProfile{-0.1F, -0.1F, 0.45F}, LensProfile{1000.0F, 10.0F, 50.0F},
    };
    for (const LensProfile& profile : profiles) {
        const CFisheyeLens lens(profile, 110.0);
        ASSERT_GT(lens.maxAngle(), 0.5);
        for (int i = 1; i < 1000; ++i) {
            const double angle = lens.maxAngle() * i / 1000.0;
            const std::optional<double> found = lens.angleAt(geometry::lensRadius(profile, angle));
            ASSERT_TRUE(found.has_value());
            EXPECT_NEAR(*found, angle, 1e-9) << profile.a << ' ' << profile.b << ' ' << profile.c;
        }
    }
}

TEST(FisheyeLens, servesCentreAndRim) {
    const CFisheyeLens lens(LensProfile{0.0F, 0.0F, 0.5F}, 90.0);
    EXPECT_DOUBLE_EQ(lens.maxAngle(), std::numbers::pi / 2.0);
    EXPECT_DOUBLE_EQ(lens.maxRadius(), std::numbers::pi / 4.0);
    EXPECT_EQ(lens.angleAt(0.0), 0.0);
    EXPECT_EQ(lens.angleAt(lens.maxRadius()), lens.maxAngle());
    ASSERT_TRUE(lens.angleAt(0.25).has_value());
    EXPECT_NEAR(*lens.angleAt(0.25), 0.5, 1e-12);
}

TEST(FisheyeLens, hasNoAngleOutsideTheDisc) {
    const CFisheyeLens lens(geometry::defaultLensProfile, 100.0);
    EXPECT_FALSE(lens.angleAt(lens.maxRadius() * 1.000001).has_value());
    EXPECT_FALSE(lens.angleAt(-0.001).has_value());
    EXPECT_FALSE(lens.angleAt(std::numeric_limits<double>::quiet_NaN()).has_value());
    EXPECT_FALSE(lens.angleAt(std::numeric_limits<double>::infinity()).has_value());
}

TEST(FisheyeLens, endsWhereThePolynomialTurnsOver) {
    // slope 1 - θ²
    const CFisheyeLens cubic(LensProfile{-1.0F / 3.0F, 0.0F, 1.0F}, 100.0);
    EXPECT_NEAR(cubic.maxAngle(), 1.0, 1e-6);
    EXPECT_NEAR(cubic.maxRadius(), 2.0 / 3.0, 1e-6);
    // slope 1 - θ
    const CFisheyeLens quadratic(LensProfile{0.0F, -0.5F, 1.0F}, 100.0);
    EXPECT_NEAR(quadratic.maxAngle(), 1.0, 1e-12);
    EXPECT_NEAR(quadratic.maxRadius(), 0.5, 1e-12);
    // slope 2θ - 2θ²
    const CFisheyeLens flatCentre(LensProfile{-2.0F / 3.0F, 1.0F, 0.0F}, 100.0);
    EXPECT_NEAR(flatCentre.maxAngle(), 1.0, 1e-6);
    EXPECT_NEAR(flatCentre.maxRadius(), 1.0 / 3.0, 1e-6);
    // slope (1 - 2θ)(1 - θ): turns over at one half although it rises again later
    const CFisheyeLens wavy(LensProfile{2.0F / 3.0F, -1.5F, 1.0F}, 100.0);
    EXPECT_NEAR(wavy.maxAngle(), 0.5, 1e-6);
    EXPECT_NEAR(wavy.maxRadius(), 5.0 / 24.0, 1e-6);
}

TEST(FisheyeLens, findsTheFirstRisingBranch) {
    // θ - θ²/2 = r has the roots 1 ∓ √(1 - 2r); the first branch has the smaller one.
    const CFisheyeLens lens(LensProfile{0.0F, -0.5F, 1.0F}, 180.0);
    ASSERT_TRUE(lens.angleAt(0.32).has_value());
    EXPECT_NEAR(*lens.angleAt(0.32), 0.4, 1e-12);
    ASSERT_TRUE(lens.angleAt(0.495).has_value());
    EXPECT_NEAR(*lens.angleAt(0.495), 0.9, 1e-12);
}

TEST(FisheyeLens, keepsTheAskedAngleWhenItComesFirst) {
    const CFisheyeLens lens(LensProfile{0.0F, -0.5F, 1.0F}, 30.0);
    EXPECT_DOUBLE_EQ(lens.maxAngle(), 30.0 * radiansPerDegree);
}

TEST(FisheyeLens, refusesProfilesThatNeverRise) {
    EXPECT_THROW(CFisheyeLens(LensProfile{0.0F, 0.0F, 0.0F}, 100.0), std::invalid_argument);
    EXPECT_THROW(CFisheyeLens(LensProfile{1.0F, 1.0F, -0.1F}, 100.0), std::invalid_argument);
    EXPECT_THROW(CFisheyeLens(LensProfile{1.0F, -0.1F, 0.0F}, 100.0), std::invalid_argument);
    EXPECT_THROW(CFisheyeLens(LensProfile{-1.0F, 0.0F, 0.0F}, 100.0), std::invalid_argument);
}

TEST(FisheyeLens, refusesNumbersThatAreNone) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    EXPECT_THROW(CFisheyeLens(LensProfile{nan, 0.0F, 0.4F}, 100.0), std::invalid_argument);
    EXPECT_THROW(CFisheyeLens(LensProfile{0.0F, nan, 0.4F}, 100.0), std::invalid_argument);
    EXPECT_THROW(CFisheyeLens(LensProfile{0.0F, 0.0F, infinite}, 100.0), std::invalid_argument);
}

TEST(FisheyeLens, refusesImpossibleMaximumAngles) {
    for (const double angle : {0.0, -5.0, 180.001, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity()}) {
        EXPECT_THROW(CFisheyeLens(geometry::defaultLensProfile, angle), std::invalid_argument) << angle;
    }
    EXPECT_NO_THROW(CFisheyeLens(geometry::defaultLensProfile, 180.0));
}

TEST(FisheyeLens, survivesExtremeCoefficients) {
    constexpr float huge = std::numeric_limits<float>::max();
    constexpr float tiny = std::numeric_limits<float>::denorm_min();
    for (const LensProfile& profile : {LensProfile{huge, huge, huge}, LensProfile{-huge, huge, tiny},
                                       LensProfile{-huge, -huge, tiny}, LensProfile{tiny, tiny, tiny}}) {
        const CFisheyeLens lens(profile, 180.0);
        const std::optional<double> angle = lens.angleAt(0.5 * lens.maxRadius());
        ASSERT_TRUE(angle.has_value());
        EXPECT_GE(*angle, 0.0);
        EXPECT_LE(*angle, lens.maxAngle());
    }
}

} // namespace
} // namespace tarvo::scene
