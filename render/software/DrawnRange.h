#pragma once

#include "geometry/ViewLayout.h"
#include "render/ConstantRecords.h"
#include "render/Pass.h"
#include "render/software/AlignedBytes.h"
#include "render/software/Raster.h"
#include "render/software/ThreadPool.h"
#include "render/software/kernels/RowKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace tarvo::render::software {

/// Rows of vertex values are worked on in pieces of this many pixels, which lie on the stack.
inline constexpr int pieceLength = 128;

/// The record of a pass, of any program.
struct RecordBytes {
    alignas(16) std::array<std::byte, sizeof(VirtualPtzConstants)> bytes{};
    std::size_t size = 0;

    friend bool operator==(const RecordBytes&, const RecordBytes&) = default;
};

/// The picture that a program samples: a window of a tiled picture.
struct SampledWindow {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    int pictureWidth = 0;
    int pictureHeight = 0;
    std::ptrdiff_t pitch = 0;

    friend bool operator==(const SampledWindow&, const SampledWindow&) = default;
};

/// Which pixels a range of vertices covers: depends on nothing else than this.
struct RasterKey {
    DrawRange range{};
    int targetWidth = 0;
    int targetHeight = 0;
    std::uint64_t vertexVersion = 0;

    friend bool operator==(const RasterKey&, const RasterKey&) = default;
};

/// And where these pixels look.
struct PositionKey {
    PositionKernel kernel = nullptr; ///< null: the program does not sample by positions
    RecordBytes record{};
    SampledWindow window{};

    friend bool operator==(const PositionKey&, const PositionKey&) = default;
};

/// The box around positions; what is no number lies nowhere.
struct PositionBox {
    float left = std::numeric_limits<float>::infinity();
    float top = std::numeric_limits<float>::infinity();
    float right = -std::numeric_limits<float>::infinity();
    float bottom = -std::numeric_limits<float>::infinity();

    bool isEmpty() const { return !(left <= right && top <= bottom); }
    void include(float x, float y) {
        const bool isSomewhere = (x == x) & (y == y);
        left = isSomewhere && x < left ? x : left;
        right = isSomewhere && x > right ? x : right;
        top = isSomewhere && y < top ? y : top;
        bottom = isSomewhere && y > bottom ? y : bottom;
    }
};

/// The pixels of a drawn range and, for every one of them, where it looks; kept from frame to frame.
class CDrawnRange {
public:
    const CRaster& raster() const { return m_raster; }
    /// By the slots of the raster's spans.
    const std::int32_t* offsets() const;
    const std::uint16_t* fractions() const;
    /// The tiles of the picture that are looked at, ascending. Those of another range or time until
    /// evaluate() ran.
    std::span<const std::uint32_t> tiles() const { return m_tiles; }

    /// Whether it is a copy pixel by pixel: no fractions, and neighbours look at neighbours.
    bool isStraight() const { return m_isStraight; }

    bool isEvaluated() const { return m_isEvaluated; }
    /// Works out positions and tiles. Allocates nothing.
    void evaluate(CThreadPool& pool, const RowKernels& kernels);

private:
    friend class CDrawnRanges;
    void evaluateRow(int y, const RowKernels& kernels) noexcept;
    bool isStraightPiece(std::ptrdiff_t slot, int count) const;
    void touch(const float* x, const float* y, int count) noexcept;
    /// Unless it has more than so many tiles.
    bool touchBox(const PositionBox& box, int most) noexcept;

    RasterKey m_rasterKey;
    PositionKey m_positionKey;
    CRaster m_raster;
    CAlignedBytes m_offsets;
    CAlignedBytes m_fractions;
    std::vector<std::uint8_t> m_touched; ///< by tile, 0 or 1
    std::vector<std::uint32_t> m_tiles;
    bool m_isRasterised = false;
    bool m_isEvaluated = false;
    bool m_isStraight = false;
    bool m_isInUse = false;
    std::uint64_t m_lastUse = 0;
};

/// The ranges drawn lately. A view at rest finds all of its own again; one that moves finds their memory.
class CDrawnRanges {
public:
    explicit CDrawnRanges(const MemorySource& memory) : m_memory(memory) {}

    /// The range of these keys, in use until release(); null while too many are in use. Throws
    /// std::bad_alloc.
    CDrawnRange* acquire(const RasterKey& raster, const PositionKey& positions,
                         std::span<const geometry::Vertex> vertices, std::span<const std::uint32_t> indices);
    /// Ends all uses.
    void release();

private:
    /// The quad view takes four at once; with margin for the paste, the overview and what comes and goes.
    static constexpr std::size_t limit = 16;

    CDrawnRange* find(const RasterKey& raster, const PositionKey& positions);
    CDrawnRange* choose(const RasterKey& raster);

    const MemorySource& m_memory;
    std::vector<std::unique_ptr<CDrawnRange>> m_ranges;
    std::uint64_t m_uses = 0;
};

/// Calls `piece(y, span, first column, count)` for the spans of a row, cut into pieces.
template<typename Piece>
void forEachPiece(const CRaster& raster, int y, Piece piece) {
    for (const Span& span : raster.row(y)) {
        for (int x = span.left; x < span.right; x += pieceLength)
            piece(span, x, x + pieceLength < span.right ? pieceLength : span.right - x);
    }
}

/// A vertex value at the centres of pixels x … x + count − 1 of row y.
inline void interpolate(const Affine& value, int x, int y, int count, float* values) {
    const double begin = value.origin + value.perY * (y + 0.5);
    for (int i = 0; i < count; ++i)
        values[i] = static_cast<float>(begin + value.perX * (x + i + 0.5));
}

} // namespace tarvo::render::software
