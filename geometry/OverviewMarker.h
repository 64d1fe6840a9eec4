#pragma once

#include "geometry/DewarpConstants.h"
#include "geometry/ViewLayout.h"

#include <array>

namespace tarvo::geometry {

inline constexpr int overviewMarkerGridSize = 48;
inline constexpr int overviewMarkerStripCount = overviewMarkerGridSize - 1;
inline constexpr int overviewMarkerVertexCount = overviewMarkerStripCount * 2 * overviewMarkerGridSize;
static_assert(overviewMarkerVertexCount == 4512);

inline constexpr float overviewMarkerAlpha = 0.5F;

using OverviewMarkerVertices = std::array<Vertex, overviewMarkerVertexCount>;

/// Fills `vertices` with the region of the overview disc that the single view covers: one triangle strip
/// through a grid of view points, each row of cells in the direction opposite to the row before. The alpha is
/// 0 at points outside the image circle. Every triangle with an area is clockwise in the delivered picture,
/// so that a device which culls the back side draws all of the region and blends nothing twice. No texture is
/// looked at: u and v are 0.
///
/// `constants` are those of the single view; the aspects are width / height, positive.
void buildOverviewMarker(const DewarpConstants& constants, double inputAspect, double outputAspect,
                         const OverviewPlacement& disc, OverviewMarkerVertices& vertices);

} // namespace tarvo::geometry
