#pragma once

#include "render/software/BandRows.h"
#include "render/software/DrawnRanges.h"
#include "render/software/SoftwareDevice.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>

namespace tarvo::render::software {

/// What an open device holds, and what its passes mean in terms of that.
struct CSoftwareDevice::Frame {
    Frame(const InputFormat& input, const OutputFormat& output, std::shared_ptr<CThreadPool> thePool,
          const MemorySource& memory)
        : pool(std::move(thePool)), surfaces(input, output, memory), ranges(memory),
          bandRows(pool->threadCount(), static_cast<std::size_t>(surfaces.output().pitch) * bandHeight,
                   memory) {}

    /// What a pass draws, and the vertices that it covers its pixels with; with a failure none of it means
    /// anything.
    HRESULT find(const Pass& pass, QueuedDraw& draw, RasterKey& key,
                 std::span<const geometry::Vertex>& corners, std::span<const std::uint32_t>& corner) const;

    /// Whether nothing but what can be drawn again is in the way of writing the next input picture over the
    /// one that is there.
    bool isInputPictureFree() const;

    std::shared_ptr<CThreadPool> pool;
    CSurfaces surfaces;
    CDrawnRanges ranges;
    CBandRows bandRows;
    CDrawQueue queue;
    bool isPictureInMemory = true;   ///< of the output target
    bool wasPictureAskedFor = false; ///< once more than it was drawn
    /// The next input picture, not in its place yet: the output may still be asked for that was drawn from
    /// the one there. While it waits, nothing is queued but what was done apart.
    std::optional<SourceRows> waitingPicture;
    WorkCounters counters;
    HRESULT failure = S_OK;               ///< of what was queued since the last read-back
    std::optional<ShaderProgram> program; ///< prepared
    bool hasVertices = false;
    bool hasMarker = false;
    std::uint64_t vertexVersion = 0;
    std::uint64_t markerVersion = 0;
    geometry::ViewVertices vertices{};
    geometry::OverviewMarkerVertices marker{};
    geometry::OverviewDiscIndices indices = geometry::overviewDiscIndices();

private:
    HRESULT findRange(const DrawRange& range, std::span<const geometry::Vertex>& corners,
                      std::span<const std::uint32_t>& corner) const;
    HRESULT findRecord(const Pass& pass, RecordBytes& record) const;
    HRESULT findTextures(const Pass& pass, QueuedDraw& draw) const;
};

} // namespace tarvo::render::software
