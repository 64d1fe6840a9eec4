#pragma once

#include "render/FrameFormat.h"
#include "render/Picture.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tarvo::apps {

/// The layout of an input frame; without a stride it has the least one. The stride is that of the luma plane
/// for YV12 and must be leastStride() at least; the sides are 1 to maxPictureSide, YUY2's width even.
render::InputFormat inputFrameFormat(render::PixelFormat format, int width, int height, bool isBottomUp,
                                     std::optional<int> strideBytes = std::nullopt);

/// The stride of input rows without padding, bytes; YV12 rows of odd width are padded by one.
int leastStride(render::PixelFormat format, int width);

/// The layout of an output frame without padding.
render::OutputFormat outputFrameFormat(render::PixelFormat format, int width, int height, bool isBottomUp);

/// Bytes of such a frame.
std::size_t frameBytes(const render::OutputFormat& format);

/// The picture as a frame that the component shows with the picture's colours again, but for what the format
/// loses: the inverse of the component's own conversions, chroma being the mean of the pixels that share it.
std::vector<std::byte> encodeFrame(const render::Picture& picture, const render::InputFormat& format);

/// The picture that a delivered frame stands for, opaque. YV12 is taken back with the weights that the
/// component delivers it with. Where an odd side leaves the last column or row unwritten, it is as the buffer
/// has it.
render::Picture decodeFrame(std::span<const std::byte> frame, const render::OutputFormat& format);

} // namespace tarvo::apps
