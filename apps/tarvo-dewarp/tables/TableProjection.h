#pragma once

#include "apps/tarvo-dewarp/LookupTable.h"
#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"
#include "geometry/OutputSize.h"

#include <optional>

namespace tarvo::apps {

/// How directions are laid out in the picture that a table makes.
enum class TableProjection {
    rectilinear,    ///< the component's own single view
    cylindrical,    ///< azimuth along x, the tangent of the elevation along y
    equirectangular ///< azimuth along x, elevation along y
};

struct TableView {
    TableProjection projection = TableProjection::rectilinear;
    geometry::PictureSize grid{64, 48};      ///< cells
    geometry::PictureSize input{2592, 1944}; ///< pixels
    geometry::LensProfile lensProfile = geometry::defaultLensProfile;
    geometry::TiltOrientation tiltOrientation = geometry::TiltOrientation::undef; ///< undef counts as wall
    std::optional<double> panDegrees;
    std::optional<double> tiltDegrees;
    std::optional<double> fieldOfViewDegrees;           ///< rectilinear only
    std::optional<double> horizontalFieldOfViewDegrees; ///< this and the next: the other two only
    std::optional<double> verticalFieldOfViewDegrees;
};

/// The table that shows the view of a fisheye picture, of the grid's shape. What lies outside the input or
/// beyond the angle up to which the lens's radius rises has no weight.
///
/// rectilinear: pan, tilt and field of view are limited as the component does. The others show `horizontal` x
/// `vertical` degrees (default 180 x 60) around pan (default 0) and tilt (default: the horizon at the edge
/// for ceiling and desk, else in the middle). Throws UsageError for a grid of too many cells, options of
/// another projection and elevations beyond 90 degrees, cylindrical 89; std::bad_alloc.
LookupTable makeTable(const TableView& view);

} // namespace tarvo::apps
