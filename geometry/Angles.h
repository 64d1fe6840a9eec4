#pragma once

namespace tarvo::geometry {

/// π as the single-precision value nearest to it. Every conversion between degrees and radians uses it, so
/// that values computed here agree with what the shader programs compute in single precision.
inline constexpr double piSingle = 3.1415927410125732;

/// π/2 in single precision.
inline constexpr float halfPiSingle = 1.5707963705062866F;

constexpr double radiansFromDegrees(double degrees) {
    return degrees * piSingle / 180.0;
}

constexpr double degreesFromRadians(double radians) {
    return radians * 180.0 / piSingle;
}

} // namespace tarvo::geometry
