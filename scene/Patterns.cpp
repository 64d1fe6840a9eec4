#include "scene/Patterns.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace tarvo::scene {

double softSquareWave(double value, double period, double softness) {
    const double distance = distanceToLine(value, period);
    const double magnitude = 2.0 * softAbove(distance, 0.0, softness) - 1.0;
    return (cellOf(value, period) % 2 == 0) ? magnitude : -magnitude;
}

double softChecker(double u, double v, double period, double softness) {
    return 0.5 + 0.5 * softSquareWave(u, period, softness) * softSquareWave(v, period, softness);
}

double cellValue(std::int64_t column, std::int64_t row, std::uint32_t seed) {
    // A small integer hash: multiply and fold until neighbouring cells share nothing visible.
    std::uint32_t bits = static_cast<std::uint32_t>(column) * 0x9E3779B1U;
    bits ^= static_cast<std::uint32_t>(row) * 0x85EBCA77U;
    bits ^= seed * 0xC2B2AE3DU;
    bits = (bits ^ (bits >> 15)) * 0x2C1B3C6DU;
    bits = (bits ^ (bits >> 12)) * 0x297A2D39U;
    bits ^= bits >> 15;
    return static_cast<double>(bits) / 4294967295.0;
}

double smoothNoise(double u, double v, std::uint32_t seed) {
    const double column = std::floor(u);
    const double row = std::floor(v);
    const double across = softAbove(u - column, 0.5, 1.0);
    const double upwards = softAbove(v - row, 0.5, 1.0);
    const auto i = static_cast<std::int64_t>(column);
    const auto j = static_cast<std::int64_t>(row);
    const double lower = (1.0 - across) * cellValue(i, j, seed) + across * cellValue(i + 1, j, seed);
    const double upper = (1.0 - across) * cellValue(i, j + 1, seed) + across * cellValue(i + 1, j + 1, seed);
    return (1.0 - upwards) * lower + upwards * upper;
}

namespace {

/// A stroke in a square from (0, 0) at the lower left to (1, 1).
struct Stroke {
    double u0;
    double v0;
    double u1;
    double v1;
};

constexpr std::array strokesC{Stroke{1.0, 0.8, 0.75, 1.0},  Stroke{0.75, 1.0, 0.25, 1.0},
                              Stroke{0.25, 1.0, 0.0, 0.75}, Stroke{0.0, 0.75, 0.0, 0.25},
                              Stroke{0.0, 0.25, 0.25, 0.0}, Stroke{0.25, 0.0, 0.75, 0.0},
                              Stroke{0.75, 0.0, 1.0, 0.2}};
constexpr std::array strokesE{Stroke{1.0, 1.0, 0.0, 1.0}, Stroke{0.0, 1.0, 0.0, 0.0},
                              Stroke{0.0, 0.0, 1.0, 0.0}, Stroke{0.0, 0.5, 0.8, 0.5}};
constexpr std::array strokesF{Stroke{0.0, 0.0, 0.0, 1.0}, Stroke{0.0, 1.0, 1.0, 1.0},
                              Stroke{0.0, 0.5, 0.75, 0.5}};
constexpr std::array strokesN{Stroke{0.0, 0.0, 0.0, 1.0}, Stroke{0.0, 1.0, 1.0, 0.0},
                              Stroke{1.0, 0.0, 1.0, 1.0}};
constexpr std::array strokesS{
    Stroke{1.0, 0.82, 0.8, 1.0},  Stroke{0.8, 1.0, 0.2, 1.0},   Stroke{0.2, 1.0, 0.0, 0.85},
    Stroke{0.0, 0.85, 0.0, 0.65}, Stroke{0.0, 0.65, 0.2, 0.5},  Stroke{0.2, 0.5, 0.8, 0.5},
    Stroke{0.8, 0.5, 1.0, 0.35},  Stroke{1.0, 0.35, 1.0, 0.15}, Stroke{1.0, 0.15, 0.8, 0.0},
    Stroke{0.8, 0.0, 0.2, 0.0},   Stroke{0.2, 0.0, 0.0, 0.18}};
constexpr std::array strokesW{Stroke{0.0, 1.0, 0.25, 0.0}, Stroke{0.25, 0.0, 0.5, 0.75},
                              Stroke{0.5, 0.75, 0.75, 0.0}, Stroke{0.75, 0.0, 1.0, 1.0}};

std::span<const Stroke> strokesOf(char letter) {
    switch (letter) {
    case 'C':
        return strokesC;
    case 'E':
        return strokesE;
    case 'F':
        return strokesF;
    case 'N':
        return strokesN;
    case 'S':
        return strokesS;
    case 'W':
        return strokesW;
    default:
        return {};
    }
}

double squaredDistance(double u, double v, double u0, double v0, double u1, double v1) {
    const double du = u1 - u0;
    const double dv = v1 - v0;
    const double along = std::clamp(((u - u0) * du + (v - v0) * dv) / (du * du + dv * dv), 0.0, 1.0);
    const double restU = u - u0 - along * du;
    const double restV = v - v0 - along * dv;
    return restU * restU + restV * restV;
}

} // namespace

double softLetter(char letter, double u, double v, double height, double softness) {
    const double strokeWidth = 0.16 * height;
    const double tall = height - strokeWidth;
    const double wide = 0.8 * tall;
    double nearest = 4.0 * height * height;
    for (const Stroke& stroke : strokesOf(letter)) {
        nearest = std::min(nearest, squaredDistance(u, v, (stroke.u0 - 0.5) * wide, (stroke.v0 - 0.5) * tall,
                                                    (stroke.u1 - 0.5) * wide, (stroke.v1 - 0.5) * tall));
    }
    return 1.0 - softAbove(std::sqrt(nearest), 0.5 * strokeWidth, softness);
}

} // namespace tarvo::scene
