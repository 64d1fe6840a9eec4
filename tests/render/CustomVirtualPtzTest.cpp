#include "render/reference/CustomPrograms.h"
#include "tests/render/CustomTables.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

// The virtual camera against vector arithmetic in double precision: rays of a camera instead of map formulas.

namespace tarvo::render::reference {
namespace {

using Constants = VirtualPtzConstants;

constexpr double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

/// What the camera is told, in degrees.
struct Camera {
    double panoramaWidth = 360.0;
    double panoramaHeight = 180.0;
    double aspect = 16.0 / 9.0;
    double pan = 0.0;
    double tilt = 0.0;
    double fieldOfView = 60.0;
    double pitch = 0.0;
    double roll = 0.0;
    double effectLevel = 1.0;
};

Constants constantsOf(const Camera& camera) {
    auto constants = reference::constantsOf<Constants>(2, 2, 1);
    const auto angle = [](double degrees) { return static_cast<float>(radians(degrees)); };
    constants.inputFov[0] = angle(camera.panoramaWidth);
    constants.inputFov[1] = angle(camera.panoramaHeight);
    constants.outputAR = static_cast<float>(camera.aspect);
    constants.panTiltFov[0] = angle(camera.pan);
    constants.panTiltFov[1] = angle(camera.tilt);
    constants.panTiltFov[2] = angle(camera.fieldOfView);
    constants.pitchRoll[0] = angle(camera.pitch);
    constants.pitchRoll[1] = angle(camera.roll);
    constants.effectLevel = static_cast<float>(camera.effectLevel);
    return constants;
}

/// x ahead, y to the right, z downward.
using Vector = std::array<double, 3>;

struct Angles {
    double longitude;
    double latitude;
};

Vector direction(const Angles& angles) {
    return {std::cos(angles.longitude) * std::cos(angles.latitude),
            std::sin(angles.longitude) * std::cos(angles.latitude), std::sin(angles.latitude)};
}

Angles anglesOf(const Vector& d) {
    return {std::atan2(d[1], d[0]), std::atan2(d[2], std::hypot(d[0], d[1]))};
}

/// The ray through a point of the camera's picture: its axis, and from there to the right and down.
Vector ray(const Camera& camera, double u, double v) {
    const double p = radians(camera.pan);
    const double t = radians(camera.tilt);
    const double halfWidth = std::tan(radians(camera.fieldOfView) / 2.0);
    const double x = (2.0 * u - 1.0) * halfWidth;
    const double y = (2.0 * v - 1.0) * halfWidth / camera.aspect;
    const Vector axis{std::cos(p) * std::cos(t), std::sin(p) * std::cos(t), -std::sin(t)};
    const Vector right{-std::sin(p), std::cos(p), 0.0};
    const Vector down{std::cos(p) * std::sin(t), std::sin(p) * std::sin(t), std::cos(t)};
    return {axis[0] + x * right[0] + y * down[0], axis[1] + x * right[1] + y * down[1],
            axis[2] + x * right[2] + y * down[2]};
}

Vector turned(const Vector& v, std::size_t from, std::size_t to, double angle) {
    Vector result = v;
    result[from] = v[from] * std::cos(angle) - v[to] * std::sin(angle);
    result[to] = v[from] * std::sin(angle) + v[to] * std::cos(angle);
    return result;
}

/// Where in the panorama a point of the output looks, 0 … 1 over it.
struct Place {
    double x;
    double y;
};

Place expectedPlace(const Camera& camera, double u, double v) {
    Angles seen = anglesOf(ray(camera, u, v));
    // The rectilinear and the flat picture, each turned to pan and tilt, mixed.
    const double level = camera.effectLevel;
    const double width = radians(camera.panoramaWidth);
    const Angles flat{(u - 0.5) * width + radians(camera.pan),
                      (v - 0.5) * width / camera.aspect - radians(camera.tilt)};
    seen = {level * seen.longitude + (1.0 - level) * flat.longitude,
            level * seen.latitude + (1.0 - level) * flat.latitude};
    const Vector rolled = turned(direction(seen), 1, 2, radians(camera.roll));
    const Angles straight = anglesOf(turned(rolled, 0, 2, radians(camera.pitch)));
    return {straight.longitude / width + 0.5, straight.latitude / radians(camera.panoramaHeight) + 0.5};
}

class CustomVirtualPtz : public testing::Test {
protected:
    Colour seen(const Camera& camera, double u, double v) const {
        return customVirtualPtzProgram(constantsOf(camera), m_table, m_input, static_cast<float>(u),
                                       static_cast<float>(v));
    }

