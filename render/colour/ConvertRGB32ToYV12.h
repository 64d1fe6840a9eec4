#pragma once

#include "render/colour/ColourKernels.h"
#include "render/colour/ImageStatus.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::render {

/// 4-byte pixels to YV12. Of a pixel's bytes b0, b1, b2, b3 (b3 is ignored), in 32-bit integers:
///
///     luma    = (16843·b0 + 33030·b1 + 6423·b2 + 0x108000) >> 16          each pixel, plane 0
///     chroma1 = (28770·S0 − 24117·S1 − 4653·S2 + 0x2008000) >> 18          each 2×2 block, plane 1
///     chroma2 = (−9699·S0 − 19071·S1 + 28770·S2 + 0x2008000) >> 18         each 2×2 block, plane 2
///
/// with S the sums over the block. The large luma weight falls on b0, which is blue in a BGRA picture, and
/// the chroma rounding is an eighth: both deliberate. The even part of the region is converted; an odd last
/// column or row is left unwritten.
///
/// Steps are bytes from a row to the next and may be negative or larger than the rows; nothing need be
/// aligned. Rows that are written overlap neither one another nor the source.
///
/// Checked in this order: nullPointer (source or any plane), badSize (width or height below 2). Answers done,
/// or oddSize when width or height was odd. Any thread.
// NOLINTNEXTLINE(readability-identifier-naming): spelt as the formats are
ImageStatus ConvertRGB32ToYV12(const std::uint8_t* source, std::ptrdiff_t sourceStep,
                               const std::array<std::uint8_t*, 3>& planes,
                               const std::array<std::ptrdiff_t, 3>& planeSteps, ImageRegion region,
                               const ColourKernels& kernels = colourKernels());

} // namespace tarvo::render
