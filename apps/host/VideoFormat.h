#pragma once

#include "com/MediaType.h"

#include <cstdint>
#include <optional>

namespace tarvo::host {

/// Formats of frames that the transform takes; it gives YV12 and RGB32.
enum class FramePixels { yv12, yuy2, rgb32 };

/// How frames lie in memory.
struct VideoFormat {
    FramePixels pixels = FramePixels::rgb32;
    std::int32_t width = 0;
    /// Rows as biHeight counts them: of RGB32, a negative number says that the top row comes first.
    std::int32_t height = 0;
    /// A whole frame; from it follows the stride, and of YV12 it is 3/2 times what the luma takes.
    std::uint32_t frameBytes = 0;
    std::int64_t ticksPerFrame = 0; ///< duration of a frame in units of 100 ns; 0 if unknown

    friend constexpr bool operator==(const VideoFormat&, const VideoFormat&) = default;
};

/// A format whose rows are `strideBytes` apart (of YV12, an even number for the luma plane) or, for 0, as
/// near as they can. Throws std::invalid_argument for a size or stride that makes no frame, or one of 2 GiB
/// or more.
VideoFormat makeVideoFormat(FramePixels pixels, std::int32_t width, std::int32_t height,
                            std::int64_t ticksPerFrame = 0, std::uint32_t strideBytes = 0);

/// As a media type of VIDEOINFOHEADER form; throws std::bad_alloc.
com::CMediaType mediaTypeOf(const VideoFormat& format);

/// The pixels that a media type's subtype stands for, none for any other.
std::optional<FramePixels> pixelsOf(const DMO_MEDIA_TYPE& type);

} // namespace tarvo::host
