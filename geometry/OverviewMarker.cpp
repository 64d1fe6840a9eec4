#include "geometry/OverviewMarker.h"

#include "geometry/Projection.h"

#include <algorithm>

namespace tarvo::geometry {
namespace {

/// Share of a grid line between the first (0) and the last (1).
constexpr double gridShare(int line) {
    return static_cast<double>(line) / (overviewMarkerGridSize - 1);
}

} // namespace

void buildOverviewMarker(const DewarpConstants& constants, double inputAspect, double outputAspect,
                         const OverviewPlacement& disc, OverviewMarkerVertices& vertices) {
    // An output wider than the input crops the view at top and bottom; a narrower one shows all of its
    // height.
    const double visibleHalfHeight = std::min(1.0, inputAspect / outputAspect);
    const double halfInputHeight = static_cast<double>(constants.size[1]) * 0.5;

    std::array<Vertex, overviewMarkerGridSize * overviewMarkerGridSize> grid;
    for (int row = 0; row < overviewMarkerGridSize; ++row) {
        for (int column = 0; column < overviewMarkerGridSize; ++column) {
            const double x = 2.0 * gridShare(column) - 1.0;
            const double y = visibleHalfHeight * (1.0 - 2.0 * gridShare(row));
            const ForwardProjection point = projectForward(constants, x, y);
            // The disc shows the circle whose radius is half the input height, whatever the input's aspect.
            const double discX = point.offsetX / halfInputHeight;
            const double discY = point.offsetY / halfInputHeight;
            grid[static_cast<std::size_t>(row * overviewMarkerGridSize + column)] = {
                static_cast<float>(disc.centerX + disc.halfWidth * discX),
                static_cast<float>(disc.centerY + disc.halfHeight * discY),
                0.0F,
                point.isOutside ? 0.0F : overviewMarkerAlpha,
                0.0F,
                0.0F};
        }
    }

    const auto at = [&grid](int row, int column) {
        return grid[static_cast<std::size_t>(row * overviewMarkerGridSize + column)];
    };
    auto out = vertices.begin();
    for (int row = 0; row < overviewMarkerStripCount; ++row) {
        // To keep the triangles clockwise, a strip that runs to the right begins each pair with its lower
        // vertex, one that runs to the left with its upper.
        const bool runsRight = row % 2 == 0;
        for (int i = 0; i < overviewMarkerGridSize; ++i) {
            const int column = runsRight ? i : overviewMarkerGridSize - 1 - i;
            *out++ = at(runsRight ? row + 1 : row, column);
            *out++ = at(runsRight ? row : row + 1, column);
        }
    }
}

} // namespace tarvo::geometry
