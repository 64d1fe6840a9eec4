#pragma once

#include "geometry/Enumerations.h"
#include "geometry/ExcludeArea.h"
#include "geometry/PanoramaRectangle.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::geometry {

/// One vertex as the GPU reads it. Positions are those of the delivered picture, −1 … 1, x to the right and y
/// downward (−1 is the top row); `colour` is the alpha of the overview marker and 1 elsewhere.
struct Vertex {
    float x;
    float y;
    float z;
    float colour;
    float u;
    float v;
};
static_assert(sizeof(Vertex) == 24);
static_assert(offsetof(Vertex, x) == 0);
static_assert(offsetof(Vertex, colour) == 12);
static_assert(offsetof(Vertex, u) == 16);

/// First vertex of each quad in the shared vertex buffer. A quad is a triangle strip of four vertices: left
/// edge lower corner, left edge upper corner, right edge lower corner, right edge upper corner.
namespace quad {
inline constexpr int customView = 0; ///< also the plain copy of the bypass
inline constexpr int singleView = 4;
inline constexpr int panoramaSingle = 8;
inline constexpr int panoramaDouble = 12;
inline constexpr int panoramaSingleWall = 16;
inline constexpr int panoramaDoubleWall = 20;
inline constexpr int firstQuadrant = 24; ///< then every four vertices
inline constexpr int excludeArea = 40;
inline constexpr int fullTarget = 44;
} // namespace quad

inline constexpr int verticesPerQuad = 4;
inline constexpr int overviewDiscBaseVertex = 48;
inline constexpr int overviewDiscTriangleCount = 64;
inline constexpr int overviewDiscIndexCount = overviewDiscTriangleCount * 3;
inline constexpr int viewVertexCount = overviewDiscBaseVertex + 1 + overviewDiscTriangleCount + 1;
static_assert(viewVertexCount == 114);

using ViewVertices = std::array<Vertex, viewVertexCount>;
using OverviewDiscIndices = std::array<std::uint32_t, overviewDiscIndexCount>;

/// Everything that the places of the quads depend on.
struct ViewLayout {
    ViewType viewType = ViewType::single;
    TiltOrientation orientation = TiltOrientation::wall; ///< the mounting in force
    double inputAspect = 4.0 / 3.0;                      ///< width / height, positive
    double outputAspect = 4.0 / 3.0;                     ///< width / height, positive
    PanoramaRectangle panorama;
    bool isOverviewLeft = false;
    ExcludeArea excludeArea;
};

/// Where the overview disc lies, in the coordinates of `Vertex`.
struct OverviewPlacement {
    double centerX;
    double centerY;
    double halfWidth;
    double halfHeight;
};

/// The disc is half as wide as the smaller side of the picture and sits in a bottom corner.
OverviewPlacement overviewPlacement(double outputAspect, bool isLeft);

/// The contents of the shared vertex buffer.
ViewVertices buildViewVertices(const ViewLayout& layout);

/// Triangle list of the overview disc, a fan around its centre; relative to `overviewDiscBaseVertex`.
OverviewDiscIndices overviewDiscIndices();

/// How many sub-views the quad view draws: a wall camera fills two halves, the others four quarters.
constexpr int quadrantCount(TiltOrientation orientation) {
    return orientation == TiltOrientation::wall ? 2 : 4;
}

/// First vertex of the quad that shows a panorama view type.
constexpr int panoramaQuad(ViewType viewType, TiltOrientation orientation) {
    const bool isWall = orientation == TiltOrientation::wall;
    if (viewType == ViewType::panoramaSingle) {
        return isWall ? quad::panoramaSingleWall : quad::panoramaSingle;
    }
    return isWall ? quad::panoramaDoubleWall : quad::panoramaDouble;
}

} // namespace tarvo::geometry
