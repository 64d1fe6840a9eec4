#include "scene/Render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace tarvo::scene {
namespace {

using geometry::TiltOrientation;
using render::Bgra;
using render::Picture;

constexpr RenderOptions oneSample{1, 0};

/// The colour straight ahead.
Bgra colourAt(const CRoom& room, const Vector& position, double panDegrees, double tiltDegrees) {
    return renderPerspective(room, {position, panDegrees, tiltDegrees, 0.001, 0.001}, 1, 1, oneSample)
        .at(0, 0);
}

int difference(const Bgra& a, const Bgra& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

/// A camera whose picture angle grows evenly: 180° over the picture's height.
FisheyeCamera evenCamera(TiltOrientation mounting) {
    FisheyeCamera camera = defaultCamera(mounting);
    camera.lens = {0.0F, 0.0F, static_cast<float>(1.0 / std::numbers::pi)};
    return camera;
}

TEST(Fisheye, centreOfAnOddPictureSeesTheAxis) {
    const CRoom room;
    for (const auto& [mounting, tilt] :
         {std::pair{TiltOrientation::wall, 0.0}, std::pair{TiltOrientation::ceiling, -90.0},
          std::pair{TiltOrientation::desk, 90.0}}) {
        const FisheyeCamera camera = defaultCamera(mounting);
        const Bgra ahead = colourAt(room, camera.position, 0.0, tilt);
        EXPECT_LE(difference(renderFisheye(room, camera, 9, 7, oneSample).at(4, 3), ahead), 1);
        EXPECT_LE(difference(renderFisheye(room, camera, 1, 1, oneSample).at(0, 0), ahead), 1);
    }
}

/// Where a pixel right of, below, left of and above the centre looks when the camera's angle is
/// `angleDegrees`.
struct Compass {
    double pan;
    double tilt;
};

std::vector<Compass> aroundTheCentre(TiltOrientation mounting, double angleDegrees) {
    const double rest = 90.0 - angleDegrees;
    switch (mounting) {
    case TiltOrientation::ceiling: // right east, down south
        return {{90.0, -rest}, {180.0, -rest}, {-90.0, -rest}, {0.0, -rest}};
    case TiltOrientation::desk: // right west, down south
        return {{-90.0, rest}, {180.0, rest}, {90.0, rest}, {0.0, rest}};
    default:
        return {{angleDegrees, 0.0}, {0.0, -angleDegrees}, {-angleDegrees, 0.0}, {0.0, angleDegrees}};
    }
}

TEST(Fisheye, everySideLooksWhereTheMountingTurnsIt) {
    constexpr int side =
        361; // half a degree of the scene to a pixel, almost: the angle is 180° · distance / 361
    constexpr int centre = 180;
    const CRoom room;
    for (const auto mounting : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        const FisheyeCamera camera = evenCamera(mounting);
        const Picture picture = renderFisheye(room, camera, side, side, oneSample);
        int mirroredDifferences = 0;
        for (int away = 5; away <= 160; away += 5) {
            const std::vector<Compass> looks = aroundTheCentre(mounting, 180.0 * away / side);
            const std::vector<Bgra> seen{picture.at(centre + away, centre), picture.at(centre, centre + away),
                                         picture.at(centre - away, centre),
                                         picture.at(centre, centre - away)};
            for (std::size_t i = 0; i < 4; ++i) {
                const Bgra truth = colourAt(room, camera.position, looks[i].pan, looks[i].tilt);
                EXPECT_LE(difference(seen[i], truth), 2) << "side " << i << ", " << away << " pixels out";
                mirroredDifferences += difference(seen[(i + 2) % 4], truth) > 10 ? 1 : 0;
            }
        }
        // The room is not symmetrical: a mirrored or turned picture would have failed above.
        EXPECT_GT(mirroredDifferences, 40);
    }
}

TEST(Fisheye, aPlaceOffTheAxesMatchesHandArithmetic) {
    // In a 400 × 200 picture pixel (229, 59) lies 29.5 right of and 40.5 above the centre.
    const double dx = 29.5;
    const double dy = -40.5;
    const double distance = std::sqrt(dx * dx + dy * dy);
    const double angle = std::numbers::pi * distance / 200.0; // 180° over 200 rows
    // Wall camera: ahead is north, right is east, up is up.
    const double north = std::cos(angle);
    const double east = std::sin(angle) * dx / distance;
    const double up = std::sin(angle) * -dy / distance;
    const double pan = std::atan2(east, north) * 180.0 / std::numbers::pi;
    const double tilt = std::asin(up) * 180.0 / std::numbers::pi;
    const CRoom room;
    const FisheyeCamera camera = evenCamera(TiltOrientation::wall);
    const Picture picture = renderFisheye(room, camera, 400, 200, oneSample);
    EXPECT_LE(difference(picture.at(229, 59), colourAt(room, camera.position, pan, tilt)), 2);
}

TEST(Fisheye, isBlackBeyondTheMaximumAngleAndNowhereElse) {
    FisheyeCamera camera = evenCamera(TiltOrientation::wall);
    camera.maxAngleDegrees = 60.0; // a third of the height
    const int width = 240;
    const int height = 180;
    const Picture picture = renderFisheye(CRoom(), camera, width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double radius = std::hypot(x + 0.5 - 120.0, y + 0.5 - 90.0);
            if (radius > 61.0) {
                ASSERT_EQ(picture.at(x, y), render::opaqueBlack) << x << ' ' << y;
            } else if (radius < 59.0) {
                ASSERT_GT(picture.at(x, y).red + picture.at(x, y).green + picture.at(x, y).blue, 20)
                    << x << ' ' << y;
            }
            ASSERT_EQ(picture.at(x, y).alpha, 255);
        }
    }
}

TEST(Fisheye, isBlackWhereThePolynomialTurnsOver) {
    FisheyeCamera camera = defaultCamera(TiltOrientation::ceiling);
    camera.lens = {0.0F, -0.25F, 0.6F}; // greatest radius 0.36 at 1.2 radians
    const Picture picture = renderFisheye(CRoom(), camera, 100, 100);
    for (int x = 0; x < 100; ++x) {
        const double radius = std::hypot(x + 0.5 - 50.0, 0.5);
        if (radius > 37.0) {
            EXPECT_EQ(picture.at(x, 50), render::opaqueBlack) << x;
        } else if (radius < 35.0) {
            EXPECT_NE(picture.at(x, 50), render::opaqueBlack) << x;
        }
    }
}

} // namespace
} // namespace tarvo::scene
