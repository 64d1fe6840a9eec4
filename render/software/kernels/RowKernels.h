#pragma once

// Declarations and plain records only: also for files that are compiled for one instruction set.
#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

/// Where a stretch of pixels of one row looks, as the rasteriser hands it out.
struct PlaceRow {
    const float* u;
    const float* v;
    int count;
};

/// Where it looks in the sampled picture, in pixels of that picture from its upper left corner; what is no
/// number looks at nothing and shows the program's outside colour. `width` and `height` are the picture's.
struct PositionRow {
    float* x;
    float* y;
    float width;
    float height;
};

/// A program that samples one picture once: from places to positions. `constants` is its record.
using PositionKernel = void (*)(const void* constants, const PlaceRow& places, const PositionRow& positions);

/// Positions in the form that sampling wants, for pictures of this size and pitch. Pixel i has its centre at
/// i + 0.5; beyond the outermost centres the edge pixel goes on.
struct PackRow {
    const float* x;
    const float* y;
    int count;
    int width;
    int height;
    std::int32_t pitch;
    std::int32_t* offsets;    ///< bytes to the upper left of the four pixels around; −1: nothing
    std::uint16_t* fractions; ///< 1/256 to the right in the low byte, 1/256 downward in the high byte
};
using PackKernel = void (*)(const PackRow& row);

/// The mix of the four pixels around each position: the sum of the four bytes times their weights, 65,536 in
/// all, plus one half, shifted right by 16. Where the fractions are exact it is the nearest level; positions
/// were rounded to 1/256 pixel, so that it is at most one level from the mix at the position itself.
struct SampleRow {
    const std::uint8_t* pixels;
    std::ptrdiff_t pitch;
    const std::int32_t* offsets;
    const std::uint16_t* fractions;
    int count;
    std::uint32_t outside; ///< BGRA bytes as they lie in memory
    std::uint8_t* target;
};
using SampleKernel = void (*)(const SampleRow& row);

/// One entry for each program that samples a picture, and what they share.
struct RowKernels {
    PositionKernel singleView;
    PositionKernel panoramaWall;
    PositionKernel panoramaCeiling;
    PositionKernel panoramaDesk;
    PositionKernel plainCopy;
    PositionKernel excludeRegion;
    PackKernel pack;
    SampleKernel sample;
};

/// The kernels for this processor.
const RowKernels& rowKernels();

} // namespace tarvo::render::software
