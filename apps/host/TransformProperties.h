#pragma once

#include "interfaces/TarvoVideoTransform.h"

#include <array>
#include <optional>

namespace tarvo::host {

/// Properties of the transform for a whole run; what has no value keeps the transform's own. Enumerations are
/// the numbers of the public header, angles degrees.
struct TransformProperties {
    struct Edges {
        double left, top, right, bottom; ///< fractions of the input picture
    };

    std::optional<LONG> outputWidth;
    std::optional<LONG> outputHeight;
    std::optional<double> outputFrameRate;
    std::optional<LONG> options;
    std::optional<std::array<double, 3>> lensProfile;
    std::optional<LONG> tiltOrientation;
    std::optional<LONG> viewType;
    std::optional<double> effectLevel;
    std::optional<double> panoramaFieldOfView;
    std::optional<double> panoramaPanOffset;
    std::optional<Edges> excludeRect;
    std::optional<bool> isBypassed;
    std::optional<double> pan;
    std::optional<double> tilt;
    std::optional<double> fieldOfView;
};

/// Puts everything but the position; to be called before the types are set, since output size and shape are
/// refused later. Throws HostError, which names the property.
void putProperties(IDewarpingTransform& transform, const TransformProperties& properties);

/// Puts pan, tilt and field of view; to be called once the types are set: mounting, view type and the
/// output's shape bring their own limits and defaults for these. Throws HostError.
void putPosition(IDewarpingTransform& transform, const TransformProperties& properties);

} // namespace tarvo::host