    void expectPlace(const Colour& colour, const Place& place) const {
        EXPECT_NEAR(colour.blue * 255.0F, rampBlue(place.x), 0.02);
        EXPECT_NEAR(colour.green * 255.0F, rampGreen(place.y), 0.02);
        EXPECT_NEAR(colour.alpha, 2.0F, 1e-5F);
    }

    static void expectBlack(const Colour& colour) {
        EXPECT_EQ(toBgra(colour), opaqueBlack);
        EXPECT_EQ(colour.alpha, 1.0F);
    }

    /// Compares a grid of points; how many of them see the panorama.
    int compareAll(const Camera& camera) const {
        int inside = 0;
        for (int row = 0; row <= 16; ++row) {
            for (int column = 0; column <= 16; ++column) {
                SCOPED_TRACE(testing::Message() << column << ' ' << row);
                const double u = column / 16.0;
                const double v = row / 16.0;
                const Place place = expectedPlace(camera, u, v);
                const double margin = std::min({place.x, 1.0 - place.x, place.y, 1.0 - place.y});
                if (margin > 1e-5) {
                    expectPlace(seen(camera, u, v), place);
                    ++inside;
                } else if (margin < -1e-5) {
                    expectBlack(seen(camera, u, v));
                }
            }
        }
        return inside;
    }

