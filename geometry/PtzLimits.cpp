#include "geometry/PtzLimits.h"

#include <algorithm>

namespace tarvo::geometry {

std::optional<PtzLimits> ptzLimits(TiltOrientation orientation, double outputAspect) {
    // The view's half height starts at 22 degrees for a square output and widens with the picture; the tilt
    // leaves 6 degrees between the view's edge and the lens axis.
    float fieldOfView = 30.0F;
    float tilt = 30.0F;
    if (outputAspect > 0.0) {
        fieldOfView = static_cast<float>(22.0 * outputAspect);
        tilt = static_cast<float>(static_cast<double>(fieldOfView) / outputAspect + 6.0);
    }
    switch (orientation) {
    case TiltOrientation::wall:
        return PtzLimits{-90.0F, 90.0F, -90.0F, 90.0F, 0.0F, std::min(36.0F, fieldOfView)};
    case TiltOrientation::ceiling:
        return PtzLimits{-180.0F, 180.0F, -90.0F, 0.0F, -tilt, fieldOfView};
    case TiltOrientation::desk:
        return PtzLimits{-180.0F, 180.0F, 0.0F, 90.0F, tilt, fieldOfView};
    case TiltOrientation::undef:
        break;
    }
    return std::nullopt;
}

float wrapPan(TiltOrientation orientation, float panDegrees) {
    if (orientation == TiltOrientation::wall) {
        return panDegrees;
    }
    const double pan = panDegrees;
    if (pan > 180.0) {
        return static_cast<float>(pan - 360.0);
    }
    if (pan < -180.0) {
        return static_cast<float>(pan + 360.0);
    }
    return panDegrees;
}

} // namespace tarvo::geometry
