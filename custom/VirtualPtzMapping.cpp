#include "custom/VirtualPtzMapping.h"

#include "custom/SinglePrecision.h"
#include "geometry/Angles.h"

#include <cmath>

namespace tarvo::custom {
namespace {

/// Radians; the latitude grows downwards as y does.
struct Spherical {
    float longitude;
    float latitude;
};

float singleRadians(double degrees) {
    return single(geometry::radiansFromDegrees(degrees));
}

float singleDegrees(float radians) {
    constexpr auto pi = static_cast<float>(geometry::piSingle);
    const float degrees = radians * 180.0F / pi;
    return std::isfinite(degrees) ? degrees : 0.0F;
}

/// The plane that touches the sphere where the camera looks, projected onto the sphere from its centre.
Spherical sphericalFromGnomonic(const VirtualPtzView& view, float u, float v) {
    const float extent = 2.0F * std::tan(view.fieldOfView / 2.0F);
    const float x = (u - 0.5F) * extent;
    const float y = (v - 0.5F) * extent / view.outputAspect;
    const float rho = std::sqrt(x * x + y * y);
    const float c = std::atan(rho);
    const float sinC = std::sin(c);
    const float cosC = std::cos(c);
    const float sinTilt = std::sin(view.tilt);
    const float cosTilt = std::cos(-view.tilt);
    return {view.pan + std::atan2(x * sinC, rho * cosTilt * cosC + y * sinTilt * sinC),
            std::asin(y * sinC * cosTilt / rho - cosC * sinTilt)};
}

/// A plain section of the panorama: its horizontal angle is the scale of both directions, deliberately.
Spherical sphericalFromPanorama(const VirtualPtzView& view, float u, float v) {
    return {(u - 0.5F) * view.panoramaHorizontalFieldOfView,
            (v - 0.5F) * view.panoramaHorizontalFieldOfView / view.outputAspect};
}

Spherical straightened(const VirtualPtzView& view, Spherical direction) {
    const float x = std::cos(direction.longitude) * std::cos(direction.latitude);
    const float y = std::sin(direction.longitude) * std::cos(direction.latitude);
    const float z = std::sin(direction.latitude);
    const float rolledY = y * std::cos(view.roll) - z * std::sin(view.roll);
    const float rolledZ = y * std::sin(view.roll) + z * std::cos(view.roll);
    const float pitchedX = x * std::cos(-view.pitch) - rolledZ * std::sin(view.pitch);
    const float pitchedZ = x * std::sin(view.pitch) + rolledZ * std::cos(-view.pitch);
    return {std::atan2(rolledY, pitchedX), std::asin(pitchedZ)};
}

} // namespace

VirtualPtzView virtualPtzView(const VirtualPtzSettings& settings) {
    return {.panoramaHorizontalFieldOfView = singleRadians(settings.panoramaHorizontalFieldOfView),
            .panoramaVerticalFieldOfView = singleRadians(settings.panoramaVerticalFieldOfView),
            .outputAspect = settings.outputAspect,
            .pan = singleRadians(settings.pan),
            .tilt = singleRadians(settings.tilt),
            .fieldOfView = singleRadians(settings.fieldOfView),
            .pitch = singleRadians(settings.cameraPitch),
            .roll = singleRadians(settings.cameraRoll),
            .effectLevel = single(settings.effectLevel)};
}

PanoramaDirection mapToPanorama(const VirtualPtzView& view, float x, float y, Straightening straightening) {
    const float level = view.effectLevel;
    Spherical direction{};
    // The ends are no blends: there the other pair's infinities and nans must not come in.
    if (level == 1.0F) {
        direction = sphericalFromGnomonic(view, x, y);
    } else if (level == 0.0F) {
        direction = sphericalFromPanorama(view, x, y);
    } else {
        const Spherical full = sphericalFromGnomonic(view, x, y);
        const Spherical plain = sphericalFromPanorama(view, x, y);
        direction = {level * full.longitude + (1.0F - level) * plain.longitude,
                     level * full.latitude + (1.0F - level) * plain.latitude};
    }
    // The plain section knows neither pan nor tilt: it gets its share of them here.
    direction.longitude += (1.0F - level) * view.pan;
    direction.latitude -= (1.0F - level) * view.tilt;
    if (straightening == Straightening::applied)
        direction = straightened(view, direction);
    return {singleDegrees(direction.longitude), singleDegrees(-direction.latitude)};
}

} // namespace tarvo::custom
