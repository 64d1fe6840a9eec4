#pragma once

#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software::plain {

/// The picture, with nothing to look at inside the exclude area, whose four edges belong to it; the record is
/// ExcludeConstants, the outside colour opaque black.
void excludeRegion(const void* constants, const PlaceRow& places, const PositionRow& positions);

} // namespace tarvo::render::software::plain
