#include "render/software/DrawnRange.h"

#include "render/software/TiledPicture.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace tarvo::render::software {
namespace {

constexpr int rowsPerTask = 8;
constexpr int mostTilesOfNeighbours = 6;
constexpr int everyTile = std::numeric_limits<int>::max();

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

void CDrawnRange::evaluate(CThreadPool& pool, const RowKernels& kernels) {
    std::fill(m_touched.begin(), m_touched.end(), std::uint8_t{0});
    m_isStraight = true;
    const int rows = m_raster.bottom() - m_raster.top();
    pool.run((rows + rowsPerTask - 1) / rowsPerTask, [&](int task) noexcept {
        const int first = m_raster.top() + task * rowsPerTask;
        const int end = std::min(first + rowsPerTask, m_raster.bottom());
        for (int y = first; y < end; ++y)
            evaluateRow(y, kernels);
    });
    m_tiles.clear(); // has room for all of them
    for (std::uint32_t tile = 0; tile < m_touched.size(); ++tile) {
        if (m_touched[tile] != 0)
            m_tiles.push_back(tile);
    }
    m_isEvaluated = true;
}

void CDrawnRange::evaluateRow(int y, const RowKernels& kernels) noexcept {
    const SampledWindow& window = m_positionKey.window;
    float u[pieceLength];
    float v[pieceLength];
    float positionX[pieceLength];
    float positionY[pieceLength];
    forEachPiece(m_raster, y, [&](const Span& span, int x, int count) {
        const VertexValues& values = m_raster.values(span);
        interpolate(values.u, x, y, count, u);
        interpolate(values.v, x, y, count, v);
        m_positionKey.kernel(
            m_positionKey.record.bytes.data(), {u, v, count},
            {positionX, positionY, static_cast<float>(window.width), static_cast<float>(window.height)});
        const std::ptrdiff_t slot = span.slot + (x - span.left);
        kernels.pack({positionX, positionY, count, window.width, window.height,
                      static_cast<std::int32_t>(window.pitch), elements<std::int32_t>(m_offsets) + slot,
                      elements<std::uint16_t>(m_fractions) + slot});
        touch(positionX, positionY, count);
        if (!isStraightPiece(slot, count))
            std::atomic_ref(m_isStraight).store(false, std::memory_order_relaxed);
    });
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

void CDrawnRange::touch(const float* x, const float* y, int count) noexcept {
    // The tiles of the box around a few neighbours are as good as always those that they look at; where the
    // projection tears neighbours apart, they are taken one by one.
    constexpr int neighbours = 16;
    for (int begin = 0; begin < count; begin += neighbours) {
        const int end = std::min(begin + neighbours, count);
        PositionBox box;
        for (int i = begin; i < end; ++i)
            box.include(x[i], y[i]);
        if (box.isEmpty() || touchBox(box, mostTilesOfNeighbours))
            continue;
        for (int i = begin; i < end; ++i) {
            PositionBox single;
            single.include(x[i], y[i]);
            if (!single.isEmpty())
                touchBox(single, everyTile);
        }
    }
}

bool CDrawnRange::touchBox(const PositionBox& box, int most) noexcept {
    const SampledWindow& window = m_positionKey.window;
    // The pixels around a position, one more than needed where rounding might decide; as a position beyond
    // the edge looks at the edge, it stays inside the window.
    const auto pixel = [](float position, float margin, int origin, int size) {
        return origin + static_cast<int>(std::clamp(position + margin, 0.0F, static_cast<float>(size - 1)));
    };
    const int left = pixel(box.left, -0.51F, window.left, window.width) / tileWidth;
    const int top = pixel(box.top, -0.51F, window.top, window.height) / tileHeight;
    const int right = pixel(box.right, 0.51F, window.left, window.width) / tileWidth;
    const int bottom = pixel(box.bottom, 0.51F, window.top, window.height) / tileHeight;
    if ((right - left + 1) * (bottom - top + 1) > most)
        return false;
    const int columns = tileColumns(window.pictureWidth);
    for (int row = top; row <= bottom; ++row) {
        for (int column = left; column <= right; ++column) {
            std::atomic_ref flag(m_touched[static_cast<std::size_t>(row * columns + column)]);
            // Reading first keeps the cache line shared between threads; they all write the same.
            if (flag.load(std::memory_order_relaxed) == 0)
                flag.store(1, std::memory_order_relaxed);
        }
    }
    return true;
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
        // Marked only once everything has its memory: what fails half-way is built again the next time.
        range->m_isEvaluated = false;
        range->m_positionKey = {};
        if (positions.kernel != nullptr) {
            growTo(range->m_offsets, range->m_raster.slotCount() * sizeof(std::int32_t), m_memory);
            growTo(range->m_fractions, range->m_raster.slotCount() * sizeof(std::uint16_t), m_memory);
            const auto tiles = static_cast<std::size_t>(tileColumns(positions.window.pictureWidth)) *
                               static_cast<std::size_t>(tileRows(positions.window.pictureHeight));
            range->m_touched.resize(tiles);
            range->m_tiles.reserve(tiles);
        }
        range->m_positionKey = positions;
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
