#pragma once

#include "scene/Colour.h"

#include <cmath>
#include <cstdint>

namespace tarvo::scene {

// Building blocks of the room's textures. Lengths are metres. Every edge is a smooth ramp of the given
// softness rather than a step: that bounds the spatial frequencies of the textures, so a picture of the room
// can be resampled well, and what remains as difference is an error of geometry.

/// 0 below the edge, 1 above it, one half on it, with a smooth ramp of width `softness` between.
inline double softAbove(double value, double edge, double softness) {
    const double t = (value - edge) / softness + 0.5;
    if (t <= 0.0) {
        return 0.0;
    }
    if (t >= 1.0) {
        return 1.0;
    }
    return t * t * (3.0 - 2.0 * t);
}

/// 1 between low and high, 0 outside.
inline double softSpan(double value, double low, double high, double softness) {
    return softAbove(value, low, softness) * (1.0 - softAbove(value, high, softness));
}

/// A rectangle in the (u, v) plane of a surface.
struct Area {
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    double top = 0.0;

    constexpr Area grownBy(double margin) const {
        return {left - margin, bottom - margin, right + margin, top + margin};
    }
    constexpr bool contains(double u, double v) const {
        return u >= left && u <= right && v >= bottom && v <= top;
    }
};

/// 1 inside the rectangle, 0 outside.
inline double softArea(double u, double v, const Area& area, double softness) {
    return softSpan(u, area.left, area.right, softness) * softSpan(v, area.bottom, area.top, softness);
}

/// Distance from the nearest multiple of `period`.
inline double distanceToLine(double value, double period) {
    return std::abs(value - period * std::floor(value / period + 0.5));
}

/// 1 on lines of the given width centred on the multiples of `period`, 0 between them.
inline double softLines(double value, double period, double width, double softness) {
    return 1.0 - softAbove(distanceToLine(value, period), 0.5 * width, softness);
}

/// Square wave between -1 and 1 which changes sign at the multiples of `period`, positive from 0 to `period`.
double softSquareWave(double value, double period, double softness);

/// 0 and 1 in the fields of a chess board with fields of side `period`; 1 in the field from (0, 0).
double softChecker(double u, double v, double period, double softness);

/// A fixed pseudo-random number in 0 to 1 for a cell of a grid.
double cellValue(std::int64_t column, std::int64_t row, std::uint32_t seed);

/// The number of the cell of width `period` that holds `value`.
inline std::int64_t cellOf(double value, double period) {
    return static_cast<std::int64_t>(std::floor(value / period));
}

/// Smooth, irregular values in 0 to 1 without features finer than one unit of u and v.
double smoothNoise(double u, double v, std::uint32_t seed);

/// 1 on the strokes of a letter, 0 beside it; `letter` is one of C, E, F, N, S, W, other letters are blank.
/// (u, v) are metres from the letter's centre to the right and up, `height` is the letter's.
double softLetter(char letter, double u, double v, double height, double softness);

} // namespace tarvo::scene
