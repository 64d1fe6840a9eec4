#pragma once

#include "apps/host/VideoFormat.h"
#include "apps/tarvo-dewarp/Picture.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tarvo::apps {

/// The layout of a frame; without a stride it has the least one. `isBottomUp` says something of RGB32 only.
/// The stride is that of the luma plane for YV12. Throws as host::makeVideoFormat().
host::VideoFormat frameFormat(host::FramePixels pixels, int width, int height, bool isBottomUp,
                              int strideBytes = 0);

/// The stride of rows without padding, bytes; YV12 rows of odd width are padded by one.
int leastStride(host::FramePixels pixels, int width);

/// The picture as a frame that the component shows with the picture's colours again, but for what the format
/// loses: the inverse of the component's own conversions, chroma being the mean of the pixels that share it.
std::vector<std::byte> encodeFrame(const Picture& picture, const host::VideoFormat& format);

/// The picture that a delivered frame stands for, opaque. YV12 is taken back with the weights that the
/// component delivers it with. Where an odd side leaves the last column or row unwritten, it is as the buffer
/// has it.
Picture decodeFrame(std::span<const std::byte> frame, const host::VideoFormat& format);

} // namespace tarvo::apps
