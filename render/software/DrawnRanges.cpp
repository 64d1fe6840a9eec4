#include "render/software/DrawnRanges.h"

namespace tarvo::render::software {

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
