#pragma once

#include <cmath>

namespace tarvo::scene {

/// A point (metres) or a direction of the room: x points east, y north, z up.
struct Vector {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend constexpr bool operator==(const Vector&, const Vector&) = default;
};

constexpr Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

constexpr Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

constexpr Vector operator-(const Vector& a) {
    return {-a.x, -a.y, -a.z};
}

constexpr Vector operator*(double factor, const Vector& a) {
    return {factor * a.x, factor * a.y, factor * a.z};
}

constexpr double dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Right-handed: cross(east, north) is up.
constexpr Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double length(const Vector& a) {
    return std::sqrt(dot(a, a));
}

inline bool isFinite(const Vector& a) {
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

/// A ray of sight. The direction need not have length one.
struct Ray {
    Vector origin;
    Vector direction;
};

} // namespace tarvo::scene
