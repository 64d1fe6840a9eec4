#pragma once

#include "diagnostics/ObjectLog.h"
#include "render/FrameFormat.h"
#include "render/RenderDevice.h"

#include <atomic>
#include <cstddef>
#include <span>

namespace tarvo::render {

/// Writes the rendered picture into an output buffer while it is mapped, then shows it to an observer.
class COutputDelivery final : public IMappedRowsVisitor {
public:
    /// All of it stays with the caller, for as long as the object lives.
    COutputDelivery(const OutputFormat& format, std::span<std::byte> output, IMappedRowsVisitor* observer,
                    const diagnostics::ObjectLog& log)
        : m_format(format), m_output(output), m_observer(observer), m_log(log) {}

    /// E_FAIL when nothing could be delivered: the buffer is too short for the picture and then untouched, or
    /// its format is one that nothing can be converted to, which is logged, or the picture is too small for
    /// YV12. The observer sees the picture all the same; what it answers changes nothing.
    HRESULT visit(const MappedRows& rows) override;
    bool takesRowsAlone() const override { return m_observer == nullptr; }
    /// The output buffer, for RGB32 that need not be cut off; what lies between its rows is left alone.
    WritableRows rowsToFill(int width, int height) noexcept override;
    void rowsFinished(const MappedRows& picture, int first, int end) noexcept override;

private:
    bool hasRoomForRgb32(int width, int height) const;
    HRESULT deliver(const MappedRows& rows) const;
    HRESULT deliverRows(const MappedRows& rows, int first, int end) const;
    HRESULT deliverRgb32(const MappedRows& rows, int first, int end) const;
    HRESULT deliverYv12(const MappedRows& rows, int first, int end) const;

    const OutputFormat& m_format;
    std::span<std::byte> m_output;
    IMappedRowsVisitor* m_observer;
    const diagnostics::ObjectLog& m_log;
    std::atomic<int> m_rowsDelivered{0};
};

} // namespace tarvo::render
