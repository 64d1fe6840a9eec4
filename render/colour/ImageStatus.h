#pragma once

#include <cstdint>

namespace tarvo::render {

/// What the image primitives answer. The numbers are part of their contract.
enum class ImageStatus : std::int32_t {
    done = 0,
    oddSize = 35, ///< done, but for an odd last column or row
    badSize = -6,
    nullPointer = -8,
    badFlipMode = -21,
};

/// The part of an image to work on, in pixels from its first pixel on.
struct ImageRegion {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

} // namespace tarvo::render
