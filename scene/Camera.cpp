#include "scene/Camera.h"

#include <cmath>
#include <numbers>
#include <stdexcept>

namespace tarvo::scene {
namespace {

constexpr double radiansPerDegree = std::numbers::pi / 180.0;

constexpr Vector east{1.0, 0.0, 0.0};
constexpr Vector north{0.0, 1.0, 0.0};
constexpr Vector up{0.0, 0.0, 1.0};

} // namespace

Vector direction(double panDegrees, double tiltDegrees) {
    const double pan = panDegrees * radiansPerDegree;
    const double tilt = tiltDegrees * radiansPerDegree;
    return {std::cos(tilt) * std::sin(pan), std::cos(tilt) * std::cos(pan), std::sin(tilt)};
}

MountingFrame mountingFrame(geometry::TiltOrientation orientation) {
    switch (orientation) {
    case geometry::TiltOrientation::undef:
    case geometry::TiltOrientation::wall:
        return {east, -up, north};
    case geometry::TiltOrientation::ceiling:
        return {east, -north, -up};
    case geometry::TiltOrientation::desk:
        return {-east, -north, up};
    }
    throw std::invalid_argument("camera: unknown mounting");
}

FisheyeCamera defaultCamera(geometry::TiltOrientation orientation) {
    FisheyeCamera camera;
    camera.orientation = orientation;
    switch (orientation) {
    case geometry::TiltOrientation::undef:
    case geometry::TiltOrientation::wall:
        camera.position = {0.0, -2.85, 2.2};
        return camera;
    case geometry::TiltOrientation::ceiling:
        camera.position = {0.0, 0.0, 2.8};
        return camera;
    case geometry::TiltOrientation::desk:
        camera.position = {0.0, 0.0, 0.85};
        return camera;
    }
    throw std::invalid_argument("camera: unknown mounting");
}

PerspectiveView squarePixelView(const Vector& position, double panDegrees, double tiltDegrees,
                                double halfVerticalDegrees, int width, int height) {
    if (width <= 0 || height <= 0) {
        throw std::invalid_argument("view: width and height must be positive");
    }
    if (!(halfVerticalDegrees > 0.0 && halfVerticalDegrees < 90.0)) {
        throw std::invalid_argument("view: half the vertical angle must lie between 0 and 90 degrees");
    }
    const double tanHalfHeight = std::tan(halfVerticalDegrees * radiansPerDegree);
    return {position, panDegrees, tiltDegrees, tanHalfHeight * width / height, tanHalfHeight};
}

} // namespace tarvo::scene
