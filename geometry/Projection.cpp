#include "geometry/Projection.h"

#include "geometry/Angles.h"
#include "geometry/LensProfile.h"

#include <algorithm>
#include <cmath>

namespace tarvo::geometry {
namespace {

template<typename Real>
constexpr Real pi = static_cast<Real>(piSingle);

/// A viewing ray: `theta` off the lens axis, `lambda` around it.
template<typename Real>
struct Ray {
    Real theta;
    Real lambda;
};

template<typename Real>
struct Direction {
    Real x;
    Real y;
    Real z;
};

/// The cosine of an angle as the shader programs take it from its sine: graphics hardware was seen to be more
/// precise that way. It is never negative.
template<typename Real>
Real cosineFromSine(Real sine) {
    return std::sqrt(std::max(Real(0), Real(1) - sine * sine));
}

template<typename Real>
Real arcCosine(Real z) {
    return std::acos(std::clamp(z, Real(-1), Real(1)));
}

template<typename Real>
Direction<Real> rotateAboutX(Direction<Real> d, Real sine, Real cosine) {
    return {d.x, d.y * cosine + d.z * sine, d.z * cosine - d.y * sine};
}

template<typename Real>
Direction<Real> rotateAboutY(Direction<Real> d, Real sine, Real cosine) {
    return {d.x * cosine + d.z * sine, d.y, d.z * cosine - d.x * sine};
}

template<typename Real, typename Cosine>
Ray<Real> rotateRay(const DewarpConstants& constants, Ray<Real> ray, Cosine cosine) {
    const Real sinTheta = std::sin(ray.theta);
    Direction<Real> d{sinTheta * std::cos(ray.lambda), sinTheta * std::sin(ray.lambda), cosine(ray.theta)};
    const auto aboutX = static_cast<Real>(constants.rotateData[0]);
    const auto aboutY = static_cast<Real>(constants.rotateData[1]);
    const auto aboutZ = static_cast<Real>(constants.rotateData[2]);
    if (aboutX != 0) {
        d = rotateAboutX(d, std::sin(aboutX), cosine(aboutX));
    }
    if (aboutY != 0) {
        d = rotateAboutY(d, std::sin(aboutY), cosine(aboutY));
    }
    return {arcCosine(d.z), std::atan2(d.y, d.x) + aboutZ};
}

/// Ray of a point of the rectilinear view, `separation` pixels from the view's centre.
template<typename Real>
Ray<Real> viewRay(const DewarpConstants& constants, Real separationX, Real separationY) {
    const Real halfHeight = static_cast<Real>(constants.size[1]) * Real(0.5);
    const Real distance = std::sqrt(separationX * separationX + separationY * separationY);
    return {std::atan(distance / halfHeight * static_cast<Real>(constants.tangentOfFieldOfView)),
            static_cast<Real>(constants.lambdaOffset) - std::atan2(separationY, -separationX)};
}

template<typename Real>
Real lensRadiusOf(const DewarpConstants& constants, Real theta) {
    return lensRadius({constants.lensProfile[0], constants.lensProfile[1], constants.lensProfile[2]}, theta);
}

template<typename Real>
InputPosition<Real> imagePoint(const DewarpConstants& constants, Ray<Real> ray) {
    const Real radius = lensRadiusOf(constants, ray.theta);
    return {static_cast<Real>(constants.imageCenter[0]) + radius * std::cos(ray.lambda),
            static_cast<Real>(constants.imageCenter[1]) + radius * std::sin(ray.lambda)};
}

/// The panorama's angles in the precision of the evaluation.
template<typename Real>
struct PanoramaAngles {
    Real panOffset;
    Real width;
    Real height;
};

template<typename Real>
PanoramaAngles<Real> panoramaAngles(const DewarpConstants& constants) {
    const float* angles = constants.panoramaRectAngles;
    return {static_cast<Real>(angles[0]), static_cast<Real>(angles[2]), static_cast<Real>(angles[3])};
}

} // namespace

template<typename Real>
InputPosition<Real> projectSingleView(const DewarpConstants& constants, Real u, Real v) {
    const auto width = static_cast<Real>(constants.size[0]);
    const auto height = static_cast<Real>(constants.size[1]);
    const Ray<Real> ray = viewRay(constants, u * width - width * Real(0.5), v * height - height * Real(0.5));
    const auto cosine = [](Real angle) { return cosineFromSine(std::sin(angle)); };
    return imagePoint(constants, rotateRay(constants, ray, cosine));
}

template<typename Real>
InputPosition<Real> projectPanoramaWall(const DewarpConstants& constants, Real u, Real v) {
    const PanoramaAngles<Real> angles = panoramaAngles<Real>(constants);
    // The strip fills the half of v that a two-strip table would give it, hence v / 2 and twice the height.
    // Azimuths beyond the half circle in front of the wall are shown all the same: the lens may see there.
    const Real polar = pi<Real> / 2 - angles.height / 2 + v / 2 * (2 * angles.height);
    const Real azimuth = u * angles.width + angles.panOffset + pi<Real> / 2;

    const Real x = std::sin(polar) * std::cos(azimuth);
    const Real y = std::sin(polar) * std::sin(azimuth);
    const Real z = std::cos(polar);
    // From the upright strip into the frame of a lens that looks along the horizon: a quarter turn about x
    // and a mirror in the y-z plane.
    return imagePoint(constants, Ray<Real>{arcCosine(y), std::atan2(-z, -x)});
}

template<typename Real>
InputPosition<Real> projectPanoramaCeiling(const DewarpConstants& constants, Real u, Real v) {
    const PanoramaAngles<Real> angles = panoramaAngles<Real>(constants);
    Real start = angles.panOffset - pi<Real> / 2;
    if (v > Real(0.5)) {
        v -= Real(0.5);
        start += angles.width;
    }
    return imagePoint(constants, Ray<Real>{pi<Real> / 2 - v * (2 * angles.height), start + u * angles.width});
}

template<typename Real>
InputPosition<Real> projectPanoramaDesk(const DewarpConstants& constants, Real u, Real v) {
    const PanoramaAngles<Real> angles = panoramaAngles<Real>(constants);
    Real start = -angles.panOffset - pi<Real> / 2;
    if (v > Real(0.5)) {
        start -= angles.width;
    } else {
        v += Real(0.5);
    }
    return imagePoint(constants,
                      Ray<Real>{pi<Real> / 2 + (v - 1) * (2 * angles.height), start - u * angles.width});
}

ForwardProjection projectForward(const DewarpConstants& constants, double x, double y) {
    const double halfWidth = static_cast<double>(constants.size[0]) * 0.5;
    const double halfHeight = static_cast<double>(constants.size[1]) * 0.5;
    const Ray<double> ray = viewRay(constants, x * halfWidth, -y * halfHeight);
    const Ray<double> rotated = rotateRay(constants, ray, [](double angle) { return std::cos(angle); });
    const double radius = lensRadiusOf(constants, rotated.theta);

    ForwardProjection result{};
    result.offsetX = radius * std::cos(rotated.lambda);
    result.offsetY = radius * std::sin(rotated.lambda);
    result.x = result.offsetX / halfWidth;
    result.y = result.offsetY / halfHeight;
    const double aspect = halfWidth / halfHeight;
    (aspect > 1.0 ? result.x : result.y) *= aspect;
    result.radiusRatio = radius / halfHeight;
    result.isOutside = radius >= halfHeight;
    return result;
}

template InputPosition<float> projectSingleView(const DewarpConstants&, float, float);
template InputPosition<double> projectSingleView(const DewarpConstants&, double, double);
template InputPosition<float> projectPanoramaWall(const DewarpConstants&, float, float);
template InputPosition<double> projectPanoramaWall(const DewarpConstants&, double, double);
template InputPosition<float> projectPanoramaCeiling(const DewarpConstants&, float, float);
template InputPosition<double> projectPanoramaCeiling(const DewarpConstants&, double, double);
template InputPosition<float> projectPanoramaDesk(const DewarpConstants&, float, float);
template InputPosition<double> projectPanoramaDesk(const DewarpConstants&, double, double);

} // namespace tarvo::geometry
