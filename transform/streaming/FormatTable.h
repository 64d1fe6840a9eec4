#pragma once

#include "platform/InterfaceTypes.h"
#include "render/FrameFormat.h"

#include <cstdint>
#include <span>

namespace tarvo::transform {

/// A pixel format that a stream can carry. Rows live as long as the program.
struct StreamFormat {
    const char* name; ///< as log lines call it
    const GUID* subtype;
    render::PixelFormat pixelFormat;
    std::uint16_t bitsPerPixel;
    std::uint32_t compression; ///< biCompression

    /// Bytes of the smallest frame, in which nothing lies between the rows. Sides in pixels.
    std::uint64_t packedFrameBytes(std::uint64_t width, std::uint64_t height) const;
    /// From a row to the next in a frame of `frameBytes` and `height` rows (not 0), of YV12 the luma plane's.
    std::uint32_t strideBytes(std::uint32_t frameBytes, std::uint32_t height) const;
};

/// What comes in and what goes out, in the order in which it is offered.
std::span<const StreamFormat> inputFormats();
std::span<const StreamFormat> outputFormats();

/// The row of a subtype; null if there is none.
const StreamFormat* findFormat(std::span<const StreamFormat> formats, const GUID& subtype);

} // namespace tarvo::transform
