#pragma once

#include "geometry/ViewLayout.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::render {

/// A value that the vertex program takes from the vertex buffer: floats, by semantic, all of index 0.
struct VertexElement {
    const char* semantic;
    std::uint32_t floatCount;
    std::uint32_t byteOffset; ///< in geometry::Vertex
};

/// One buffer of geometry::Vertex feeds every pass.
inline constexpr std::array<VertexElement, 3> vertexLayout{{
    {"POSITION", 3, offsetof(geometry::Vertex, x)},
    {"COLOR", 1, offsetof(geometry::Vertex, colour)},
    {"TEXCOORD", 2, offsetof(geometry::Vertex, u)},
}};

static_assert(vertexLayout[0].byteOffset == 0);
static_assert(vertexLayout[1].byteOffset == 12);
static_assert(vertexLayout[2].byteOffset == 16);
static_assert(sizeof(geometry::Vertex) == 24);

} // namespace tarvo::render
