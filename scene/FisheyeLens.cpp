#include "scene/FisheyeLens.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace tarvo::scene {
namespace {

bool risesFromZero(double a, double b, double c) {
    if (c != 0.0) {
        return c > 0.0;
    }
    return b != 0.0 ? b > 0.0 : a > 0.0;
}

double lowestPositive(double first, double second) {
    constexpr double never = std::numeric_limits<double>::infinity();
    const double one = first > 0.0 ? first : never;
    const double two = second > 0.0 ? second : never;
    return one < two ? one : two;
}

/// The first positive root of the slope 3aθ² + 2bθ + c of a polynomial that rises from zero; infinity when it
/// never turns over.
double turningAngle(double a, double b, double c) {
    constexpr double never = std::numeric_limits<double>::infinity();
    const double square = 3.0 * a;
    const double linear = 2.0 * b;
    if (square == 0.0) {
        return linear < 0.0 ? -c / linear : never;
    }
    const double discriminant = linear * linear - 4.0 * square * c;
    if (discriminant <= 0.0) {
        return never; // a slope that merely touches zero goes on rising
    }
    // The form that does not subtract nearly equal numbers; q is not zero because the discriminant is not.
    const double q = -0.5 * (linear + std::copysign(std::sqrt(discriminant), linear));
    return lowestPositive(q / square, c / q);
}

} // namespace

CFisheyeLens::CFisheyeLens(const geometry::LensProfile& profile, double maxAngleDegrees)
    : m_a(static_cast<double>(profile.a)), m_b(static_cast<double>(profile.b)),
      m_c(static_cast<double>(profile.c)), m_maxAngle(0.0), m_maxRadius(0.0) {
    if (!std::isfinite(m_a) || !std::isfinite(m_b) || !std::isfinite(m_c)) {
        throw std::invalid_argument("lens profile: a coefficient is not a finite number");
    }
    if (!(maxAngleDegrees > 0.0 && maxAngleDegrees <= 180.0)) {
        throw std::invalid_argument("lens: the maximum angle must lie above 0 and at most at 180 degrees");
    }
    if (!risesFromZero(m_a, m_b, m_c)) {
        throw std::invalid_argument("lens profile: the radius does not grow with the angle");
    }
    m_maxAngle = std::fmin(maxAngleDegrees / 180.0 * std::numbers::pi, turningAngle(m_a, m_b, m_c));
    m_maxRadius = radiusAt(m_maxAngle);
    if (!(m_maxRadius > 0.0)) {
        throw std::invalid_argument("lens profile: the picture has no extent");
    }
    const double step = m_maxRadius / static_cast<double>(m_angles.size() - 1);
    for (std::size_t i = 1; i + 1 < m_angles.size(); ++i) {
        m_angles[i] = angleBetween(m_angles[i - 1], m_maxAngle, static_cast<double>(i) * step);
    }
    m_angles.back() = m_maxAngle;
}

std::optional<double> CFisheyeLens::angleAt(double radius) const {
    if (!(radius >= 0.0 && radius <= m_maxRadius)) {
        return std::nullopt;
    }
    const double place = radius / m_maxRadius * static_cast<double>(m_angles.size() - 1);
    const std::size_t below = std::min(static_cast<std::size_t>(place), m_angles.size() - 2);
    return angleBetween(m_angles[below], m_angles[below + 1], radius);
}

double CFisheyeLens::angleBetween(double low, double high, double radius) const {
    // Newton's steps, kept inside a bracket that shrinks with every step: near the angle where the polynomial
    // turns over the slope vanishes and Newton alone would run away.
    constexpr double precision = 1e-14;
    constexpr int maxSteps = 200;
    const double lowRadius = radiusAt(low);
    const double highRadius = radiusAt(high);
    if (radius <= lowRadius || highRadius <= lowRadius) {
        return low;
    }
    if (radius >= highRadius) {
        return high;
    }
    double angle = low + (high - low) * (radius - lowRadius) / (highRadius - lowRadius);
    for (int step = 0; step < maxSteps && high - low > precision; ++step) {
        const double excess = radiusAt(angle) - radius;
        (excess > 0.0 ? high : low) = angle;
        const double move = excess / slopeAt(angle);
        if (std::abs(move) < precision) {
            return angle;
        }
        const double next = angle - move;
        angle = next > low && next < high ? next : 0.5 * (low + high);
    }
    return angle;
}

} // namespace tarvo::scene
