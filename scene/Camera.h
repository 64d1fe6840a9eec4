#pragma once

#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"
#include "scene/Vector.h"

namespace tarvo::scene {

/// The direction with a compass azimuth `panDegrees` (0 north, 90 east) and an elevation `tiltDegrees`
/// (90 straight up), length one.
Vector direction(double panDegrees, double tiltDegrees);

/// The directions of a camera's picture in the room. right × down = axis: pictures are never mirrored.
struct MountingFrame {
    Vector right; ///< where the picture's columns count up, at its centre
    Vector down;  ///< where the picture's rows count up, at its centre
    Vector axis;  ///< the lens's central ray
};

/// A wall camera looks north, its picture upright; a ceiling camera looks down and a desk camera up, both
/// with north at the picture's top. `undef` stands for wall. Throws std::invalid_argument for any other
/// value.
MountingFrame mountingFrame(geometry::TiltOrientation orientation);

/// A fisheye camera in the room.
struct FisheyeCamera {
    geometry::TiltOrientation orientation = geometry::TiltOrientation::wall;
    geometry::LensProfile lens = geometry::defaultLensProfile;
    Vector position;
    double maxAngleDegrees = 100.0; ///< beyond this angle from the axis the picture is black
};

/// The usual camera of a mounting: on the south wall at 2.2 m, below the middle of the ceiling, or on the
/// table.
FisheyeCamera defaultCamera(geometry::TiltOrientation orientation);

/// A true perspective picture: a pinhole camera without roll.
struct PerspectiveView {
    Vector position;
    double panDegrees = 0.0;
    double tiltDegrees = 0.0;
    double tanHalfWidth = 1.0;  ///< tangent of half the horizontal angle of view
    double tanHalfHeight = 1.0; ///< tangent of half the vertical angle of view
};

/// The view of the given half vertical angle whose pixels are square in a picture of width × height pixels.
PerspectiveView squarePixelView(const Vector& position, double panDegrees, double tiltDegrees,
                                double halfVerticalDegrees, int width, int height);

/// A strip of an equirectangular panorama: columns are equal steps of azimuth, rows equal steps of elevation.
struct PanoramaStrip {
    Vector position;
    double panStartDegrees = -180.0;   ///< azimuth of the left edge
    double panWidthDegrees = 360.0;    ///< azimuth from the left edge to the right one; negative runs west
    double elevationTopDegrees = 45.0; ///< elevation of the upper edge
    double elevationBottomDegrees = -45.0; ///< elevation of the lower edge
};

} // namespace tarvo::scene
