#pragma once

#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"

#include <numbers>
#include <span>
#include <string>
#include <vector>

namespace tarvo::bench {

/// The lens of every picture here: the angle off the axis is proportional to the radius, half a circle fills
/// the picture's height. All contenders know such a lens, so they show the same view of the same picture.
inline constexpr geometry::LensProfile equidistantLens{0.0F, 0.0F, static_cast<float>(std::numbers::inv_pi)};

inline constexpr int inputWidth = 2592;
inline constexpr int inputHeight = 1944;

enum class Peer { v360, openCv };

/// Where one rectilinear picture looks, degrees, and its size in pixels. The tangents are those of half the
/// angles of view.
struct View {
    double panDegrees = 0.0;
    double tiltDegrees = 0.0;
    double tanHalfWidth = 1.0;
    double tanHalfHeight = 1.0;
    int width = 0;
    int height = 0;
};

/// A row of the comparison.
struct Work {
    const char* name;
    const char* text;
    Peer peer;
    const char* peerText;
    geometry::TiltOrientation mounting = geometry::TiltOrientation::wall;
    geometry::ViewType viewType = geometry::ViewType::single;
    int outputWidth = 1024;
    int outputHeight = 768;
    double panDegrees = 20.0;
    double tiltDegrees = -10.0;
    bool isMoving = false;
    bool isRgb32 = false; ///< YV12 otherwise, in and out alike
    double wanted = 0.0;  ///< times as fast as the peer
    double hoped = 0.0;
    int inputWidth = bench::inputWidth;
    int inputHeight = bench::inputHeight;
};

/// Half the vertical angle of view of a picture with the input's aspect, degrees; wider pictures keep the
/// width.
inline constexpr double fieldOfViewDegrees = 30.0;

/// A strip from the horizon down to where the camera looks almost straight down.
inline constexpr double panoramaWidthDegrees = 180.0;
inline constexpr double panoramaHeightDegrees = 67.5;

/// The rows, each name as in the printed lines.
std::span<const Work> comparedWorks();

/// Whether it is a panorama, which has no rectilinear views.
bool isPanorama(const Work& work);

/// The rectilinear pictures that make up the output: one, or the quad view's four quarters, row by row.
std::vector<View> viewsOf(const Work& work);

/// How far the view that moves is panned from where it starts, degrees: a slow sweep to and fro, never at
/// rest.
double sweepDegrees(int frame);

} // namespace tarvo::bench
