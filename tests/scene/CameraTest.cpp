#include "scene/Camera.h"

#include "scene/Room.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace tarvo::scene {
namespace {

using geometry::TiltOrientation;

void expectNear(const Vector& actual, const Vector& expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-12);
    EXPECT_NEAR(actual.y, expected.y, 1e-12);
    EXPECT_NEAR(actual.z, expected.z, 1e-12);
}

TEST(Direction, followsCompassAndElevation) {
    const double half = std::sqrt(0.5);
    expectNear(direction(0.0, 0.0), {0.0, 1.0, 0.0});
    expectNear(direction(90.0, 0.0), {1.0, 0.0, 0.0});
    expectNear(direction(-90.0, 0.0), {-1.0, 0.0, 0.0});
    expectNear(direction(180.0, 0.0), {0.0, -1.0, 0.0});
    expectNear(direction(123.0, 90.0), {0.0, 0.0, 1.0});
    expectNear(direction(123.0, -90.0), {0.0, 0.0, -1.0});
    expectNear(direction(45.0, 0.0), {half, half, 0.0});
    expectNear(direction(180.0, 45.0), {0.0, -half, half});
    expectNear(direction(30.0, -60.0), {0.25, std::sqrt(3.0) / 4.0, -std::sqrt(3.0) / 2.0});
}

TEST(MountingFrame, turnsThePictureAsTheMountingDoes) {
    const MountingFrame wall = mountingFrame(TiltOrientation::wall);
    expectNear(wall.axis, {0.0, 1.0, 0.0});
    expectNear(wall.right, {1.0, 0.0, 0.0});
    expectNear(wall.down, {0.0, 0.0, -1.0});

    const MountingFrame ceiling = mountingFrame(TiltOrientation::ceiling);
    expectNear(ceiling.axis, {0.0, 0.0, -1.0});
    expectNear(ceiling.right, {1.0, 0.0, 0.0});
    expectNear(ceiling.down, {0.0, -1.0, 0.0});

    const MountingFrame desk = mountingFrame(TiltOrientation::desk);
    expectNear(desk.axis, {0.0, 0.0, 1.0});
    expectNear(desk.right, {-1.0, 0.0, 0.0});
    expectNear(desk.down, {0.0, -1.0, 0.0});
}

TEST(MountingFrame, undefIsWall) {
    const MountingFrame undef = mountingFrame(TiltOrientation::undef);
    const MountingFrame wall = mountingFrame(TiltOrientation::wall);
    EXPECT_EQ(undef.axis, wall.axis);
    EXPECT_EQ(undef.right, wall.right);
    EXPECT_EQ(undef.down, wall.down);
    EXPECT_EQ(defaultCamera(TiltOrientation::undef).position, defaultCamera(TiltOrientation::wall).position);
}

TEST(MountingFrame, isNeverMirrored) {
    for (const auto mounting : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        const MountingFrame frame = mountingFrame(mounting);
        expectNear(cross(frame.right, frame.down), frame.axis);
        EXPECT_DOUBLE_EQ(length(frame.right), 1.0);
        EXPECT_DOUBLE_EQ(length(frame.down), 1.0);
        EXPECT_DOUBLE_EQ(dot(frame.right, frame.down), 0.0);
    }
}

TEST(MountingFrame, refusesUnknownMountings) {
    EXPECT_THROW(mountingFrame(static_cast<TiltOrientation>(4)), std::invalid_argument);
    EXPECT_THROW(defaultCamera(static_cast<TiltOrientation>(-1)), std::invalid_argument);
}

TEST(DefaultCamera, standsWhereItsMountingSays) {
    const FisheyeCamera wall = defaultCamera(TiltOrientation::wall);
    EXPECT_LT(wall.position.y - roomLow.y, 0.2);
    EXPECT_DOUBLE_EQ(wall.position.z, 2.2);
    const FisheyeCamera ceiling = defaultCamera(TiltOrientation::ceiling);
    EXPECT_LT(roomHigh.z - ceiling.position.z, 0.25);
    const FisheyeCamera desk = defaultCamera(TiltOrientation::desk);
    EXPECT_GT(desk.position.z, 0.7);
    EXPECT_LT(desk.position.z, 1.0);
    for (const FisheyeCamera& camera : {wall, ceiling, desk}) {
        EXPECT_TRUE(CRoom::contains(camera.position));
        EXPECT_EQ(camera.lens, geometry::defaultLensProfile);
        EXPECT_DOUBLE_EQ(camera.maxAngleDegrees, 100.0);
    }
}

TEST(SquarePixelView, widensWithThePicture) {
    const PerspectiveView view = squarePixelView({1.0, 2.0, 1.5}, 10.0, -20.0, 45.0, 640, 480);
    EXPECT_EQ(view.position, (Vector{1.0, 2.0, 1.5}));
    EXPECT_DOUBLE_EQ(view.panDegrees, 10.0);
    EXPECT_DOUBLE_EQ(view.tiltDegrees, -20.0);
    EXPECT_NEAR(view.tanHalfHeight, 1.0, 1e-12);
    EXPECT_NEAR(view.tanHalfWidth, 4.0 / 3.0, 1e-12);
}

TEST(SquarePixelView, refusesImpossibleViews) {
    EXPECT_THROW(squarePixelView({}, 0.0, 0.0, 90.0, 640, 480), std::invalid_argument);
    EXPECT_THROW(squarePixelView({}, 0.0, 0.0, 0.0, 640, 480), std::invalid_argument);
    EXPECT_THROW(squarePixelView({}, 0.0, 0.0, std::nan(""), 640, 480), std::invalid_argument);
    EXPECT_THROW(squarePixelView({}, 0.0, 0.0, 30.0, 640, 0), std::invalid_argument);
    EXPECT_THROW(squarePixelView({}, 0.0, 0.0, 30.0, -1, 480), std::invalid_argument);
}

} // namespace
} // namespace tarvo::scene
