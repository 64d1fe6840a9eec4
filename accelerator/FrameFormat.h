#pragma once

#include "platform/InterfaceTypes.h"

#include <cstdint>
#include <optional>

namespace tarvo::accelerator {

/// What the filter reads from the format of a connection.
struct FrameFormat {
    GUID subtype{};
    std::int64_t imageBytes = 0;
    std::int64_t height = 0; ///< rows, at least 0
    bool isBottomUp = false;
    std::int64_t frameDuration100ns = 0; ///< as the format has it, 0 if unknown
};

/// Nothing for a format that is neither of the two video formats, or shorter than it says. A picture whose
/// size the format leaves open, as uncompressed RGB may, has that of its rows, each ending at a multiple of
/// four bytes.
std::optional<FrameFormat> readFrameFormat(const AM_MEDIA_TYPE& type) noexcept;

/// The bitmap header in one of the two video formats, or null.
const BITMAPINFOHEADER* bitmapHeader(const AM_MEDIA_TYPE& type) noexcept;

} // namespace tarvo::accelerator
