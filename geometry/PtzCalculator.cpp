#include "geometry/PtzCalculator.h"

#include "geometry/Angles.h"

#include <algorithm>
#include <cmath>

namespace tarvo::geometry {
namespace {

/// Azimuth of an image point, clockwise from the top of the picture, radians.
double clockwiseFromTop(double x, double y) {
    const double counterClockwiseFromRight = (x == 0.0 && y == 0.0) ? 0.0 : std::atan2(y, x);
    // The third quadrant's atan2 jumps by a full turn; its own offset keeps the azimuth within ±180 degrees.
    const double top = (x < 0.0 && y < 0.0) ? -1.5 * piSingle : 0.5 * piSingle;
    return top - counterClockwiseFromRight;
}

/// Pan offset in degrees of a ray whose share along the horizon is `h` of the whole.
double panOffsetDegrees(double h) {
    if (h >= 1.0) {
        return 90.0;
    }
    if (h <= -1.0) {
        return -90.0;
    }
    return degreesFromRadians(std::asin(h));
}

} // namespace

void PtzCalculator::setInput(double inputAspect, const LensProfile& profile) {
    m_inputAspect = inputAspect;
    m_radiusTable.rebuild(profile);
}

void PtzCalculator::setPosition(double panDegrees, double tiltDegrees, double fieldOfViewDegrees) {
    m_panDegrees = panDegrees;
    m_tiltDegrees = tiltDegrees;
    m_fieldOfViewDegrees = fieldOfViewDegrees;
}

PanTilt PtzCalculator::fromDewarpedPoint(double x, double y) const {
    const double tilt = radiansFromDegrees(m_tiltDegrees);
    const double tangent = std::tan(radiansFromDegrees(m_fieldOfViewDegrees));

    // The ray (right, up, forward) = (right, up, 1) of the level camera, tilted about the horizontal axis.
    const double right = std::tan(std::atan(tangent * m_inputAspect)) * x;
    const double up = tangent * y;
    const double normalise = 1.0 / std::sqrt(right * right + 1.0 + up * up);
    const double forward = std::cos(tilt) - up * std::sin(tilt);
    const double height = up * std::cos(tilt) + std::sin(tilt);

    const double elevation = degreesFromRadians(std::asin(std::clamp(height * normalise, -1.0, 1.0)));
    // Straight up or down there is no azimuth to add. With the single-precision π the elevation stays 2.5e-6
    // short of 90, so what really decides there is that `right` is 0.
    double panOffset = 0.0;
    if (std::abs(std::abs(elevation) - 90.0) >= 1e-6) {
        panOffset = panOffsetDegrees(right * normalise / std::cos(radiansFromDegrees(elevation)));
        if (forward < 0.0) {
            panOffset = -panOffset;
        }
    }

    // Comparing radians with 90 is deliberate: hosts rely on what follows from it, and the first branch then
    // always asks for the sign of `forward` alone.
    const bool isUpright = std::abs(tilt) <= 90.0 ? forward >= 0.0 : forward < 0.0;
    double tiltDegrees = elevation;
    if (!isUpright) {
        tiltDegrees = (elevation >= 0.0 ? 180.0 : -180.0) - elevation;
        if (tilt > 0.0 && height < 0.0) {
            tiltDegrees += 360.0;
        } else if (tilt < 0.0 && height >= 0.0) {
            tiltDegrees -= 360.0;
        }
    }
    return {panOffset + m_panDegrees, tiltDegrees};
}

PanTilt PtzCalculator::fromFisheyePoint(double x, double y) const {
    const double azimuth = clockwiseFromTop(x, y);
    const double theta = m_radiusTable.angleAt(std::sqrt(x * x + y * y));
    double pan = azimuth;
    double tilt = theta;
    switch (m_orientation) {
    case TiltOrientation::ceiling:
        tilt = theta - 0.5 * piSingle;
        break;
    case TiltOrientation::desk:
        pan = -azimuth;
        tilt = 0.5 * piSingle - theta;
        break;
    case TiltOrientation::wall: {
        const double upward = std::cos(azimuth) * std::sin(theta);
        const double rightward = std::sin(azimuth) * std::sin(theta);
        pan = std::atan2(rightward, std::cos(theta));
        tilt = 0.5 * piSingle - std::acos(std::clamp(upward, -1.0, 1.0));
        break;
    }
    case TiltOrientation::undef:
        break;
    }
    return {degreesFromRadians(pan), degreesFromRadians(tilt)};
}

} // namespace tarvo::geometry
