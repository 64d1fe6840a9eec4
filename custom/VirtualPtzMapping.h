#pragma once

#include "custom/VirtualPtzSettings.h"

namespace tarvo::custom {

/// The settings as the drawing program knows them: single precision, radians. The degrees are converted in
/// double precision, with the single-precision value of pi.
struct VirtualPtzView {
    float panoramaHorizontalFieldOfView;
    float panoramaVerticalFieldOfView;
    float outputAspect;
    float pan;
    float tilt;
    float fieldOfView;
    float pitch;
    float roll;
    float effectLevel;
};

VirtualPtzView virtualPtzView(const VirtualPtzSettings& settings);

/// A direction in the panorama, degrees: pan to the right, tilt upwards.
struct PanoramaDirection {
    float pan;
    float tilt;
};

/// Whether the camera's pitch and roll are taken out: `applied` gives the place in the panorama picture,
/// `none` the direction in the terms of the pan and tilt properties.
enum class Straightening { none, applied };

/// What the point (x, y) of the view sees, 0 … 1 from the upper left corner. In single precision and step by
/// step what the drawing program computes for a pixel.
///
/// What comes out as no finite number becomes 0. With full effect that is the tilt of the very centre, whose
/// distance 0 the formula divides by, and both angles once straightened.
PanoramaDirection mapToPanorama(const VirtualPtzView& view, float x, float y, Straightening straightening);

} // namespace tarvo::custom
