#include "scene/Render.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tarvo::scene {
namespace {

using render::Picture;

constexpr int width = 640;
constexpr int height = 480;
constexpr double panDegrees = 8.0;
constexpr double tiltDegrees = -12.0;
constexpr double tanHalfWidth = 1.0;
constexpr double tanHalfHeight = 0.75;
constexpr Vector position{-2.9, -1.0, 1.6};

struct Place {
    double x;
    double y;
};

/// Pinhole arithmetic: turns the room under the camera until it looks north and level, then divides by depth.
Place project(const Vector& point) {
    const double pan = panDegrees * std::numbers::pi / 180.0;
    const double tilt = tiltDegrees * std::numbers::pi / 180.0;
    const double dx = point.x - position.x;
    const double dy = point.y - position.y;
    const double dz = point.z - position.z;
    const double aside = dx * std::cos(pan) - dy * std::sin(pan);
    const double ahead = dx * std::sin(pan) + dy * std::cos(pan);
    const double depth = ahead * std::cos(tilt) + dz * std::sin(tilt);
    const double above = dz * std::cos(tilt) - ahead * std::sin(tilt);
    return {(aside / depth / tanHalfWidth + 1.0) * width / 2.0,
            (1.0 - above / depth / tanHalfHeight) * height / 2.0};
}

double brightness(const Picture& picture, int x, int y) {
    const render::Bgra& pixel = picture.at(x, y);
    return (pixel.red + pixel.green + pixel.blue) / 3.0;
}

/// Walks from the bright door frame to the dark leaf across the place where the edge should be, by the step
/// (stepX, stepY), and says how many steps off the edge really is.
double edgeOffset(const Picture& picture, const Place& expected, int stepX, int stepY) {
    constexpr int reach = 7;
    const int x0 = static_cast<int>(std::floor(expected.x));
    const int y0 = static_cast<int>(std::floor(expected.y));
    const auto level = [&](int step) { return brightness(picture, x0 + step * stepX, y0 + step * stepY); };
    const double frame = (level(-reach) + level(-reach + 1)) / 2.0;
    const double leaf = (level(reach) + level(reach - 1)) / 2.0;
    EXPECT_GT(frame, leaf + 50.0);
    const double middle = (frame + leaf) / 2.0;
    for (int step = -reach; step < reach; ++step) {
        if (level(step) >= middle && level(step + 1) < middle) {
            const double share = (level(step) - middle) / (level(step) - level(step + 1));
            const double centreX = x0 + 0.5 - expected.x;
            const double centreY = y0 + 0.5 - expected.y;
            return step + share + centreX * stepX + centreY * stepY;
        }
    }
    ADD_FAILURE() << "no edge near " << expected.x << ", " << expected.y;
    return 1e9;
}

TEST(Perspective, edgesOfTheDoorLieWherePinholeArithmeticPutsThem) {
    const Picture picture = renderPerspective(
        CRoom(), {position, panDegrees, tiltDegrees, tanHalfWidth, tanHalfHeight}, width, height);
    for (double z = 0.7; z < 2.0; z += 0.1) {
        EXPECT_NEAR(edgeOffset(picture, project({doorWest, 3.0, z}), 1, 0), 0.0, 0.5) << "left edge at " << z;
        EXPECT_NEAR(edgeOffset(picture, project({doorEast, 3.0, z}), -1, 0), 0.0, 0.5)
            << "right edge at " << z;
    }
    for (double x = doorWest + 0.1; x < doorEast - 0.1; x += 0.1) {
        EXPECT_NEAR(edgeOffset(picture, project({x, 3.0, doorTop}), 0, 1), 0.0, 0.5) << "upper edge at " << x;
    }
}

TEST(Perspective, staysUprightStraightUpAndDown) {
    // Straight down with pan 0 the top of the picture is north; straight up it is south.
    const CRoom room(0.0, false);
    const Vector above{0.0, -1.75, 1.5};
    const RenderOptions oneSample{1, 1};
    // The dot of the floor's F lies east and south of its plate.
    const Picture down = renderPerspective(room, {above, 0.0, -90.0, 0.5, 0.5}, 150, 150, oneSample);
    // 1 m of floor at a distance of 1.5 m: 0.75 m on either side of the centre over 75 pixels.
    EXPECT_GT(down.at(75 + 40, 75 + 42).red, down.at(75 + 40, 75 + 42).blue + 100);
    EXPECT_LT(down.at(75 - 40, 75 - 42).red, down.at(75 - 40, 75 - 42).blue + 60);
    // The dot of the ceiling's C lies west and south of its plate, seen from below with pan 0 and south on
    // top.
    const Vector below{0.0, 1.5, 1.5};
    const Picture up = renderPerspective(room, {below, 0.0, 90.0, 0.5, 0.5}, 150, 150, oneSample);
    EXPECT_GT(up.at(75 - 40, 75 - 42).red, up.at(75 - 40, 75 - 42).blue + 100);
    EXPECT_LT(up.at(75 + 40, 75 + 42).red, up.at(75 + 40, 75 + 42).blue + 60);
}

} // namespace
} // namespace tarvo::scene
