#pragma once

#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software::plain {

/// The picture as it is, scaled to the drawn area; no record. Beyond the edges its edge pixels go on.
void plainCopy(const void* constants, const PlaceRow& places, const PositionRow& positions);

} // namespace tarvo::render::software::plain
