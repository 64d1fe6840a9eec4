#pragma once

#include "diagnostics/ObjectLog.h"
#include "render/RenderDevice.h"
#include "render/reference/Surfaces.h"

#include <optional>

namespace tarvo::render::reference {

/// The plain truth, one pixel at a time, in the arithmetic of the shader programs: what faster devices are
/// held against.
///
/// Results beyond those of the interface: E_INVALIDARG for sizes that no surface can have (a YV12 frame of a
/// single row or column has no chroma), for a pass that does not feed its program what it reads or draws
/// vertices that are not there, E_FAIL for what is not there, E_OUTOFMEMORY. Before open() and after close()
/// every verb fails or does nothing.
class CReferenceDevice final : public IRenderDevice {
public:
    explicit CReferenceDevice(diagnostics::ObjectLog log);

    bool isAvailable() override { return true; }
    HRESULT open(const InputFormat& input, const OutputFormat& output) override;
    HRESULT openStates() override;
    bool isOpen() const override { return m_isOpen; }
    DeviceKind kind() const override { return DeviceKind::software; }

    HRESULT geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) override;
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) override;

    bool hasProgram(ShaderProgram program) const override;
    HRESULT prepare(ShaderProgram program, ConstantSlot slot, std::span<const std::byte> constants) override;
    void releaseProgram() override;

    HRESULT lookup(int width, int height) override;
    void releaseLookup() override;

    HRESULT upload(Surface surface, const SourceRows& rows) override;

    void clear(Surface target, const std::array<float, 4>& colour) override;
    HRESULT draw(const Pass& pass) override;
    void copy(Surface from, Surface to) override;
    void copyBox(Surface from, const geometry::PixelBox& box, Surface to) override;
    void flush() override {}

    HRESULT readBack(IMappedRowsVisitor& visitor) override;

    void close() override;

private:
    HRESULT drawPass(const Pass& pass);

    diagnostics::ObjectLog m_log;
    bool m_isOpen = false;
    CSurfaces m_surfaces;
    std::optional<geometry::ViewVertices> m_vertices;
    std::optional<geometry::OverviewMarkerVertices> m_marker;
    std::optional<ShaderProgram> m_prepared;
};

} // namespace tarvo::render::reference
