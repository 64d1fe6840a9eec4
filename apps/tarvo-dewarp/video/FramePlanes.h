#pragma once

#include "apps/host/VideoFormat.h"

#include <cstddef>
#include <cstdint>

namespace tarvo::apps::video {

/// A rectangle of bytes in a frame.
struct Plane {
    std::size_t offset = 0;
    std::size_t stride = 0;
    std::size_t width = 0; ///< bytes of a row that mean something
    std::size_t height = 0;

    friend constexpr bool operator==(const Plane&, const Plane&) = default;
};

/// The planes of a YV12 frame as the transform finds them. Of odd sides the last column or row has no colour
/// of its own.
struct Yv12Planes {
    Plane luma;
    Plane red;  ///< Cr, second in memory
    Plane blue; ///< Cb, third
};

inline Yv12Planes yv12Planes(const host::VideoFormat& format) {
    const auto width = static_cast<std::size_t>(format.width);
    const auto height = static_cast<std::size_t>(format.height);
    // Everything follows from the frame's size: luma takes two thirds, each colour a quarter of that.
    const std::size_t lumaBytes = format.frameBytes / 3 * 2;
    const std::size_t stride = lumaBytes / height;
    const auto colour = [&](std::size_t offset) { return Plane{offset, stride / 2, width / 2, height / 2}; };
    return {{0, stride, width, height}, colour(lumaBytes), colour(lumaBytes + lumaBytes / 4)};
}

/// A packed frame as the one plane that it is.
inline Plane packedPlane(const host::VideoFormat& format) {
    const auto height = static_cast<std::size_t>(format.height < 0 ? -format.height : format.height);
    const std::size_t stride = format.frameBytes / height;
    return {0, stride, stride, height};
}

} // namespace tarvo::apps::video
