#pragma once

#include "diagnostics/ObjectLog.h"
#include "render/RenderDevice.h"
#include "render/software/AlignedBytes.h"
#include "render/software/DrawQueue.h"
#include "render/software/Surfaces.h"
#include "render/software/ThreadPool.h"

#include <memory>
#include <optional>

namespace tarvo::render::software {

/// Draws without a graphics platform.
///
/// What is asked of the output is queued and done at readBack(), or before what it looks at changes; what is
/// asked of the surfaces of the input's side is only noted, and done for those tiles which the output looks
/// at. What a reader takes row by row is handed over, or drawn where the reader wants it, and drawn again
/// should somebody else ask for it; it is gone once the next picture is begun, though that may fail. An input
/// picture that is uploaded in between as lent waits for that, or for the next pass or copy, and is then
/// written over the one before, unless another surface shows that one; of one that cannot wait, the output
/// before is drawn into memory first. Once the largest frame has gone through, a frame allocates nothing.
/// Nothing that a verb throws inside comes out: without memory it answers E_OUTOFMEMORY, and the verbs
/// without an answer leave the surface as it was.
class CSoftwareDevice final : public IRenderDevice {
public:
    /// Threads of `pool`, or of the pool that all devices of the process share, which is held while the
    /// device is open. `memory` outlives the device.
    explicit CSoftwareDevice(diagnostics::ObjectLog log, std::shared_ptr<CThreadPool> pool = nullptr,
                             const MemorySource& memory = systemMemory);
    ~CSoftwareDevice() override;
    CSoftwareDevice(const CSoftwareDevice&) = delete;
    CSoftwareDevice& operator=(const CSoftwareDevice&) = delete;

    bool isAvailable() override { return true; }
    HRESULT open(const InputFormat& input, const OutputFormat& output) override;
    HRESULT openStates() override;
    bool isOpen() const override { return m_frame != nullptr; }
    DeviceKind kind() const override { return DeviceKind::software; }

    HRESULT geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) override;
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) override;

    bool hasProgram(ShaderProgram program) const override;
    HRESULT prepare(ShaderProgram program, ConstantSlot slot, std::span<const std::byte> constants) override;
    void releaseProgram() override;

    HRESULT lookup(int width, int height) override;
    void releaseLookup() override;

    HRESULT upload(Surface surface, const SourceRows& rows) override;
    void keepInput() override;
    void clear(Surface target, const std::array<float, 4>& colour) override;
    HRESULT draw(const Pass& pass) override;
    void copy(Surface from, Surface to) override;
    void copyBox(Surface from, const geometry::PixelBox& box, Surface to) override;
    void flush() override;
    HRESULT readBack(IMappedRowsVisitor& visitor) override;
    void close() override;

    /// Of the open device.
    WorkCounters counters() const;

private:
    /// Everything that an open device holds.
    struct Frame;

    template<typename Verb>
    HRESULT guarded(Verb verb) noexcept;
    HRESULT failed(HRESULT result, int line) const noexcept;
    /// Puts the input picture that waits, if there is one, in its place. What can be drawn again is first
    /// brought into memory.
    void takeIn();
    /// The same for one that cannot wait until the next output is begun.
    void takeInEarly();
    HRESULT drawQueued(const Pass& pass);
    /// The usual passes over the whole conversion target only change what it shows; false for any other.
    bool note(const Pass& pass, const QueuedDraw& draw, const CRaster& raster);
    /// Throws std::bad_alloc.
    HRESULT copyPixels(Surface from, const geometry::PixelBox& box, Surface to);
    /// Where a picture is drawn that is handed over: into the reader's own memory, if there is some and it is
    /// only written to, or into rows that stay in the cache.
    Destination destinationFor(IMappedRowsVisitor& reader) noexcept;
    /// `observer` is told of rows as they are finished.
    HRESULT execute(IMappedRowsVisitor* observer = nullptr) noexcept;
    /// The same, and brings into memory what was only handed over. E_FAIL when the picture is lost.
    HRESULT settle() noexcept;

    diagnostics::ObjectLog m_log;
    std::shared_ptr<CThreadPool> m_givenPool;
    const MemorySource& m_memory;
    std::unique_ptr<Frame> m_frame;
};

} // namespace tarvo::render::software
