#pragma once

namespace tarvo::custom {

inline constexpr double smallestVirtualFieldOfView = 5.0;
inline constexpr double largestVirtualFieldOfView = 120.0;

/// The properties of a virtual camera in a panorama; angles in degrees.
///
/// Until the host says otherwise the camera hangs level, the panorama is half a circle wide and a quarter
/// high, and the view shows its middle: with 90 degrees it fits into that panorama at every aspect from a
/// square on.
struct VirtualPtzSettings {
    double panoramaHorizontalFieldOfView = 180.0;
    double panoramaVerticalFieldOfView = 90.0;
    double cameraPitch = 0.0;
    double cameraRoll = 0.0;
    double effectLevel = 1.0; ///< 0 … 1
    double pan = 0.0;
    double tilt = 0.0;
    double fieldOfView = 90.0; ///< horizontal; between the limits above
    bool isFieldOfViewSet = false;
    bool useStrictBorderMode = false;
    float outputAspect = 1.0F; ///< width / height of the view, positive
};

} // namespace tarvo::custom
