#pragma once

#include "apps/tarvo-dewarp/Values.h"
#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"
#include "geometry/OutputSize.h"

namespace tarvo::apps {

// For what computes pictures and tables without the module: what options were read into, as the geometry
// takes it. The numbers of the enumerations are the same on both sides.

inline geometry::PictureSize geometryOf(const PictureSize& size) {
    return {size.width, size.height};
}

/// Coefficients are rounded to float, which the component computes with.
inline geometry::LensProfile geometryOf(const LensProfile& profile) {
    return {static_cast<float>(profile[0]), static_cast<float>(profile[1]), static_cast<float>(profile[2])};
}

inline geometry::TiltOrientation geometryOf(TiltOrientation orientation) {
    return static_cast<geometry::TiltOrientation>(orientation);
}

inline geometry::ViewType geometryOf(ViewType viewType) {
    return static_cast<geometry::ViewType>(viewType);
}

inline geometry::CustomTransformControlType geometryOf(CustomTransformControlType controlType) {
    return static_cast<geometry::CustomTransformControlType>(controlType);
}

} // namespace tarvo::apps
