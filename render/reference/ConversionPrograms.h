#pragma once

#include "render/ConstantRecords.h"
#include "render/reference/Colour.h"
#include "render/reference/Grid.h"

#include <array>
#include <cstdint>
#include <span>

namespace tarvo::render::reference {

// The pixel programs that convert the input, each for the pixel in column x of row y. They are only drawn
// over a whole target as large as the input, so that the pixel's number tells the place to sample without any
// rounding. The formulas are those of render/colour/YuvToBgra.h, to the byte, but for what lies next to a
// half in YV12 pictures of even size: what is returned is already saturated and rounded to 256 levels.

/// Luma, Cr and Cb: luma holds the pixel, the others have half its width and height, rounded down, and are
/// not empty.
Colour yv12Program(const std::array<const Plane*, 3>& planes, int x, int y);

/// Rows of `constants.width` pixels, two in four bytes, one after the other; zeros beyond the end.
Colour yuy2Program(const Yuy2Constants& constants, std::span<const std::uint8_t> bytes, int x, int y);

} // namespace tarvo::render::reference
