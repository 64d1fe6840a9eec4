#pragma once

namespace tarvo::geometry {

/// Radius polynomial of a fisheye lens, r(θ) = a·θ³ + b·θ² + c·θ: θ is the angle in radians between a viewing
/// ray and the lens's central ray, r the distance of the ray's image point from the image centre in image
/// heights.
struct LensProfile {
    float a = 0.0F;
    float b = 0.0F;
    float c = 0.0F;

    friend constexpr bool operator==(const LensProfile&, const LensProfile&) = default;
};

/// The lens assumed until the host names its own.
inline constexpr LensProfile defaultLensProfile{-0.022618673741817474F, 0.014994083903729916F,
                                                0.3681749999523163F};

/// r(θ) in the unit of the coefficients, evaluated in the precision of `theta`.
template<typename Real>
constexpr Real lensRadius(const LensProfile& profile, Real theta) {
    return static_cast<Real>(profile.a) * theta * theta * theta +
           static_cast<Real>(profile.b) * theta * theta + static_cast<Real>(profile.c) * theta;
}

} // namespace tarvo::geometry
