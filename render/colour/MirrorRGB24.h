#pragma once

#include "render/colour/ColourKernels.h"
#include "render/colour/ImageStatus.h"

#include <cstddef>
#include <cstdint>

namespace tarvo::render {

enum class FlipMode : std::int32_t {
    upsideDown = 0,  ///< the order of the rows
    leftToRight = 1, ///< the order of the pixels within each row
    halfTurn = 2,    ///< both
};

/// Mirrors an image of 3-byte pixels in place. The step is the bytes from a row to the next; it may be
/// negative or larger than the rows, and nothing need be aligned. Rows do not overlap.
///
/// Checked in this order: nullPointer; badSize (width or height below 1); badFlipMode; badSize again where
/// the mode needs two of what it exchanges: upsideDown two rows, leftToRight two columns, halfTurn both. Any
/// thread.
// NOLINTNEXTLINE(readability-identifier-naming): spelt as the format is
ImageStatus MirrorRGB24(std::uint8_t* image, std::ptrdiff_t step, ImageRegion region, FlipMode mode,
                        const ColourKernels& kernels = colourKernels());

} // namespace tarvo::render
