#pragma once

#include "render/colour/YuvToBgra.h"
#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software {

// The conversions drawn anywhere and at any scale. A whole frame pixel by pixel is converted by
// convertYv12ToBgra() and convertYuy2ToBgra() instead.

/// Places of three planes with linear sampling; `source` is not empty.
void yv12Row(const Yv12Source& source, const PlaceRow& places, std::uint8_t* target);

/// `count` pixels of the target from (x, y) on: pixel (x, y) shows number x + y · width of the buffer,
/// and zeros beyond its end.
void yuy2Row(const Yuy2Source& source, int x, int y, int count, std::uint8_t* target);

} // namespace tarvo::render::software
