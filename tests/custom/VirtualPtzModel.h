#pragma once

#include "custom/VirtualPtzSettings.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

// The virtual camera once more: by plain vectors and in double precision, without any formula of map
// projections. x points forward, y to the right, z down.

namespace tarvo::custom::model {

constexpr double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

constexpr double degrees(double radians) {
    return radians * 180.0 / std::numbers::pi;
}

struct Direction {
    double pan;
    double tilt;
    /// Cosine of the latitudes that it went through: how well they can be told in single precision.
    double conditioning;
};

struct Vector {
    double x;
    double y;
    double z;
};

/// Angle downwards, whatever the length.
inline double latitudeOf(const Vector& v) {
    return std::atan2(v.z, std::hypot(v.x, v.y));
}

/// Degrees, what the point (x, y) of the view sees; (0.5, 0.5) is well-behaved here.
inline Direction map(const VirtualPtzSettings& s, double x, double y, bool isStraightened) {
    const double level = s.effectLevel;
    const double tilt = radians(s.tilt);
    // The camera's axes when its pan is 0, and the ray through the point of the plane before it.
    const Vector forward{std::cos(tilt), 0.0, -std::sin(tilt)};
    const Vector down{std::sin(tilt), 0.0, std::cos(tilt)};
    const double extent = 2.0 * std::tan(radians(s.fieldOfView) / 2.0);
    const double right = (x - 0.5) * extent;
    const double below = (y - 0.5) * extent / double{s.outputAspect};
    const Vector ray{forward.x + below * down.x, right, forward.z + below * down.z};

    const double trueLongitude = radians(s.pan) + std::atan2(ray.y, ray.x);
    const double trueLatitude = latitudeOf(ray);
    const double perRadian = radians(s.panoramaHorizontalFieldOfView);
    const double plainLongitude = (x - 0.5) * perRadian;
    const double plainLatitude = (y - 0.5) * perRadian / double{s.outputAspect};
    double longitude =
        level * trueLongitude + (1.0 - level) * plainLongitude + (1.0 - level) * radians(s.pan);
    double latitude = level * trueLatitude + (1.0 - level) * plainLatitude - (1.0 - level) * radians(s.tilt);
    double conditioning = level > 0.0 ? std::abs(std::cos(trueLatitude)) : 1.0;
    if (isStraightened) {
        const Vector v{std::cos(longitude) * std::cos(latitude), std::sin(longitude) * std::cos(latitude),
                       std::sin(latitude)};
        // About the x axis, by which what is on the right goes down, then about the y axis, by which what is
        // ahead does.
        const double roll = radians(s.cameraRoll);
        const double pitch = radians(s.cameraPitch);
        const Vector rolled{v.x, v.y * std::cos(roll) - v.z * std::sin(roll),
                            v.y * std::sin(roll) + v.z * std::cos(roll)};
        const Vector pitched{rolled.x * std::cos(pitch) - rolled.z * std::sin(pitch), rolled.y,
                             rolled.x * std::sin(pitch) + rolled.z * std::cos(pitch)};
        longitude = std::atan2(pitched.y, pitched.x);
        latitude = latitudeOf(pitched);
        conditioning = std::min(conditioning, std::cos(latitude));
    }
    return {degrees(longitude), -degrees(latitude), conditioning};
}

struct Adjustment {
    double pan;
    double tilt;
    double fieldOfView;
    /// A rounding may have decided: what single precision makes of it cannot be told.
    bool isTooClose = false;
};

class CAdjuster {
public:
    explicit CAdjuster(const VirtualPtzSettings& settings) : m_settings(settings) {}

    Adjustment run() {
        if (m_settings.effectLevel > 0.0) {
            shiftPan();
            shiftTilt();
        }
        return {m_settings.pan, m_settings.tilt, m_settings.fieldOfView, m_isTooClose};
    }

private:
    static constexpr double close = 2e-3;

    Direction look(double x, double y) {
        const Direction direction = map(m_settings, x, y, true);
        if (direction.conditioning < 0.02 || std::abs(direction.pan) > 180.0 - close)
            m_isTooClose = true;
        return direction;
    }

    double reduce(std::vector<double> excesses) const {
        std::sort(excesses.begin(), excesses.end());
        if (m_settings.useStrictBorderMode && m_settings.effectLevel >= 1.0)
            return excesses.back();
        return 0.5 * (excesses.front() + excesses.back());
    }

    void shiftPan() {
        const double half = m_settings.panoramaHorizontalFieldOfView / 2.0;
        std::vector<double> onLeft;
        std::vector<double> onRight;
        for (const double y : {0.0, 0.5, 1.0}) {
            onLeft.push_back(-half - look(0.0, y).pan);
            onRight.push_back(look(1.0, y).pan - half);
        }
        const double left = reduce(onLeft);
        const double right = reduce(onRight);
        if (std::abs(left) < close && right > -close)
            m_isTooClose = true;
        if (left > 0.0)
            m_settings.pan += left;
        else if (right > 0.0)
            m_settings.pan -= right;
    }

    void shiftTilt() {
        const double half = m_settings.panoramaVerticalFieldOfView / 2.0;
        std::vector<double> above;
        std::vector<double> below;
        for (int k = 0; k <= 8; ++k) {
            above.push_back(-half - look(k / 8.0, 0.0).tilt);
            below.push_back(look(k / 8.0, 1.0).tilt - half);
        }
        const double top = reduce(above);
        const double bottom = reduce(below);
        if (std::abs(top) < close && bottom > -close)
            m_isTooClose = true;
        if (top > -bottom || bottom > -top)
            m_settings.fieldOfView = std::max(5.0, m_settings.fieldOfView - top - bottom);
        if (top > 0.0)
            m_settings.tilt += std::min(top, -bottom);
        else if (bottom > 0.0)
            m_settings.tilt -= std::min(bottom, -top);
    }

    VirtualPtzSettings m_settings;
    bool m_isTooClose = false;
};

} // namespace tarvo::custom::model
