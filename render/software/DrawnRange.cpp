#include "render/software/DrawnRange.h"

#include "render/software/GridBox.h"
#include "render/software/Knots.h"
#include "render/software/TiledPicture.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace tarvo::render::software {
namespace {

/// Where the grid of the first of several tables lies in the lookup surface, in texels from the first one's
/// centre, and how far the next is. Both records of programs with tables begin alike.
struct TableGrid {
    float scaleX;
    float scaleY;
    float originX;
    float originY;
    float nextTable;

    TableGrid(const RecordBytes& record, const TableView& tables) {
        CustomTransformConstants c{};
        std::memcpy(&c, record.bytes.data(), sizeof(c));
        const auto columns = static_cast<float>(tables.columns);
        const float rowsOfAll = static_cast<float>(tables.rows);
        const float rows = rowsOfAll / static_cast<float>(std::max(c.numberOfTables, 1U));
        scaleX = c.lookupRectangle[2] * columns;
        originX = c.lookupRectangle[0] * columns - 0.5F;
        scaleY = c.lookupRectangle[3] * rows;
        originY = c.lookupRectangle[1] * rows - 0.5F;
        nextTable = c.tableHeight * rowsOfAll;
    }
};

} // namespace

const std::int32_t* CDrawnRange::offsets() const {
    return elementsOf<std::int32_t>(m_offsets);
}

const std::uint16_t* CDrawnRange::fractions() const {
    return elementsOf<std::uint16_t>(m_fractions);
}

