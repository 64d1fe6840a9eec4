#include "scene/Render.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <ostream>

// The room is of use as truth only if a faultless dewarp of its fisheye pictures comes very near its
// perspective pictures while a slightly wrong one does not. The dewarp here is a plain bilinear one which
// shares nothing with the room's camera but the statement of how cameras are mounted.

namespace tarvo::scene {
namespace {

using geometry::TiltOrientation;
using render::Bgra;
using render::Picture;

constexpr int width = 640;
constexpr int height = 480;

std::uint8_t between(const std::array<std::uint8_t, 4>& corners, double x, double y) {
    const double upper = corners[0] + x * (corners[1] - corners[0]);
    const double lower = corners[2] + x * (corners[3] - corners[2]);
    return static_cast<std::uint8_t>(std::lround(upper + y * (lower - upper)));
}

Bgra bilinear(const Picture& picture, double x, double y) {
    const int column = static_cast<int>(std::floor(x - 0.5));
    const int row = static_cast<int>(std::floor(y - 0.5));
    if (column < 0 || row < 0 || column + 1 >= picture.width || row + 1 >= picture.height) {
        ADD_FAILURE() << "the view leaves the picture";
        return {};
    }
    const double restX = x - 0.5 - column;
    const double restY = y - 0.5 - row;
    const auto channel = [&](std::uint8_t Bgra::*member) {
        return between({picture.at(column, row).*member, picture.at(column + 1, row).*member,
                        picture.at(column, row + 1).*member, picture.at(column + 1, row + 1).*member},
                       restX, restY);
    };
    return {channel(&Bgra::blue), channel(&Bgra::green), channel(&Bgra::red), 255};
}

struct Aim {
    TiltOrientation mounting;
    double panDegrees;
    double tiltDegrees;
    double halfVerticalDegrees;

    /// Names the case in reports; GoogleTest finds it by this name.
    friend void PrintTo(const Aim& aim, std::ostream* out) {
        *out << "mounting " << static_cast<int>(aim.mounting) << ", pan " << aim.panDegrees << ", tilt "
             << aim.tiltDegrees << ", half the height " << aim.halfVerticalDegrees;
    }
};

Picture dewarp(const Picture& fisheye, const Aim& aim, double shiftX, double shiftY) {
    const double pan = aim.panDegrees * std::numbers::pi / 180.0;
    const double tilt = aim.tiltDegrees * std::numbers::pi / 180.0;
    const double scale = 2.0 * std::tan(aim.halfVerticalDegrees * std::numbers::pi / 180.0) / height;
    Picture view(width, height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const double aside = (column + 0.5 + shiftX - width / 2.0) * scale;
            const double above = (height / 2.0 - row - 0.5 - shiftY) * scale;
            const double ahead = std::cos(tilt) - above * std::sin(tilt);
            const double east = aside * std::cos(pan) + ahead * std::sin(pan);
            const double north = ahead * std::cos(pan) - aside * std::sin(pan);
            const double up = std::sin(tilt) + above * std::cos(tilt);
            double right = east;
            double down = -up;
            double forward = north;
            if (aim.mounting == TiltOrientation::ceiling) {
                down = -north;
                forward = -up;
            } else if (aim.mounting == TiltOrientation::desk) {
                right = -east;
                down = -north;
                forward = up;
            }
            const double radius = std::hypot(right, down);
            const double angle = std::atan2(radius, forward);
            const double distance =
                geometry::lensRadius(geometry::defaultLensProfile, angle) * fisheye.height;
            view.at(column, row) = bilinear(fisheye, fisheye.width / 2.0 + distance * right / radius,
                                            fisheye.height / 2.0 + distance * down / radius);
        }
    }
    return view;
}

double psnr(const Picture& one, const Picture& two) {
    double sum = 0.0;
    for (std::size_t i = 0; i < one.pixels.size(); ++i) {
        for (const double difference :
             {one.pixels[i].red - two.pixels[i].red + 0.0, one.pixels[i].green - two.pixels[i].green + 0.0,
              one.pixels[i].blue - two.pixels[i].blue + 0.0}) {
            sum += difference * difference;
        }
    }
    return 10.0 * std::log10(255.0 * 255.0 * 3.0 * static_cast<double>(one.pixels.size()) / sum);
}

class Resampling : public testing::TestWithParam<Aim> {};

TEST_P(Resampling, faultlessDewarpIsNearTheTruthAndAShiftedOneIsNot) {
    const Aim& aim = GetParam();
    const CRoom room;
    const FisheyeCamera camera = defaultCamera(aim.mounting);
    const Picture fisheye = renderFisheye(room, camera, 2592, 1944, {1, 0});
    const Picture truth = renderPerspective(room,
                                            squarePixelView(camera.position, aim.panDegrees, aim.tiltDegrees,
                                                            aim.halfVerticalDegrees, width, height),
                                            width, height);
    const double faultless = psnr(truth, dewarp(fisheye, aim, 0.0, 0.0));
    EXPECT_GT(faultless, 38.0);
    EXPECT_LT(psnr(truth, dewarp(fisheye, aim, 0.5, 0.0)), faultless - 6.0);
    EXPECT_LT(psnr(truth, dewarp(fisheye, aim, 0.0, 0.5)), faultless - 6.0);
}

INSTANTIATE_TEST_SUITE_P(Mountings, Resampling,
                         testing::Values(Aim{TiltOrientation::wall, 0.0, -25.0, 36.0},
                                         Aim{TiltOrientation::wall, 40.0, -10.0, 22.0},
                                         Aim{TiltOrientation::ceiling, -60.0, -60.0, 30.0},
                                         Aim{TiltOrientation::desk, -90.0, 60.0, 30.0}));

} // namespace
} // namespace tarvo::scene
