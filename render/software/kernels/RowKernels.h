#pragma once

// Declarations and plain records only: also for files that are compiled for one instruction set.
#include "render/simd/InstructionSet.h"

#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

/// A vertex value along a row of the target.
struct LinearRow {
    double atLeftEdge; ///< at column 0, its left edge
    double perColumn;
};

/// The values at the centres of `count` pixels from column `first` on.
using InterpolationKernel = void (*)(const LinearRow& row, int first, int count, float* values);

/// Where a stretch of pixels of one row looks, as the rasteriser hands it out.
struct PlaceRow {
    const float* u;
    const float* v;
    int count;
};

/// Where it looks in the sampled picture, in pixels of that picture from its upper left corner, and beyond
/// it; what is no number looks at nothing and shows the program's outside colour. `width` and `height` are
/// the picture's.
struct PositionRow {
    float* x;
    float* y;
    float width;
    float height;
};

/// A program that samples one picture once: from places to positions. `constants` is its record.
using PositionKernel = void (*)(const void* constants, const PlaceRow& places, const PositionRow& positions);

/// Positions at every knotDistance-th pixel, of which those between follow where they are smooth.
inline constexpr int knotDistance = 16;
/// From one knot before the first pixel to at least one behind the last of a piece of up to 128 pixels.
inline constexpr int knotCount = 12;

/// The positions of `count` pixels, rounded up to multiples of 32, from those at knots, of which the second
/// belongs to the first pixel: the parabola through the three knots around each 32 pixels or, where that
/// might be off by 1/128 pixel or more, the cubic through the four around each 16. False, and nothing
/// written, where that might be off as well. With h = 16 the one's error is the third derivative times (2h)^3
/// / (72 √3) and the other's the fourth times 9 h^4 / 384; differences of the knots tell the derivatives.
using SpreadKernel = bool (*)(const float* knotsX, const float* knotsY, int count, float* x, float* y);

/// Between which positions the pixels of a piece lie, along one direction, by stretches of 16. Where `least`
/// is beyond `most`, nothing was met yet.
struct Reach {
    static constexpr int count = 8;
    float least[count];
    float most[count];
};

/// Widens the reach by what spread() makes of these knots, to 1/64 pixel: curves lie between the control
/// points of the cubics.
using WidenKernel = void (*)(const float* knots, Reach& reach);

/// Positions are packed in groups of this many, the last one perhaps of fewer.
inline constexpr int groupLength = 32;

