#pragma once

#include "render/Picture.h"
#include "render/reference/Colour.h"
#include "render/reference/Grid.h"

namespace tarvo::render::reference {

/// Bilinear mix of the four pixels around (u, v), 0 … 1 over the picture; beyond its edge the edge pixel goes
/// on. Any coordinate may be asked for, also one that is no number. The picture is not empty.
Colour sampleBilinear(const Picture& picture, float u, float v);

/// What the tables say at a place: where to look in the input, 0 … 1 over it, and how much that counts.
struct LookupEntry {
    float sourceX;
    float sourceY;
    float weight;
};

/// The same mix of four cells; (u, v) are 0 … 1 over all tables together.
LookupEntry sampleBilinear(const LookupTables& tables, float u, float v);

} // namespace tarvo::render::reference
