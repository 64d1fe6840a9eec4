#pragma once

#include "platform/InterfaceTypes.h"

#include <cstdint>
#include <optional>

namespace tarvo::transform {

/// What both kinds of format block say of a video, as it stands there.
struct VideoFormat {
    std::int64_t ticksPerFrame = 0; ///< AvgTimePerFrame
    std::int32_t width = 0;         ///< biWidth
    std::int32_t height = 0;        ///< biHeight: negative for top-down, of RGB
    std::uint32_t imageBytes = 0;   ///< biSizeImage
    std::int64_t targetWidth = 0;   ///< of rcTarget
};

/// Reads a format block of FORMAT_VideoInfo or FORMAT_VideoInfo2. Nothing for other formats, for a block that
/// is missing or too short, and for a bitmap header that claims to reach beyond its block.
std::optional<VideoFormat> readVideoFormat(const DMO_MEDIA_TYPE& type);

} // namespace tarvo::transform
