#pragma once

#include "geometry/ViewLayout.h"
#include "render/ConstantRecords.h"
#include "render/Pass.h"
#include "render/software/AlignedBytes.h"
#include "render/software/Raster.h"
#include "render/software/TableLayers.h"
#include "render/software/TouchedTiles.h"
#include "render/software/kernels/RowKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::render::software {

class CKnots;

/// The record of a pass, of any program.
struct RecordBytes {
    alignas(16) std::array<std::byte, sizeof(VirtualPtzConstants)> bytes{};
    std::size_t size = 0;

    friend bool operator==(const RecordBytes&, const RecordBytes&) = default;
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
    TableView tables{}; ///< the kernel's positions are places on their grid, if there are such

    friend bool operator==(const PositionKey&, const PositionKey&) = default;
};

/// The pixels of a drawn range and, for every one of them, where it looks; kept from frame to frame.
///
/// Positions are worked out band by band, when the band is drawn: while a view moves, what was worked out is
/// then still in the cache for the pixels that follow from it.
class CDrawnRange {
public:
    const CRaster& raster() const { return m_raster; }
    /// By the slots of the raster's spans; of a range that looks through tables, those of layers() instead.
    const std::int32_t* offsets() const;
    const std::uint16_t* fractions() const;
    const CTableLayers& layers() const { return m_layers; }
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
    /// Works out the positions of a block of a band whose tiles these are, from knots if there are any.
    void evaluateBlock(const Block& block, CKnots* knots, const RowKernels& kernels,
                       std::span<std::uint64_t> tiles) noexcept;
    /// Packs the positions of slots that follow each other. Without tiles those are touched otherwise; with
    /// them, `count` is up to pieceLength. `areInside` as in PackRow.
    void pack(std::ptrdiff_t slot, int count, const RowKernels& kernels, const float* positionX,
              const float* positionY, std::span<std::uint64_t> tiles, bool areInside) noexcept;
    /// As many rows may be projected at once.
    static constexpr int rowsAtOnce = 4;
    /// The positions of a piece, and of those below it in the next rows, one after the other.
    void project(const Span& span, int y, int rows, int x, int count, const RowKernels& kernels,
                 float* positionX, float* positionY) const noexcept;
    bool isStraightBlock(const Block& block) const;
    /// The same as evaluateBand() does, through tables.
    void evaluateLayers(int band, const RowKernels& kernels, std::span<std::uint64_t> tiles) noexcept;
    /// The positions and weights of a piece in one table, of which `row` has everything but the places to
    /// write to, packed; whether there is anything to see.
    TableWeights lookUpPiece(TableRow row, int layer, std::ptrdiff_t slot, const RowKernels& kernels,
                             std::span<std::uint64_t> tiles) noexcept;

    RasterKey m_rasterKey;
    PositionKey m_positionKey;
    CRaster m_raster;
    CAlignedBytes m_offsets;
    CAlignedBytes m_fractions;
    CTableLayers m_layers;
    std::vector<Band> m_bands;
    std::vector<std::uint64_t> m_tiles; ///< of all bands
    std::vector<std::uint64_t> m_allTiles;
    std::size_t m_tileWords = 0; ///< of one band
    bool m_isRasterised = false;
    bool m_isEvaluated = false;
    bool m_isInUse = false;
    std::uint64_t m_lastUse = 0;
};

/// A vertex value along row y.
inline LinearRow alongRow(const Affine& value, int y) {
    return {value.origin + value.perY * (y + 0.5), value.perX};
}

} // namespace tarvo::render::software
