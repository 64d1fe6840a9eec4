#pragma once

#include "geometry/DewarpConstants.h"

namespace tarvo::geometry {

/// A place in the input picture, pixels from its top-left corner.
template<typename Real>
struct InputPosition {
    Real x;
    Real y;
};

/// The projections of one output pixel, as the shader programs evaluate them: each takes the texture
/// coordinate (u, v) of the pixel and gives the place of the input to sample. Instantiated for float, which
/// is the arithmetic of the programs, and for double, which tells how good that arithmetic is.
///
/// The sources of not-a-number are guarded: an arc cosine never sees more than 1, however a rotation rounds.

/// Rectilinear view: (0.5, 0.5) looks along pan and tilt, the upper and lower edge lie the field of view
/// away.
template<typename Real>
InputPosition<Real> projectSingleView(const DewarpConstants& constants, Real u, Real v);

/// Equirectangular strips, linear in azimuth along u and in elevation along v. Ceiling and desk hold two
/// strips, one for each half of v.
template<typename Real>
InputPosition<Real> projectPanoramaWall(const DewarpConstants& constants, Real u, Real v);
template<typename Real>
InputPosition<Real> projectPanoramaCeiling(const DewarpConstants& constants, Real u, Real v);
template<typename Real>
InputPosition<Real> projectPanoramaDesk(const DewarpConstants& constants, Real u, Real v);

/// True where the input has a picture; false for a position that is no number.
template<typename Real>
bool isInsideInput(const DewarpConstants& constants, InputPosition<Real> position) {
    return position.x >= 0 && position.y >= 0 && position.x < static_cast<Real>(constants.size[0]) &&
           position.y < static_cast<Real>(constants.size[1]);
}

/// Where the single view's projection takes one of its points.
struct ForwardProjection {
    /// Offset from the image centre in pixels, x to the right and y downward.
    double offsetX;
    double offsetY;
    /// The same offset in the frame of the overview: −1 … 1 over the smaller side of a picture that is wider
    /// than high, y downward.
    double x;
    double y;
    /// Distance from the image centre in half input heights.
    double radiusRatio;
    /// True outside the circle whose diameter is the input height.
    bool isOutside;
};

/// The single view's projection for the point (x, y) of the view, x from −1 at the left to 1 at the right
/// edge, y from −1 at the lower to 1 at the upper edge; in double precision and with true cosines.
ForwardProjection projectForward(const DewarpConstants& constants, double x, double y);

} // namespace tarvo::geometry
