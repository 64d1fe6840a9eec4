#pragma once

#include "accelerator/FrameFormat.h"

#include <cstddef>
#include <span>

namespace tarvo::accelerator {

/// Copies a frame row by row where rows are padded differently or stand in the other order, else at once.
/// Rows have the length that the formats' sizes give them:
///
/// - NV12: two thirds of the size by the height; all rows, those of the chroma below the luma's.
/// - YV12: the same, and the rows of both chroma planes half as long.
/// - all else: size by height; turned upside down if one side begins with the bottom row.
///
/// Whatever the formats say, nothing beyond the two ranges is touched: bytes that one of them lacks are left
/// out.
void copyFrame(std::span<const std::byte> input, const FrameFormat& inputFormat, std::span<std::byte> output,
               const FrameFormat& outputFormat) noexcept;

} // namespace tarvo::accelerator