    Picture m_input = levelRamp();
    LookupTables m_table = identityTable();
};

TEST_F(CustomVirtualPtz, theCentreLooksAlongPanAndTilt) {
    Camera camera;
    expectPlace(seen(camera, 0.5, 0.5), {0.5, 0.5});
    camera.pan = 36.0;   // a tenth of the panorama
    camera.tilt = -45.0; // a quarter of its height, downward
    expectPlace(seen(camera, 0.5, 0.5), {0.6, 0.75});
    camera.pan = -90.0;
    camera.tilt = 30.0;
    expectPlace(seen(camera, 0.5, 0.5), {0.25, 1.0 / 3.0});
}

TEST_F(CustomVirtualPtz, theFieldOfViewIsTheWholeWidth) {
    Camera camera;
    camera.fieldOfView = 72.0;
    expectPlace(seen(camera, 1.0, 0.5), {0.6, 0.5});
    expectPlace(seen(camera, 0.0, 0.5), {0.4, 0.5});
    camera.aspect = 1.0;
    expectPlace(seen(camera, 0.5, 0.0), {0.5, 0.5 - 36.0 / 180.0});
}

TEST_F(CustomVirtualPtz, isARectilinearCamera) {
    const Camera cameras[] = {
        {.pan = 20.0, .tilt = -30.0, .fieldOfView = 90.0},
        {.aspect = 0.75, .pan = -100.0, .tilt = 55.0, .fieldOfView = 50.0},
        {.pan = 10.0, .tilt = -5.0, .fieldOfView = 120.0},
        {.pan = 60.0, .tilt = 20.0, .fieldOfView = 5.0},
    };
    for (const Camera& camera : cameras) {
        SCOPED_TRACE(camera.pan);
        EXPECT_EQ(compareAll(camera), 17 * 17);
    }
}

TEST_F(CustomVirtualPtz, pitchAndRollAreUndone) {
    Camera camera;
    camera.pitch = 20.0;
    expectPlace(seen(camera, 0.5, 0.5), {0.5, 0.5 + 20.0 / 180.0});
    camera.pitch = 0.0;
    camera.roll = 30.0;
    camera.pan = 90.0;
    expectPlace(seen(camera, 0.5, 0.5), {0.75, 0.5 + 30.0 / 180.0});
    const Camera both{.pan = 15.0, .tilt = 10.0, .fieldOfView = 70.0, .pitch = -25.0, .roll = 12.0};
    EXPECT_EQ(compareAll(both), 17 * 17);
}

TEST_F(CustomVirtualPtz, withoutEffectThePanoramaIsFlat) {
    Camera camera{.panoramaWidth = 120.0, .panoramaHeight = 60.0, .aspect = 2.0, .effectLevel = 0.0};
    expectPlace(seen(camera, 0.25, 0.75), {0.25, 0.75});
    camera.pan = 12.0; // follows the pan and the tilt: a tenth to the right, a tenth down
    camera.tilt = -6.0;
    expectPlace(seen(camera, 0.25, 0.75), {0.35, 0.85});
    // The horizontal field of view serves both directions: with twice the aspect half the height is used.
    camera = {.panoramaWidth = 120.0, .panoramaHeight = 60.0, .aspect = 4.0, .effectLevel = 0.0};
    expectPlace(seen(camera, 0.5, 1.0), {0.5, 0.75});
}

TEST_F(CustomVirtualPtz, theEffectIsAMixture) {
    for (const double level : {0.25, 0.5, 0.999}) {
        SCOPED_TRACE(level);
        const Camera camera{.panoramaWidth = 150.0,
                            .panoramaHeight = 100.0,
                            .pan = 12.0,
                            .tilt = -8.0,
                            .fieldOfView = 80.0,
                            .pitch = 5.0,
                            .roll = -7.0,
                            .effectLevel = level};
        EXPECT_GT(compareAll(camera), 100);
    }
}

TEST_F(CustomVirtualPtz, pastThePanoramaItIsBlack) {
    const Camera camera{.panoramaWidth = 180.0, .panoramaHeight = 60.0, .pan = 75.0, .fieldOfView = 60.0};
    // 15 of 30 degrees to the right the panorama ends.
    expectBlack(seen(camera, 0.99, 0.5));
    EXPECT_GT(seen(camera, 0.01, 0.5).alpha, 1.5F);
    const int inside = compareAll(camera);
    EXPECT_GT(inside, 100);
    EXPECT_LT(inside, 250);
}

TEST_F(CustomVirtualPtz, straightDownHasAValueEverywhere) {
    const Camera camera{.tilt = -90.0};
    for (const double u : {0.0, 0.3, 0.5, 1.0}) {
        for (const double v : {0.0, 0.5, 0.8, 1.0}) {
            const Colour colour = seen(camera, u, v);
            EXPECT_NEAR(colour.alpha, 2.0F, 1e-5F);
            EXPECT_GT(colour.green * 255.0F, rampGreen(0.65)); // the floor: at least 27 degrees down
        }
    }
}

TEST_F(CustomVirtualPtz, thePoleIsSeenHoweverSinesRound) {
    // The pitch turns the centre of each of these pictures to a pole of the panorama, where every longitude
    // is right. The last row of pixels is all one colour from its middle on.
    const auto expectRow = [](const Colour& colour, float level) {
        EXPECT_NEAR(colour.green * 255.0F, level, 1e-3F);
        EXPECT_NEAR(colour.alpha, 2.0F, 1e-5F);
    };
    for (int step = 0; step <= 720; ++step) {
        const double angle = step * 0.25;
        expectRow(seen({.tilt = angle - 90.0, .pitch = angle}, 0.5, 0.5), 127.0F);
        expectRow(seen({.tilt = 90.0 - angle, .pitch = -angle}, 0.5, 0.5), 0.0F);
    }
}

TEST_F(CustomVirtualPtz, wildRecordsGiveNoNumbersAndNoCrash) {
    const auto expectTame = [](const Colour& colour) {
        for (const float channel : {colour.red, colour.green, colour.blue}) {
            EXPECT_TRUE(channel >= 0.0F && channel <= 1.0F) << channel;
        }
        EXPECT_GE(colour.alpha, 1.0F);
        EXPECT_LE(colour.alpha, 2.001F);
    };
    for (const double wild : {0.0, -1.0, 1e38, static_cast<double>(INFINITY), static_cast<double>(NAN)}) {
        for (double Camera::*field :
             {&Camera::panoramaWidth, &Camera::panoramaHeight, &Camera::aspect, &Camera::pan, &Camera::tilt,
              &Camera::fieldOfView, &Camera::pitch, &Camera::roll, &Camera::effectLevel}) {
            Camera camera;
            camera.*field = wild;
            for (const double place : {0.0, 0.5, 0.7}) {
                expectTame(seen(camera, place, 0.5));
                expectTame(seen(camera, 0.5, place));
            }
        }
    }
    const Camera narrow{.pan = 36.0, .fieldOfView = 0.0}; // every point is the centre
    expectPlace(seen(narrow, 0.1, 0.9), {0.6, 0.5});
}

} // namespace
} // namespace tarvo::render::reference
