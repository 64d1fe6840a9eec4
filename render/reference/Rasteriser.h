#pragma once

#include "geometry/ViewLayout.h"

#include <cstdint>
#include <functional>
#include <span>

namespace tarvo::render::reference {

/// What a pixel program is given: the pixel of the target and the vertex values interpolated at its centre.
struct Fragment {
    int x;
    int y;
    float colour;
    float u;
    float v;
};

using FragmentVisitor = std::function<void(const Fragment&)>;

/// Calls `visit` for every pixel whose centre a triangle covers, by the rules of the graphics platform:
/// corners are snapped to 1/256 pixel, a centre on an edge belongs to the triangle whose left or top edge it
/// is, and triangles that are counter-clockwise in the picture are the back side and left out. So triangles
/// that share an edge neither leave a gap nor visit a pixel twice. Values are interpolated linearly between
/// the unsnapped corners.
///
/// Positions are those of `geometry::Vertex`; the target is `width` × `height` pixels. Triangles with a
/// corner that is no finite number are left out.
void rasteriseStrip(std::span<const geometry::Vertex> vertices, int width, int height,
                    const FragmentVisitor& visit);

/// The same for a triangle list; every index lies in `vertices`.
void rasteriseList(std::span<const geometry::Vertex> vertices, std::span<const std::uint32_t> indices,
                   int width, int height, const FragmentVisitor& visit);

} // namespace tarvo::render::reference
