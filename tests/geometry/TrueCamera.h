#pragma once

#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"

#include <array>
#include <cmath>

/// The camera as plain vector arithmetic in double precision, written without any of the projection's
/// formulas: what the projections are held against. World axes are east, north, up.
namespace tarvo::tests {

using Vector = std::array<double, 3>;

inline double dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector combine(double x, const Vector& a, double y, const Vector& b, double z, const Vector& c) {
    return {x * a[0] + y * b[0] + z * c[0], x * a[1] + y * b[1] + z * c[1], x * a[2] + y * b[2] + z * c[2]};
}

inline Vector unit(const Vector& v) {
    const double length = std::sqrt(dot(v, v));
    return {v[0] / length, v[1] / length, v[2] / length};
}

inline double toRadians(double degrees) {
    return degrees * 3.14159265358979323846 / 180.0;
}

/// Pan is the compass direction, tilt the height above the horizon.
inline Vector lookingAt(double panDegrees, double tiltDegrees) {
    const double p = toRadians(panDegrees);
    const double t = toRadians(tiltDegrees);
    return {std::cos(t) * std::sin(p), std::cos(t) * std::cos(p), std::sin(t)};
}

/// Ray through a rectilinear view: `right` and `up` in units of the distance to the picture plane.
inline Vector viewRay(double panDegrees, double tiltDegrees, double right, double up) {
    const double p = toRadians(panDegrees);
    const double t = toRadians(tiltDegrees);
    const Vector rightward{std::cos(p), -std::sin(p), 0.0};
    const Vector upward{-std::sin(t) * std::sin(p), -std::sin(t) * std::cos(p), std::cos(t)};
    return unit(combine(1.0, lookingAt(panDegrees, tiltDegrees), right, rightward, up, upward));
}

struct ImagePoint {
    double x;
    double y;
};

/// The axes of a mounted camera: where the lens, the picture's right and the picture's lower side point to.
struct Mounting {
    Vector axis;
    Vector right;
    Vector down;

    static Mounting of(geometry::TiltOrientation orientation) {
        switch (orientation) {
        case geometry::TiltOrientation::ceiling: // a map: north is up, east is right
            return {{0, 0, -1}, {1, 0, 0}, {0, -1, 0}};
        case geometry::TiltOrientation::desk: // a star chart: north is up, east is left
            return {{0, 0, 1}, {-1, 0, 0}, {0, -1, 0}};
        default:
            return {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}};
        }
    }

    /// Where a ray meets the picture, in image heights from its centre.
    ImagePoint image(const geometry::LensProfile& lens, const Vector& ray) const {
        const double theta = std::acos(std::fmin(1.0, std::fmax(-1.0, dot(ray, axis))));
        const double a = lens.a;
        const double b = lens.b;
        const double c = lens.c;
        const double radius = ((a * theta + b) * theta + c) * theta;
        const double x = dot(ray, right);
        const double y = dot(ray, down);
        const double length = std::hypot(x, y);
        return length == 0.0 ? ImagePoint{0.0, 0.0} : ImagePoint{radius * x / length, radius * y / length};
    }
};

} // namespace tarvo::tests
