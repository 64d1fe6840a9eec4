#pragma once

#include "render/ConstantRecords.h"
#include "render/Picture.h"
#include "render/reference/Colour.h"
#include "render/reference/Grid.h"

namespace tarvo::render::reference {

// The pixel programs of the custom view, each for one pixel with the texture coordinate (u, v). A pixel is
// the sum of what the tables find in the source, each sample times its weight, over opaque black. The alpha
// channel is added up too and so goes beyond 1. At most 8 tables count.

/// A cut-out of the tables' grid, letter-boxed with black bars.
Colour customTransformProgram(const CustomTransformConstants& constants, const LookupTables& tables,
                              const Picture& source, float u, float v);

/// The grid as a panorama and a virtual camera that looks into it; black where it sees past its edges.
Colour customVirtualPtzProgram(const VirtualPtzConstants& constants, const LookupTables& tables,
                               const Picture& source, float u, float v);

} // namespace tarvo::render::reference
