#include "render/software/DrawnRange.h"

#include "render/software/TiledPicture.h"

#include <algorithm>

namespace tarvo::render::software {
namespace {

template<typename Element>
Element* elements(const CAlignedBytes& bytes) {
    return static_cast<Element*>(static_cast<void*>(bytes.data()));
}

void growTo(CAlignedBytes& bytes, std::size_t size, const MemorySource& memory) {
    if (bytes.size() < size) {
        bytes = {}; // first, so that both are never held
        bytes = CAlignedBytes(size, memory);
    }
}

} // namespace

const std::int32_t* CDrawnRange::offsets() const {
    return elements<std::int32_t>(m_offsets);
}

const std::uint16_t* CDrawnRange::fractions() const {
    return elements<std::uint16_t>(m_fractions);
}

void CDrawnRange::forgetPositions(const PositionKey& positions, int targetHeight,
                                  const MemorySource& memory) {
    // Marked only once everything has its memory: what fails half-way is built again the next time.
    m_isEvaluated = false;
    m_positionKey = {};
    if (positions.kernel != nullptr) {
        growTo(m_offsets, m_raster.slotCount() * sizeof(std::int32_t), memory);
        growTo(m_fractions, m_raster.slotCount() * sizeof(std::uint16_t), memory);
        const auto tiles = static_cast<std::size_t>(tileColumns(positions.window.pictureWidth)) *
                           static_cast<std::size_t>(tileRows(positions.window.pictureHeight));
        const auto bands = static_cast<std::size_t>(bandCount(targetHeight));
        m_tileWords = tileWords(tiles);
        m_tiles.assign(bands * m_tileWords, 0);
        if (m_allTiles.size() != m_tileWords)
            m_allTiles.assign(m_tileWords, 0);
        m_bands.assign(bands, Band::unknown);
    }
    m_positionKey = positions;
}

void CDrawnRange::markEvaluated() noexcept {
    if (m_isEvaluated)
        return;
    std::fill(m_allTiles.begin(), m_allTiles.end(), 0);
    for (std::size_t i = 0; i < m_tiles.size(); ++i)
        m_allTiles[i % m_tileWords] |= m_tiles[i];
    m_isEvaluated = true;
}

void CDrawnRange::evaluateBand(int band, const RowKernels& kernels) noexcept {
    Band& state = m_bands[static_cast<std::size_t>(band)];
    if (state != Band::unknown)
        return;
    const auto tiles = std::span(m_tiles).subspan(static_cast<std::size_t>(band) * m_tileWords, m_tileWords);
    const int firstRow = std::max(m_raster.top(), band * bandHeight);
    const int endRow = std::min(m_raster.bottom(), (band + 1) * bandHeight);
    // In a view that is only a few knots wide, neighbours may be turns apart and still look smooth.
    const bool hasKnots =
        m_positionKey.isProjection && m_raster.isRectangle() && firstRow < endRow &&
        m_raster.row(firstRow).front().right - m_raster.row(firstRow).front().left >= pieceLength;
    Knots knots;
    alignas(alignment) float positionX[pieceLength];
    alignas(alignment) float positionY[pieceLength];
    bool isStraight = true;
    m_raster.forEachPiece(band, [&](const Span& span, int y, int x, int count) {
        if (hasKnots && y == firstRow)
            projectKnots(span, firstRow, endRow, x, kernels, knots);
        const int row = (y - firstRow) * knotLanes;
        if (!hasKnots || !kernels.spread(knots.x + row, knots.y + row, count, positionX, positionY))
            project(span, y, x, count, kernels, positionX, positionY);
        isStraight = packPiece(span, y, x, count, kernels, positionX, positionY, tiles) && isStraight;
    });
    state = isStraight ? Band::straight : Band::anyhow;
}

void CDrawnRange::projectKnots(const Span& span, int firstRow, int endRow, int x, const RowKernels& kernels,
                               Knots& knots) const noexcept {
    const SampledWindow& window = m_positionKey.window;
    const VertexValues& values = m_raster.values(span);
    alignas(alignment) float u[bandHeight * knotLanes];
    alignas(alignment) float v[bandHeight * knotLanes];
    // The centres of every knotDistance-th pixel, counted from the knot before the piece.
    const auto atKnots = [x](const LinearRow& row) -> LinearRow {
        const double step = row.perColumn * knotDistance;
        return {row.atLeftEdge + row.perColumn * (x - knotDistance + 0.5) - 0.5 * step, step};
    };
    for (int y = firstRow; y < endRow; ++y) {
        const int row = (y - firstRow) * knotLanes;
        kernels.interpolate(atKnots(alongRow(values.u, y)), 0, knotLanes, u + row);
        kernels.interpolate(atKnots(alongRow(values.v, y)), 0, knotLanes, v + row);
    }
    m_positionKey.kernel(
        m_positionKey.record.bytes.data(), {u, v, (endRow - firstRow) * knotLanes},
        {knots.x, knots.y, static_cast<float>(window.width), static_cast<float>(window.height)});
}

void CDrawnRange::project(const Span& span, int y, int x, int count, const RowKernels& kernels,
                          float* positionX, float* positionY) const noexcept {
    const SampledWindow& window = m_positionKey.window;
    const VertexValues& values = m_raster.values(span);
    alignas(alignment) float u[pieceLength];
    alignas(alignment) float v[pieceLength];
    kernels.interpolate(alongRow(values.u, y), x, count, u);
    kernels.interpolate(alongRow(values.v, y), x, count, v);
    m_positionKey.kernel(
        m_positionKey.record.bytes.data(), {u, v, count},
        {positionX, positionY, static_cast<float>(window.width), static_cast<float>(window.height)});
}

bool CDrawnRange::packPiece(const Span& span, int y, int x, int count, const RowKernels& kernels,
                            const float* positionX, const float* positionY,
                            std::span<std::uint64_t> tiles) noexcept {
    const SampledWindow& window = m_positionKey.window;
    GroupBox boxes[pieceLength / groupLength];
    const std::ptrdiff_t slot = m_raster.slotOf(span, y, x);
    kernels.pack({positionX, positionY, count, window.width, window.height, m_positionKey.isBounded,
                  static_cast<std::int32_t>(window.pitch), elements<std::int32_t>(m_offsets) + slot,
                  elements<std::uint16_t>(m_fractions) + slot, boxes});
    touch(boxes, slot, count, tiles);
    return isStraightPiece(slot, count);
}

bool CDrawnRange::isStraightPiece(std::ptrdiff_t slot, int count) const {
    const std::int32_t* const pixels = offsets() + slot;
    const std::uint16_t* const shares = fractions() + slot;
    for (int i = 0; i < count; ++i) {
        if (shares[i] != 0 || pixels[i] < 0 || pixels[i] != pixels[0] + 4 * i)
            return false;
    }
    return true;
}

CDrawnRange::TileBox CDrawnRange::tilesOf(const GroupBox& box) const noexcept {
    const SampledWindow& window = m_positionKey.window;
    const auto tile = [](int place, int size) {
        return static_cast<unsigned>(place) / static_cast<unsigned>(size);
    };
    // With the neighbours to the right and below, which the last pixels do not have.
    return {tile(window.left + box.left, tileWidth), tile(window.top + box.top, tileHeight),
            tile(window.left + std::min(box.right + 1, window.width - 1), tileWidth),
            tile(window.top + std::min(box.bottom + 1, window.height - 1), tileHeight)};
}

void CDrawnRange::touch(const GroupBox* boxes, std::ptrdiff_t slot, int count,
                        std::span<std::uint64_t> tiles) const noexcept {
    constexpr unsigned mostTilesOfNeighbours = 6;
    TileBox last{1, 1, 0, 0};
    // The tiles of the box around a few neighbours are as good as always those that they look at; where the
    // projection tears neighbours apart, they are taken one by one.
    for (int begin = 0; begin < count; begin += groupLength) {
        const GroupBox& box = boxes[begin / groupLength];
        if (box.left > box.right)
            continue;
        const TileBox touched = tilesOf(box);
        if (touched == last)
            continue;
        if ((touched.right - touched.left + 1) * (touched.bottom - touched.top + 1) <=
            mostTilesOfNeighbours) {
            touchBox(touched, tiles);
            last = touched;
            continue;
        }
        const std::int32_t* const first = offsets() + slot;
        const auto pitch = static_cast<std::int32_t>(m_positionKey.window.pitch);
        for (int i = begin; i < std::min(begin + groupLength, count); ++i) {
            if (first[i] < 0)
                continue;
            const std::int32_t row = first[i] / pitch;
            const std::int32_t column = (first[i] - row * pitch) / 4;
            touchBox(tilesOf({column, row, column, row}), tiles);
        }
    }
}

void CDrawnRange::touchBox(const TileBox& box, std::span<std::uint64_t> tiles) const noexcept {
    const auto columns = static_cast<unsigned>(tileColumns(m_positionKey.window.pictureWidth));
    for (unsigned row = box.top; row <= box.bottom; ++row) {
        for (unsigned tile = row * columns + box.left; tile <= row * columns + box.right; ++tile)
            tiles[tile / 64] |= std::uint64_t{1} << tile % 64;
    }
}

CDrawnRange* CDrawnRanges::find(const RasterKey& raster, const PositionKey& positions) {
    for (const auto& range : m_ranges) {
        if (range->m_isRasterised && range->m_rasterKey == raster && range->m_positionKey == positions)
            return range.get();
    }
    return nullptr;
}

CDrawnRange* CDrawnRanges::choose(const RasterKey& raster) {
    const auto isBetter = [&](const CDrawnRange& a, const CDrawnRange& b) {
        // One that drew these vertices before has memory of the right size, and perhaps the raster.
        const auto rank = [&](const CDrawnRange& range) {
            return range.m_rasterKey == raster ? 2 : range.m_rasterKey.range == raster.range ? 1 : 0;
        };
        return rank(a) != rank(b) ? rank(a) > rank(b) : a.m_lastUse < b.m_lastUse;
    };
    CDrawnRange* best = nullptr;
    for (const auto& range : m_ranges) {
        if (!range->m_isInUse && (best == nullptr || isBetter(*range, *best)))
            best = range.get();
    }
    const bool isOwn = best != nullptr && best->m_rasterKey.range == raster.range;
    if (!isOwn && m_ranges.size() < limit) {
        m_ranges.push_back(std::make_unique<CDrawnRange>());
        best = m_ranges.back().get();
    }
    return best;
}

CDrawnRange* CDrawnRanges::acquire(const RasterKey& raster, const PositionKey& positions,
                                   std::span<const geometry::Vertex> vertices,
                                   std::span<const std::uint32_t> indices) {
    CDrawnRange* range = find(raster, positions);
    if (range == nullptr) {
        range = choose(raster);
        if (range == nullptr)
            return nullptr;
        if (!range->m_isRasterised || !(range->m_rasterKey == raster)) {
            range->m_isRasterised = false;
            range->m_rasterKey = raster;
            range->m_raster.build(vertices, indices, raster.range.topology, raster.targetWidth,
                                  raster.targetHeight);
            range->m_isRasterised = true;
        }
        range->forgetPositions(positions, raster.targetHeight, m_memory);
    }
    range->m_isInUse = true;
    range->m_lastUse = ++m_uses;
    return range;
}

void CDrawnRanges::release() {
    for (const auto& range : m_ranges)
        range->m_isInUse = false;
}

} // namespace tarvo::render::software