void CDrawnRange::forgetPositions(const PositionKey& positions, int targetHeight,
                                  const MemorySource& memory) {
    // Marked only once everything has its memory: what fails half-way is built again the next time.
    m_isEvaluated = false;
    m_positionKey = {};
    const bool isThroughTables = positions.tables.isThere();
    if (!isThroughTables)
        m_layers.clear(); // which are by far the largest
    if (positions.kernel != nullptr) {
        if (isThroughTables) {
            m_layers.reserve(positions.tables.layers, m_raster.slotCount(), memory);
        } else {
            growTo(m_offsets, m_raster.slotCount() * sizeof(std::int32_t), memory);
            growTo(m_fractions, m_raster.slotCount() * sizeof(std::uint16_t), memory);
        }
        const auto bands = static_cast<std::size_t>(bandCount(targetHeight));
        m_tileWords = tileWordsOf(positions.window);
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
    for (auto band = m_tiles.begin(); band != m_tiles.end(); band += static_cast<std::ptrdiff_t>(m_tileWords))
        std::transform(m_allTiles.begin(), m_allTiles.end(), band, m_allTiles.begin(), std::bit_or());
    m_isEvaluated = true;
}

void CDrawnRange::evaluateBand(int band, const RowKernels& kernels) noexcept {
    Band& state = m_bands[static_cast<std::size_t>(band)];
    if (state != Band::unknown)
        return;
    const auto tiles = std::span(m_tiles).subspan(static_cast<std::size_t>(band) * m_tileWords, m_tileWords);
    if (m_positionKey.tables.isThere()) {
        evaluateLayers(band, kernels, tiles);
        state = Band::anyhow;
        return;
    }
    const int firstRow = std::max(m_raster.top(), band * bandHeight);
    const int endRow = std::min(m_raster.bottom(), (band + 1) * bandHeight);
    // In a view that is only a few knots wide, neighbours may be turns apart and still look smooth.
    const bool hasKnots =
        m_positionKey.isProjection && m_raster.isRectangle() && firstRow < endRow &&
        m_raster.row(firstRow).front().right - m_raster.row(firstRow).front().left >= pieceLength;
    CKnots knots(m_positionKey, kernels, tiles);
    bool isStraight = true;
    m_raster.forEachBlock(band, [&](const Block& block) {
        if (hasKnots && CKnots::pieceOf(block) == 0)
            knots.project(m_raster.values(block.span), firstRow, endRow, block.left, block.span.right);
        evaluateBlock(block, hasKnots ? &knots : nullptr, kernels, tiles);
        isStraight = isStraight && isStraightBlock(block);
    });
    state = isStraight ? Band::straight : Band::anyhow;
}

void CDrawnRange::evaluateBlock(const Block& block, CKnots* knots, const RowKernels& kernels,
                                std::span<std::uint64_t> tiles) noexcept {
    alignas(alignment) float positionX[bandHeight * pieceLength];
    alignas(alignment) float positionY[bandHeight * pieceLength];
    std::array<bool, bandHeight> isSpread{};
    for (int row = 0; row < block.rows; ++row) {
        float* const x = positionX + row * pieceLength;
        float* const y = positionY + row * pieceLength;
        bool& isRowSpread = isSpread[static_cast<std::size_t>(row)];
        isRowSpread = knots != nullptr && knots->spread(block, row, x, y);
        if (!isRowSpread)
            project(block.span, block.top + row, 1, block.left, block.columns, kernels, x, y);
    }
    if (knots != nullptr)
        knots->touch(block.columns);
    const std::ptrdiff_t slot = m_raster.slotOf(block);
    const std::ptrdiff_t step = m_raster.slotStep(block);
    const bool isAllSpread = std::all_of(isSpread.begin(), isSpread.begin() + block.rows, std::identity());
    if (isAllSpread && block.columns == pieceLength) {
        // Positions and slots of all rows follow each other.
        pack(slot, block.rows * pieceLength, kernels, positionX, positionY, {}, knots->isInside());
        return;
    }
    for (int row = 0; row < block.rows; ++row) {
        pack(slot + row * step, block.columns, kernels, positionX + row * pieceLength,
             positionY + row * pieceLength,
             isSpread[static_cast<std::size_t>(row)] ? std::span<std::uint64_t>() : tiles, false);
    }
}

void CDrawnRange::project(const Span& span, int y, int rows, int x, int count, const RowKernels& kernels,
                          float* positionX, float* positionY) const noexcept {
    const SampledWindow& window = m_positionKey.window;
    const VertexValues& values = m_raster.values(span);
    alignas(alignment) float u[rowsAtOnce * pieceLength];
    alignas(alignment) float v[rowsAtOnce * pieceLength];
    for (int row = 0; row < rows; ++row) {
        kernels.interpolate(alongRow(values.u, y + row), x, count, u + row * count);
        kernels.interpolate(alongRow(values.v, y + row), x, count, v + row * count);
    }
    m_positionKey.kernel(
        m_positionKey.record.bytes.data(), {u, v, rows * count},
        {positionX, positionY, static_cast<float>(window.width), static_cast<float>(window.height)});
}

void CDrawnRange::pack(std::ptrdiff_t slot, int count, const RowKernels& kernels, const float* positionX,
                       const float* positionY, std::span<std::uint64_t> tiles, bool areInside) noexcept {
    const SampledWindow& window = m_positionKey.window;
    GroupBox boxes[pieceLength / groupLength];
    kernels.pack({positionX, positionY, count, window.width, window.height, m_positionKey.isBounded,
                  static_cast<std::int32_t>(window.pitch), elementsOf<std::int32_t>(m_offsets) + slot,
                  elementsOf<std::uint16_t>(m_fractions) + slot, tiles.empty() ? nullptr : boxes, areInside});
    if (!tiles.empty())
        touchTiles(window, boxes, offsets() + slot, count, tiles);
}

void CDrawnRange::evaluateLayers(int band, const RowKernels& kernels,
                                 std::span<std::uint64_t> tiles) noexcept {
    const TableView& tables = m_positionKey.tables;
    const SampledWindow& window = m_positionKey.window;
    const TableGrid grid(m_positionKey.record, tables);
    const int firstRow = std::max(m_raster.top(), band * bandHeight);
    const int endRow = std::min(m_raster.bottom(), (band + 1) * bandHeight);
    alignas(alignment) float x[rowsAtOnce * pieceLength];
    alignas(alignment) float y[rowsAtOnce * pieceLength];
    m_raster.forEachPiece(band, [&](const Span& span, int row, int column, int count) {
        // A camera's sines and cosines are worth some rows of a rectangle, whose pieces follow one another.
        const int step = m_raster.isRectangle() ? (row - firstRow) % rowsAtOnce : 0;
        if (step == 0) {
            const int rows = m_raster.isRectangle() ? std::min(rowsAtOnce, endRow - row) : 1;
            project(span, row, rows, column, count, kernels, x, y);
        }
        const std::ptrdiff_t slot = m_raster.slotOf(span, row, column);
        // Of several, most see nothing here.
        const bool isOfSeveral = tables.layers > 1;
        const CGridBox box(x + step * count, y + step * count, isOfSeveral ? count : 0);
        SeenLayers seen;
        for (int layer = 0; layer < tables.layers; ++layer) {
            const TableRow places{x + step * count,
                                  y + step * count,
                                  count,
                                  tables.texels,
                                  tables.pitch,
                                  tables.columns,
                                  tables.rows,
                                  grid.scaleX,
                                  grid.scaleY,
                                  grid.originX,
                                  grid.originY + grid.nextTable * static_cast<float>(layer),
                                  static_cast<float>(window.width),
                                  static_cast<float>(window.height),
                                  nullptr,
                                  nullptr,
                                  nullptr};
            if (isOfSeveral && box.isBlind(places))
                continue;
            const TableWeights weights = lookUpPiece(places, layer, slot, kernels, tiles);
            const auto bit = static_cast<std::uint8_t>(1U << static_cast<unsigned>(layer));
            if (weights != TableWeights::none)
                seen.layers |= bit;
            if (weights == TableWeights::full)
                seen.full |= bit;
        }
        m_layers.seen(slot) = seen;
    });
}

TableWeights CDrawnRange::lookUpPiece(TableRow row, int layer, std::ptrdiff_t slot, const RowKernels& kernels,
                                      std::span<std::uint64_t> tiles) noexcept {
    const SampledWindow& window = m_positionKey.window;
    const CTableLayers::Layer target = m_layers.at(layer, slot);
    alignas(alignment) float positionX[pieceLength];
    alignas(alignment) float positionY[pieceLength];
    row.positionX = positionX;
    row.positionY = positionY;
    row.weights = target.weights;
    const TableWeights weights = kernels.lookUp(row);
    if (weights == TableWeights::none)
        return weights;
    GroupBox boxes[pieceLength / groupLength];
    kernels.pack({positionX, positionY, row.count, window.width, window.height, m_positionKey.isBounded,
                  static_cast<std::int32_t>(window.pitch), target.offsets, target.fractions, boxes});
    touchTiles(window, boxes, target.offsets, row.count, tiles);
    return weights;
}

bool CDrawnRange::isStraightBlock(const Block& block) const {
    for (int row = 0; row < block.rows; ++row) {
        const std::ptrdiff_t slot = m_raster.slotOf(block) + row * m_raster.slotStep(block);
        const std::int32_t* const pixels = offsets() + slot;
        const std::uint16_t* const shares = fractions() + slot;
        for (int i = 0; i < block.columns; ++i) {
            if (shares[i] != 0 || pixels[i] < 0 || pixels[i] != pixels[0] + 4 * i)
                return false;
        }
    }
    return true;
}

} // namespace tarvo::render::software
