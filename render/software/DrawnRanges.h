#pragma once

#include "render/software/DrawnRange.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tarvo::render::software {

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

} // namespace tarvo::render::software
