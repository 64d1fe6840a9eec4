#pragma once

#include "geometry/Enumerations.h"

namespace tarvo::geometry {

/// The part of the sphere that a panorama strip shows, degrees. The projections do not use the tilt offset.
struct PanoramaRectangle {
    double widthDegrees = 0.0;
    double heightDegrees = 0.0;
    double panOffsetDegrees = 0.0;
    double tiltOffsetDegrees = 0.0;
};

/// Vertical extent that a ceiling or desk camera leaves usable; a derived output height counts in it too.
inline constexpr double panoramaHeightDegrees = 67.5;
inline constexpr double defaultPanoramaFieldOfView = 180.0;
inline constexpr double defaultPanoramaPanOffset = -90.0;

/// Rectangle for a strip that is `fieldOfViewDegrees` wide and starts at `panOffsetDegrees`. Its height
/// follows from the output aspect (width / height; 0: unknown), so that a degree is as high as it is wide, up
/// to the vertical extent that the mounting leaves usable.
PanoramaRectangle derivePanoramaRectangle(TiltOrientation orientation, double fieldOfViewDegrees,
                                          double panOffsetDegrees, double outputAspect);

/// The projection that shows `viewType` on a camera mounted as `orientation` (the mounting in force).
PanoramaMode panoramaMode(ViewType viewType, TiltOrientation orientation);

} // namespace tarvo::geometry