/// The first of the four pixels around each position of a group lie in columns left … right and rows top …
/// bottom; nothing does when left is beyond right.
struct GroupBox {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

/// Positions, of one row or of several that follow each other, in the form that sampling wants, for pictures
/// of this size and pitch. Pixel i has its centre at
/// i + 0.5; beyond the outermost centres the edge pixel goes on.
struct PackRow {
    const float* x;
    const float* y;
    int count;
    int width;
    int height;
    bool isBounded; ///< what lies outside the picture looks at nothing
    std::int32_t pitch;
    std::int32_t* offsets;    ///< bytes to the upper left of the four pixels around; −1: nothing
    std::uint16_t* fractions; ///< 1/255 to the right in the low byte, 1/255 downward in the high byte
    GroupBox* boxes;          ///< of every group; null: nobody asks
    /// All lie at least half a pixel inside the outermost centres: nothing needs to be looked after.
    bool isInside = false;
};
using PackKernel = void (*)(const PackRow& row);

/// Pixels of some rows, whose positions lie one row behind the other. Each is the mix of the four pixels
/// around its position, in whole numbers: with shares a of the right and b of the lower ones in 255ths and D
/// = ⌊257b / 2⌋,
///
///     above = (255 − a)·(upper left − 128) + a·(upper right − 128)       below likewise
///     mix   = ⌊above·(32767 − D) / 32768 + 1/2⌋ + ⌊below·D / 32768 + 1/2⌋ + 32640
///     level = ⌊(mix + 127)·257 / 65536⌋
///
/// which is exact where all four are equal or a and b are 0 or 255, and otherwise the nearest level but for
/// 1/100; positions were rounded to 1/255 pixel, so that it is at most one level from the mix at the position
/// itself.
struct SampleBlock {
    const std::uint8_t* pixels;
    std::ptrdiff_t pitch;
    const std::int32_t* offsets;
    const std::uint16_t* fractions;
    std::ptrdiff_t step; ///< positions from a row to the next
    int count;           ///< pixels of a row
    int rows;
    std::uint32_t outside; ///< BGRA bytes as they lie in memory
    std::uint8_t* target;
    std::ptrdiff_t targetPitch;
    /// Positions that follow behind the last of the block: their pixels are fetched a little ahead. In a view
    /// that is turned, each row of the target crosses many of the picture, and no processor guesses that.
    std::ptrdiff_t following = 0;
};
using SampleKernel = void (*)(const SampleBlock& block);

/// What a table of a custom view says about places of its grid, its cells being bilinear patches. A texel has
/// four channels, 0 … 65535: column and line in the sampled picture, 65535 being the far edge, the weight,
/// and one that nobody asks for.
struct TableRow {
    const float* x; ///< 0 … 1 over the grid; what is no number lies outside
    const float* y;
    int count;
    const float* texels;  ///< of all tables, one below the other
    std::ptrdiff_t pitch; ///< texels from a row to the next, at least two
    int columns;
    int rows;     ///< of all tables
    float scaleX; ///< a place times this, and the origin added, counts texels from the first one's centre
    float scaleY;
    float originX;
    float originY;
    float width; ///< of the sampled picture
    float height;
    float* positionX; ///< as in PositionRow; no number where the weight is 0
    float* positionY;
    std::uint16_t* weights; ///< 0 … fullWeight
};

inline constexpr int fullWeight = 65535;

enum class TableWeights {
    none, ///< all are 0
    full, ///< all are either 0 or full, and some full
    any,
};
using TableKernel = TableWeights (*)(const TableRow& row);

/// What one table says about the pixels of a row, packed; where the weight is 0, the offset is −1.
struct MixLayer {
    const std::int32_t* offsets;
    const std::uint16_t* fractions;
    const std::uint16_t* weights;
};

/// The sum of what several tables find, each with its weight w in 65535ths, in whole numbers: with `mix` as
/// in SampleBlock, 255-fold levels,
///
///     sum   = min(65535, sum + ⌊mix·w / 65536⌋)      table by table
///     level = min(255, ⌊min(65535, sum + 127)·257 / 65536⌋)
///
/// and alpha always 255, so that what no table sees is opaque black. The roundings of eight tables together
/// are less than a tenth of a level.
struct MixRow {
    const std::uint8_t* pixels;
    std::ptrdiff_t pitch;
    const MixLayer* layers;
    int layerCount;
    int count;
    std::uint8_t* target;
};
using MixKernel = void (*)(const MixRow& row);

/// One entry for each program that samples a picture, and what they share. Every instruction set gives the
/// same bits.
struct RowKernels {
    InterpolationKernel interpolate;
    PositionKernel singleView;
    PositionKernel panoramaWall;
    PositionKernel panoramaCeiling;
    PositionKernel panoramaDesk;
    PositionKernel plainCopy;
    PositionKernel excludeRegion;
    PositionKernel customTransform; ///< this and the next to places on the grid of the tables
    PositionKernel customVirtualPtz;
    SpreadKernel spread;
    WidenKernel widen;
    PackKernel pack;
    SampleKernel sample;
    TableKernel lookUp;
    MixKernel mixLayers;
};

// To be used only where detectInstructionSet() is at least what the name says.
extern const RowKernels plainRows;
extern const RowKernels sse41Rows;
extern const RowKernels avx2Rows;
extern const RowKernels avx512Rows; ///< gathers
extern const RowKernels avx512RowsByLoads;

} // namespace tarvo::render::software
