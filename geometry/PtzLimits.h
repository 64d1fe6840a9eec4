#pragma once

#include "geometry/Enumerations.h"

#include <optional>

namespace tarvo::geometry {

/// Limits of the virtual pan-tilt-zoom of one mounting and the position it starts from, degrees.
struct PtzLimits {
    float panMinimum;
    float panMaximum;
    float tiltMinimum;
    float tiltMaximum;
    float defaultTilt;
    float defaultFieldOfView;
};

inline constexpr float fieldOfViewMinimum = 2.0F;
inline constexpr float fieldOfViewMaximum = 60.0F;

/// Limits and defaults for a mounting and an output aspect (width / height; 0 or less: unknown). The default
/// pan is 0 everywhere. No value for `undef` and for what is no mounting: there the limits in force stay.
std::optional<PtzLimits> ptzLimits(TiltOrientation orientation, double outputAspect);

/// `low` below it, `high` above it, else `value` (a not-a-number too).
constexpr float clampToRange(float value, float low, float high) {
    if (value < low) {
        return low;
    }
    return value > high ? high : value;
}

/// Brings a pan that ran over the back of the circle to the other side, once: 190 becomes −170, but 600
/// becomes 240, which the clamp to the range then stops. A wall camera sees only half a circle, its pan
/// stays.
float wrapPan(TiltOrientation orientation, float panDegrees);

} // namespace tarvo::geometry
