#pragma once

#include "geometry/LensProfile.h"

#include <array>
#include <optional>

namespace tarvo::scene {

/// A fisheye lens read backwards: from the distance in the picture to the angle of the viewing ray.
/// Immutable, so it may be used by several threads.
class CFisheyeLens {
public:
    /// Throws std::invalid_argument when a coefficient is not finite, when r(θ) does not rise at the
    /// picture's centre, or when the angle is outside (0, 180].
    CFisheyeLens(const geometry::LensProfile& profile, double maxAngleDegrees);

    /// The largest angle from the central ray that the lens shows, radians: the one asked for, or where r(θ)
    /// stops rising, whichever comes first.
    double maxAngle() const { return m_maxAngle; }

    /// r(maxAngle), image heights: the radius of the picture's disc.
    double maxRadius() const { return m_maxRadius; }

    /// The angle in radians whose image lies `radius` image heights from the centre; nothing for a radius
    /// outside 0 to maxRadius.
    std::optional<double> angleAt(double radius) const;

private:
    double radiusAt(double angle) const { return ((m_a * angle + m_b) * angle + m_c) * angle; }
    double slopeAt(double angle) const { return (3.0 * m_a * angle + 2.0 * m_b) * angle + m_c; }

    /// The angle between low and high, which enclose it, whose image lies at `radius`.
    double angleBetween(double low, double high, double radius) const;

    double m_a;
    double m_b;
    double m_c;
    double m_maxAngle;
    double m_maxRadius;
    /// Angles of equidistant radii from 0 to m_maxRadius: narrow brackets save most steps of the search.
    std::array<double, 513> m_angles{};
};

} // namespace tarvo::scene
