#pragma once

#include "geometry/ViewLayout.h"
#include "render/ConstantRecords.h"
#include "render/Pass.h"
#include "render/software/AlignedBytes.h"
#include "render/software/Raster.h"
#include "render/software/kernels/RowKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tarvo::render::software {

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
    bool isProjection = false;       ///< runs smoothly but for a few places
    bool isBounded = false;          ///< looks at nothing outside the picture
    RecordBytes record{};
    SampledWindow window{};

    friend bool operator==(const PositionKey&, const PositionKey&) = default;
};

/// The pixels of a drawn range and, for every one of them, where it looks; kept from frame to frame.
///
/// Positions are worked out band by band, when the band is drawn: while a view moves, what was worked out is
/// then still in the cache for the pixels that follow from it.
class CDrawnRange {
public:
    const CRaster& raster() const { return m_raster; }
    /// By the slots of the raster's spans.
    const std::int32_t* offsets() const;
    const std::uint16_t* fractions() const;
    /// The tiles of the picture that a band looks at, as bits, tile 0 being the lowest of the first word.
    std::span<const std::uint64_t> tiles(int band) const {
        return std::span(m_tiles).subspan(static_cast<std::size_t>(band) * m_tileWords, m_tileWords);
    }
    /// Whether a band is a copy pixel by pixel: no fractions, and neighbours look at neighbours.
    bool isStraight(int band) const { return m_bands[static_cast<std::size_t>(band)] == Band::straight; }

    /// Whether all bands have their positions.
    bool isEvaluated() const { return m_isEvaluated; }
    void markEvaluated() noexcept;
    /// The tiles that all bands look at or, until all have their positions, looked at the last time: a view
    /// that moves looks at nearly the same.
    std::span<const std::uint64_t> allTiles() const { return m_allTiles; }
    /// Works out the positions and tiles of a band, unless it has them. Different threads may do so for
    /// different bands. Allocates nothing.
    void evaluateBand(int band, const RowKernels& kernels) noexcept;

private:
    friend class CDrawnRanges;
    enum class Band : std::uint8_t { unknown, straight, anyhow };

    void forgetPositions(const PositionKey& positions, int targetHeight, const MemorySource& memory);
    /// Whether the piece is straight.
    bool packPiece(const Span& span, int y, int x, int count, const RowKernels& kernels,
                   const float* positionX, const float* positionY, std::span<std::uint64_t> tiles) noexcept;
    /// The positions at the knots of the rows of a band that a piece of a rectangle has.
    struct Knots {
        alignas(alignment) float x[bandHeight * knotLanes];
        alignas(alignment) float y[bandHeight * knotLanes];
    };
    void projectKnots(const Span& span, int firstRow, int endRow, int x, const RowKernels& kernels,
                      Knots& knots) const noexcept;
    /// The positions of a piece.
    void project(const Span& span, int y, int x, int count, const RowKernels& kernels, float* positionX,
                 float* positionY) const noexcept;
    bool isStraightPiece(std::ptrdiff_t slot, int count) const;
    struct TileBox {
        unsigned left;
        unsigned top;
        unsigned right;
        unsigned bottom;

        friend bool operator==(const TileBox&, const TileBox&) = default;
    };
    TileBox tilesOf(const GroupBox& box) const noexcept;
    void touch(const GroupBox* boxes, std::ptrdiff_t slot, int count,
               std::span<std::uint64_t> tiles) const noexcept;
    void touchBox(const TileBox& box, std::span<std::uint64_t> tiles) const noexcept;

    RasterKey m_rasterKey;
    PositionKey m_positionKey;
    CRaster m_raster;
    CAlignedBytes m_offsets;
    CAlignedBytes m_fractions;
    std::vector<Band> m_bands;
    std::vector<std::uint64_t> m_tiles; ///< of all bands
    std::vector<std::uint64_t> m_allTiles;
    std::size_t m_tileWords = 0; ///< of one band
    bool m_isRasterised = false;
    bool m_isEvaluated = false;
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

/// A vertex value along row y.
inline LinearRow alongRow(const Affine& value, int y) {
    return {value.origin + value.perY * (y + 0.5), value.perX};
}

} // namespace tarvo::render::software
