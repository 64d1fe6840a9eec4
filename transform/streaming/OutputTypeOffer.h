#pragma once

#include "platform/InterfaceTypes.h"
#include "transform/streaming/FormatTable.h"

#include <cstdint>

namespace tarvo::transform {

/// Fraction of two whole numbers.
struct AspectRatio {
    std::uint32_t x = 0;
    std::uint32_t y = 0;

    friend constexpr bool operator==(const AspectRatio&, const AspectRatio&) = default;
};

/// x : y without their common prime factors up to 19; larger ones stay.
AspectRatio reducedAspect(AspectRatio aspect);

/// A video type of the stream's format with a format block, VIDEOINFOHEADER2 (which knows the picture's
/// aspect) or VIDEOINFOHEADER. Sides in pixels. The bottom row lies first, in both formats.
///
/// Stores it in a record whose old contents are not freed. E_OUTOFMEMORY leaves the record empty.
HRESULT makeOutputType(const StreamFormat& format, std::uint32_t width, std::uint32_t height,
                       std::int64_t ticksPerFrame, bool hasAspect, DMO_MEDIA_TYPE& type);

} // namespace tarvo::transform
