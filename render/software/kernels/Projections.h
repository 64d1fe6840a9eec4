#pragma once

#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software::plain {

/// The projections of the fisheye picture; their record is DewarpConstants.
///
/// All but the wall's look at nothing outside the input. None takes a trigonometric function of an azimuth
/// that an inverse one gave: sine and cosine of the azimuth around the lens axis are the sides of the
/// triangle it came from, and the angle off the axis is taken from both legs, which loses no digits anywhere.
void singleView(const void* constants, const PlaceRow& places, const PositionRow& positions);
void panoramaWall(const void* constants, const PlaceRow& places, const PositionRow& positions);
void panoramaCeiling(const void* constants, const PlaceRow& places, const PositionRow& positions);
void panoramaDesk(const void* constants, const PlaceRow& places, const PositionRow& positions);

} // namespace tarvo::render::software::plain
