#pragma once

#include "render/colour/ColourKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::render {

/// Pixels from (left, top) up to but not including (right, bottom).
struct PixelArea {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// 4-byte pixels; the step is the bytes from a row to the next and may be negative.
struct BgraTarget {
    std::uint8_t* pixels = nullptr;
    std::ptrdiff_t step = 0;
};

/// A YV12 picture: luma at full size; then Cr and Cb, in this order, at half the width and height, rounded
/// down. Steps are the bytes from a row to the next and may be negative.
struct Yv12Source {
    int width = 0;
    int height = 0;
    std::array<const std::uint8_t*, 3> planes{};
    std::array<std::ptrdiff_t, 3> steps{};
};

/// A YUY2 picture: 4 bytes Y0 U Y1 V for each two pixels, one row after the other without padding. A length
/// that is no multiple of 4 loses its last bytes.
struct Yuy2Source {
    int width = 0;
    int height = 0;
    const std::uint8_t* bytes = nullptr;
    std::size_t length = 0;
};

/// What the pixel program YV12PS draws, for the pixels of `area` (clipped to the picture): with a and b the
/// linear samples of Cr and Cb at the pixel's centre less one half, full scale being 1, edge samples going on
/// beyond the edges,
///
///     R = y + 1.370705·a    G = y − 0.698001·a − 0.337633·b    B = y + 1.732446·b    A = 1
///
/// saturated and rounded to the nearest of 256 levels. Pictures of even width and height are converted in
/// whole numbers (YuvFactors): there a value that lies within a hundredth of a level from the half between
/// two may become either of them, and exactly neutral chroma is exactly grey. Neither 16 … 235 nor a half
/// level is taken into account: deliberate. Areas that do not overlap may be converted at the same time by
/// any threads; those that begin at an odd row and end at another do best, as two rows from an odd one on
/// share their chroma. A picture lower or narrower than 2 has no chroma, and nothing is drawn.
void convertYv12ToBgra(const Yv12Source& source, const BgraTarget& target, PixelArea area,
                       const ColourKernels& kernels = colourKernels());

/// What the pixel program YUY2PS draws, for the pixels of `area` (clipped to the picture): pixel p = x +
/// y·width takes its luma and chroma, 0 … 255, from the buffer's word p/2, and zeros beyond the end of the
/// buffer;
///
///     (R, G, B, A) = (Y + 1.402·(V − 128), Y − 0.344·(U − 128) − 0.714·(V − 128), Y + 1.772·(U − 128), 1) /
///     256
///
/// saturated and rounded to the nearest of 256 levels. The divisor is not 255 and serves alpha too, so that
/// alpha is always 1 of 255: deliberate. Areas that do not overlap may be converted at the same time by any
/// threads.
void convertYuy2ToBgra(const Yuy2Source& source, const BgraTarget& target, PixelArea area,
                       const ColourKernels& kernels = colourKernels());

} // namespace tarvo::render
