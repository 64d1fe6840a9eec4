#include "geometry/PointMapping.h"

#include "tests/geometry/TrueCamera.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::geometry {
namespace {

using tests::toRadians;

constexpr LensProfile equidistant{0.0F, 0.0F, 0.3125F};

CViewState viewOf(ViewType viewType, TiltOrientation orientation, int outputWidth = 1600,
                  int outputHeight = 900) {
    CViewState view;
    view.setLensProfile(equidistant);
    view.setTiltOrientation(orientation);
    view.setViewType(viewType);
    view.setInputSize(1200, 900);
    view.setOutputSize(outputWidth, outputHeight);
    return view;
}

void expectDirection(const std::optional<PanTilt>& seen, double pan, double tilt, double tolerance = 1e-4) {
    ASSERT_TRUE(seen);
    EXPECT_NEAR(std::remainder(seen->panDegrees - pan, 360.0), 0.0, tolerance);
    EXPECT_NEAR(seen->tiltDegrees, tilt, tolerance);
}

/// At the nadir the pan says nothing.
void expectStraightDown(const std::optional<PanTilt>& seen) {
    ASSERT_TRUE(seen);
    EXPECT_NEAR(seen->tiltDegrees, -90.0, 1e-4);
}

TEST(PointMapping, worksInSingleDewarpedViewsOnly) {
    for (const auto viewType :
         {ViewType::quad, ViewType::panoramaSingle, ViewType::panoramaDouble, ViewType::custom}) {
        const CViewState view = viewOf(viewType, TiltOrientation::ceiling);
        EXPECT_FALSE(mapPoint(view, 0.5, 0.5));
        EXPECT_FALSE(mapPointToOverview(view, 0.5, 0.5));
    }
    EXPECT_TRUE(mapPoint(viewOf(ViewType::single, TiltOrientation::ceiling), 0.5, 0.5));
    EXPECT_TRUE(mapPointToOverview(viewOf(ViewType::singleOverview, TiltOrientation::ceiling), 0.5, 0.5));
}

TEST(PointMapping, centreIsThePosition) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::ceiling);
    view.setPtzPosition(-120.0, -35.0, 30.0, false);
    const auto centre = mapPoint(view, 0.5, 0.5);
    ASSERT_TRUE(centre);
    EXPECT_DOUBLE_EQ(centre->panDegrees, -120.0);
    EXPECT_NEAR(centre->tiltDegrees, -35.0, 1e-12);
}

TEST(PointMapping, cornersAreWhereTheOutputShowsThem) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::wall);
    view.setPtzPosition(20.0, 10.0, 30.0, false);
    // Across the output lies the whole width of the projection; down it 9/16 of that.
    const double half = 4.0 / 3.0 * std::tan(toRadians(30.0));
    for (const double x : {0.0, 0.25, 1.0}) {
        for (const double y : {0.0, 0.6, 1.0}) {
            const auto ray =
                tests::viewRay(20.0, 10.0, (2.0 * x - 1.0) * half, (1.0 - 2.0 * y) * half * 9.0 / 16.0);
            const double tilt = std::asin(ray[2]) * 180.0 / 3.14159265358979;
            const double pan = std::atan2(ray[0], ray[1]) * 180.0 / 3.14159265358979;
            expectDirection(mapPoint(view, x, y), pan, tilt);
        }
    }
}

TEST(PointMapping, unknownSizesCountAsFourToThree) {
    CViewState view;
    view.setPtzPosition(0.0, 0.0, 30.0, false);
    const double half = std::tan(toRadians(30.0));
    expectDirection(mapPoint(view, 1.0, 0.5), std::atan(4.0 / 3.0 * half) * 180.0 / 3.14159265358979, 0.0);
    expectDirection(mapPoint(view, 0.5, 0.0), 0.0, 30.0);
}

TEST(PointMapping, overviewDiscIsTheFisheyePicture) {
    CViewState view = viewOf(ViewType::singleOverview, TiltOrientation::ceiling);
    view.setPtzPosition(40.0, -30.0, 30.0, false);
    // 16:9: the disc's centre lies a quarter of the height above the lower right corner.
    const double centreX = 1.0 - 0.25 * 9.0 / 16.0;
    expectStraightDown(mapPoint(view, centreX, 0.75));
    // A third of its radius to the right: θ = 1/3 / 0.625 rad = 30.558 degrees off the nadir, looking east.
    expectDirection(mapPoint(view, centreX + 0.25 * 9.0 / 16.0 / 3.0, 0.75), 90.0, 30.5577 - 90.0, 1e-3);
    // Just outside its circle the dewarped view is meant, as everywhere with the flag.
    const double half = 4.0 / 3.0 * std::tan(toRadians(30.0));
    const auto through = [&](double x, double y) {
        return tests::viewRay(40.0, -30.0, (2.0 * x - 1.0) * half, (1.0 - 2.0 * y) * half * 9.0 / 16.0);
    };
    const auto outside = through(centreX, 0.499);
    expectDirection(mapPoint(view, centreX, 0.499),
                    std::atan2(outside[0], outside[1]) * 180.0 / 3.14159265358979,
                    std::asin(outside[2]) * 180.0 / 3.14159265358979);
    const auto behind = through(centreX, 0.75);
    expectDirection(mapPoint(view, centreX, 0.75, 1),
                    std::atan2(behind[0], behind[1]) * 180.0 / 3.14159265358979,
                    std::asin(behind[2]) * 180.0 / 3.14159265358979);

    view.setOptions(static_cast<std::int32_t>(OptionFlag::overviewMapPlacementLeft));
    expectStraightDown(mapPoint(view, 0.25 * 9.0 / 16.0, 0.75));
    CViewState plain = viewOf(ViewType::single, TiltOrientation::ceiling);
    plain.setPtzPosition(40.0, -30.0, 30.0, false);
    expectDirection(mapPoint(plain, centreX, 0.75),
                    std::atan2(behind[0], behind[1]) * 180.0 / 3.14159265358979,
                    std::asin(behind[2]) * 180.0 / 3.14159265358979);
}

