#pragma once

#include <cstdint>

namespace tarvo::render {

/// Pixel formats of the frames that come in and go out, by the number that media types identify them with:
/// the four-character code as a little-endian word, or 22 for 32-bit RGB.
enum class PixelFormat : std::uint32_t {
    rgb32 = 22,        ///< 4 bytes a pixel: blue, green, red, unused
    yv12 = 0x32315659, ///< luma at full size; then Cr, then Cb at half the width and height
    yuy2 = 0x32595559, ///< 4 bytes for two pixels: Y0 U Y1 V; input only
};

/// How the frames lie in memory that come in. Sizes in pixels, positive.
struct InputFormat {
    PixelFormat format = PixelFormat::rgb32;
    int width = 0;
    int height = 0;
    std::uint32_t strideBytes = 0; ///< from a row to the next; of YV12 the luma plane's
    std::uint32_t frameBytes = 0;  ///< a whole frame
    bool isBottomUp = false;       ///< RGB32 only: the last row lies first

    friend constexpr bool operator==(const InputFormat&, const InputFormat&) = default;
};

/// How the frames shall lie in memory that go out. Sizes in pixels, positive.
struct OutputFormat {
    PixelFormat format = PixelFormat::rgb32;
    int width = 0;
    int height = 0;
    std::uint32_t strideBytes = 0; ///< from a row to the next; of YV12 the luma plane's
    bool isBottomUp = false;       ///< RGB32 only: the last row lies first

    friend constexpr bool operator==(const OutputFormat&, const OutputFormat&) = default;
};

/// One plane of a YV12 frame.
struct PlaneFormat {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t strideBytes = 0; ///< from a row to the next in the frame
    std::uint32_t planeBytes = 0;  ///< in the frame

    friend constexpr bool operator==(const PlaneFormat&, const PlaneFormat&) = default;
};

/// The planes of a YV12 frame, 0 luma, 1 Cr, 2 Cb. Strides follow from the size of the frame alone: luma
/// takes two thirds of it, each chroma plane a quarter of luma, all in integers.
constexpr PlaneFormat yv12Plane(const InputFormat& input, int plane) {
    const auto width = static_cast<std::uint32_t>(input.width);
    const auto height = static_cast<std::uint32_t>(input.height);
    const std::uint32_t lumaBytes = input.frameBytes / 3 * 2;
    const std::uint32_t lumaStride = height == 0 ? 0 : lumaBytes / height;
    if (plane == 0) {
        return {width, height, lumaStride, lumaBytes};
    }
    return {width / 2, height / 2, lumaStride / 2, lumaBytes / 4};
}

/// Bytes of a packed YUY2 frame that any pixel is read from: a frame may claim to be larger than its picture.
constexpr std::uint32_t yuy2PictureBytes(const InputFormat& input) {
    const std::uint64_t words =
        (static_cast<std::uint64_t>(input.width) * static_cast<std::uint64_t>(input.height) + 1) / 2;
    return words * 4 < input.frameBytes ? static_cast<std::uint32_t>(words * 4) : input.frameBytes;
}

} // namespace tarvo::render
