#include "geometry/PtzCalculator.h"

#include "tests/geometry/TrueCamera.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::geometry {
namespace {

using tests::toRadians;

/// The single-precision π makes an angle differ from the true one by 3e-8 of itself.
constexpr double tolerance = 2e-5;

PtzCalculator calculator(TiltOrientation orientation, double pan, double tilt, double fieldOfView,
                         double aspect = 4.0 / 3.0) {
    PtzCalculator result;
    result.setMounting(orientation);
    result.setInput(aspect, {0.0F, 0.0F, 0.3125F});
    result.setPosition(pan, tilt, fieldOfView);
    return result;
}

double wrapped(double degrees) {
    return std::remainder(degrees, 360.0);
}

TEST(PtzCalculator, centreOfTheViewIsTheCurrentPosition) {
    for (const double tilt : {-75.0, -30.0, 0.0, 20.0, 80.0}) {
        const PanTilt centre =
            calculator(TiltOrientation::ceiling, 33.0, tilt, 30.0).fromDewarpedPoint(0.0, 0.0);
        EXPECT_DOUBLE_EQ(centre.panDegrees, 33.0);
        EXPECT_NEAR(centre.tiltDegrees, tilt, 1e-12);
    }
}

TEST(PtzCalculator, dewarpedPointsAgreeWithVectors) {
    for (const double pan : {-120.0, 0.0, 45.0}) {
        for (const double tilt : {-85.0, -60.0, -20.0, 0.0, 35.0, 80.0}) {
            for (const double x : {-1.0, -0.3, 0.6}) {
                for (const double y : {-0.9, 0.1, 0.8}) {
                    const double tangent = std::tan(toRadians(50.0));
                    const auto ray = tests::viewRay(pan, tilt, x * 1.5 * tangent, y * tangent);
                    const PanTilt seen =
                        calculator(TiltOrientation::ceiling, pan, tilt, 50.0, 1.5).fromDewarpedPoint(x, y);
                    const auto direction = tests::lookingAt(seen.panDegrees, seen.tiltDegrees);
                    // Past a pole the tilt goes on beyond 90 degrees; the direction is the same.
                    for (std::size_t i = 0; i < 3; ++i) {
                        EXPECT_NEAR(direction[i], ray[i], 1e-6) << pan << ' ' << tilt << ' ' << x << ' ' << y;
                    }
                }
            }
        }
    }
}

TEST(PtzCalculator, straightDownHasTheCurrentPan) {
    // 30 degrees below a view at tilt −60 with a half height of 40 degrees.
    const double y = -std::tan(toRadians(30.0)) / std::tan(toRadians(40.0));
    const PanTilt seen = calculator(TiltOrientation::ceiling, 50.0, -60.0, 40.0).fromDewarpedPoint(0.0, y);
    EXPECT_NEAR(seen.panDegrees, 50.0, tolerance);
    EXPECT_NEAR(seen.tiltDegrees, -90.0, tolerance);
}

TEST(PtzCalculator, straightUpHasTheCurrentPan) {
    const double y = std::tan(toRadians(30.0)) / std::tan(toRadians(40.0));
    const PanTilt seen = calculator(TiltOrientation::desk, -70.0, 60.0, 40.0).fromDewarpedPoint(0.0, y);
    EXPECT_NEAR(seen.panDegrees, -70.0, tolerance);
    EXPECT_NEAR(seen.tiltDegrees, 90.0, tolerance);
}

TEST(PtzCalculator, centreAtThePoleIsTheCurrentPositionToo) {
    for (const double tilt : {-90.0, 90.0}) {
        const PanTilt centre =
            calculator(TiltOrientation::wall, 33.0, tilt, 30.0).fromDewarpedPoint(0.0, 0.0);
        EXPECT_DOUBLE_EQ(centre.panDegrees, 33.0);
        EXPECT_NEAR(centre.tiltDegrees, tilt, tolerance);
    }
}

TEST(PtzCalculator, beyondTheZenithTheTiltGoesOn) {
    const double y = std::tan(toRadians(50.0)) / std::tan(toRadians(55.0));
    const PanTilt seen = calculator(TiltOrientation::desk, 0.0, 60.0, 55.0).fromDewarpedPoint(0.0, y);
    EXPECT_NEAR(seen.panDegrees, 0.0, tolerance);
    EXPECT_NEAR(seen.tiltDegrees, 110.0, tolerance);
}

TEST(PtzCalculator, beyondTheNadirTheTiltGoesOn) {
    // 50 degrees below tilt −60 is 20 degrees past the nadir: the tilt passes −90 and the pan stays.
    const double y = -std::tan(toRadians(50.0)) / std::tan(toRadians(55.0));
    const PanTilt seen = calculator(TiltOrientation::ceiling, 0.0, -60.0, 55.0).fromDewarpedPoint(0.0, y);
    EXPECT_NEAR(seen.panDegrees, 0.0, tolerance);
    EXPECT_NEAR(seen.tiltDegrees, -110.0, tolerance);
}

TEST(PtzCalculator, panIsNotWrapped) {
    const PanTilt seen = calculator(TiltOrientation::ceiling, 170.0, 0.0, 45.0).fromDewarpedPoint(0.75, 0.0);
    EXPECT_NEAR(seen.panDegrees, 170.0 + 45.0, tolerance); // 0.75 · 4/3 · tan 45 = tan 45
}

TEST(PtzCalculator, fisheyePointsAgreeWithVectors) {
    // Equidistant: the radius in half heights is 0.625 θ, and the table inverts it exactly.
    for (const auto orientation : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        const auto mounting = tests::Mounting::of(orientation);
        for (const double pan : {-85.0, -30.0, 0.0, 60.0, 89.0}) {
            for (const double elevation : {5.0, 40.0, 85.0}) {
                const double tilt = orientation == TiltOrientation::ceiling ? -elevation : elevation;
                const auto image = mounting.image({0.0F, 0.0F, 0.3125F}, tests::lookingAt(pan, tilt));
                const PanTilt seen =
                    calculator(orientation, 0.0, 0.0, 30.0).fromFisheyePoint(2.0 * image.x, -2.0 * image.y);
                EXPECT_NEAR(wrapped(seen.panDegrees - pan), 0.0, 1e-4) << pan << ' ' << tilt;
                EXPECT_NEAR(seen.tiltDegrees, tilt, 1e-4) << pan << ' ' << tilt;
            }
        }
    }
}

TEST(PtzCalculator, azimuthsStayWithinHalfATurnInAllQuadrants) {
    const PtzCalculator ceiling = calculator(TiltOrientation::ceiling, 0.0, 0.0, 30.0);
    EXPECT_NEAR(ceiling.fromFisheyePoint(0.3, 0.3).panDegrees, 45.0, tolerance);
    EXPECT_NEAR(ceiling.fromFisheyePoint(0.3, -0.3).panDegrees, 135.0, tolerance);
    EXPECT_NEAR(ceiling.fromFisheyePoint(-0.3, -0.3).panDegrees, -135.0, tolerance);
    EXPECT_NEAR(ceiling.fromFisheyePoint(-0.3, 0.3).panDegrees, -45.0, tolerance);
    const PtzCalculator desk = calculator(TiltOrientation::desk, 0.0, 0.0, 30.0);
    EXPECT_NEAR(desk.fromFisheyePoint(-0.3, 0.3).panDegrees, 45.0, tolerance);
}

TEST(PtzCalculator, centreOfThePictureIsTheLensAxis) {
    EXPECT_DOUBLE_EQ(calculator(TiltOrientation::ceiling, 5.0, 0.0, 30.0).fromFisheyePoint(0, 0).tiltDegrees,
                     -90.0);
    EXPECT_DOUBLE_EQ(calculator(TiltOrientation::desk, 5.0, 0.0, 30.0).fromFisheyePoint(0, 0).tiltDegrees,
                     90.0);
    const PanTilt wall = calculator(TiltOrientation::wall, 5.0, 0.0, 30.0).fromFisheyePoint(0, 0);
    EXPECT_NEAR(wall.panDegrees, 0.0, tolerance);
    EXPECT_NEAR(wall.tiltDegrees, 0.0, tolerance);
}

TEST(PtzCalculator, withoutMountingTheAnglesAreThoseOfThePicture) {
    const PanTilt seen = calculator(TiltOrientation::undef, 0.0, 0.0, 30.0).fromFisheyePoint(0.0, 0.625);
    EXPECT_NEAR(seen.panDegrees, 0.0, tolerance);
    EXPECT_NEAR(seen.tiltDegrees, 57.29578, 1e-4); // one radian
}

} // namespace
} // namespace tarvo::geometry