TEST(PointMapping, noEffectMapsTheFisheyePicture) {
    CViewState ceiling = viewOf(ViewType::single, TiltOrientation::ceiling, 800, 600);
    ceiling.setPtzPosition(25.0, -30.0, 30.0, false);
    ceiling.setEffectLevel(0.0);
    expectStraightDown(mapPoint(ceiling, 0.5, 0.5));
    // A quarter of the height below the centre: half a half height, θ = 0.5 / 0.625 = 0.8 rad = 45.8366
    // degrees.
    expectDirection(mapPoint(ceiling, 0.5, 0.75), 180.0 + 25.0, 45.8366 - 90.0, 1e-3);
    // As far to the right: 0.1875 of the width of 4:3 is a quarter of the height.
    expectDirection(mapPoint(ceiling, 0.6875, 0.5), 90.0 + 25.0, 45.8366 - 90.0, 1e-3);

    CViewState desk = viewOf(ViewType::single, TiltOrientation::desk, 800, 600);
    desk.setPtzPosition(25.0, 30.0, 30.0, false);
    desk.setEffectLevel(0.0);
    expectDirection(mapPoint(desk, 0.6875, 0.5), -90.0 + 25.0 + 180.0, 90.0 - 45.8366, 1e-3);

    CViewState wall = viewOf(ViewType::single, TiltOrientation::wall, 800, 600);
    wall.setPtzPosition(25.0, 30.0, 30.0, false);
    wall.setEffectLevel(0.0);
    expectDirection(mapPoint(wall, 0.6875, 0.5), 45.8366, 0.0, 1e-3);
}

TEST(PointMapping, noEffectFollowsTheOutputsAspect) {
    // Twice as wide as high from 4:3: Ai / Ao = 2/3 narrows the picture, so x = 0.5 + 1/8 is 0.375 of the
    // width of the input and half a half height.
    CViewState wide = viewOf(ViewType::single, TiltOrientation::wall, 1200, 600);
    wide.setEffectLevel(0.0);
    expectDirection(mapPoint(wide, 0.625, 0.5), 45.8366, 0.0, 1e-3);
    // Square: Ai / Ao = 4/3 lengthens the vertical.
    CViewState square = viewOf(ViewType::single, TiltOrientation::wall, 600, 600);
    square.setEffectLevel(0.0);
    expectDirection(mapPoint(square, 0.5, 0.5 - 0.1875), 0.0, 45.8366, 1e-3);
}

TEST(PointMapping, beyondTheLensTableLiesTheHorizon) {
    // The equidistant table ends at 0.625 · π/2 = 0.98 half heights; the disc's rim lies beyond it.
    const CViewState view = viewOf(ViewType::singleOverview, TiltOrientation::ceiling);
    const double centreX = 1.0 - 0.25 * 9.0 / 16.0;
    expectDirection(mapPoint(view, centreX, 0.75 + 0.2499), 180.0, 0.0);
    expectDirection(mapPoint(view, centreX, 0.75 + 0.24), 180.0, 0.96 / 0.625 * 57.29578 - 90.0, 1e-3);
}

TEST(PointMapping, overviewPointOfACeilingViewStraightDownIsTheCentre) {
    CViewState view = viewOf(ViewType::single, TiltOrientation::ceiling);
    view.setPtzPosition(0.0, -90.0, 30.0, false);
    const auto centre = mapPointToOverview(view, 0.5, 0.5);
    ASSERT_TRUE(centre);
    EXPECT_NEAR(centre->x, 0.5, 1e-9);
    EXPECT_NEAR(centre->y, 0.5, 1e-9);
}

TEST(PointMapping, overviewPointsAgreeWithVectors) {
    CViewState view = viewOf(ViewType::singleOverview, TiltOrientation::ceiling);
    view.setPtzPosition(70.0, -45.0, 30.0, false);
    const double half = 4.0 / 3.0 * std::tan(toRadians(30.0));
    const auto mounting = tests::Mounting::of(TiltOrientation::ceiling);
    for (const double x : {0.0, 0.4, 1.0}) {
        for (const double y : {0.0, 0.7, 1.0}) {
            const auto ray =
                tests::viewRay(70.0, -45.0, (2.0 * x - 1.0) * half, (1.0 - 2.0 * y) * half * 9.0 / 16.0);
            const auto image = mounting.image(equidistant, ray);
            const auto seen = mapPointToOverview(view, x, y);
            ASSERT_TRUE(seen);
            EXPECT_NEAR(seen->x, 0.5 + image.x, 1e-5);
            EXPECT_NEAR(seen->y, 0.5 + image.y, 1e-5);
        }
    }
}

} // namespace
} // namespace tarvo::geometry
