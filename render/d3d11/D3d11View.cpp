// What CD3d11Device makes anew whenever the view changes.

#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/FailureTrace.h"
#include "render/d3d11/ProgramInputs.h"

#include <cstring>
#include <utility>

namespace tarvo::render::d3d11 {
namespace {

constexpr auto excludeSlot = static_cast<std::size_t>(ConstantSlot::exclude);

} // namespace

HRESULT CD3d11Device::CreateExcludeCBuffer(const ExcludeConstants& constants, CConstantRecord& record) {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateExcludeCBuffer()"};
    RETURN_IF_FAILED_TRACED(
        trace, record.create(*m_held.device, sizeof(constants), D3D11_USAGE_DYNAMIC, recordBytes(constants)));
    return S_OK;
}

HRESULT CD3d11Device::CreateExcludeRectTexture(const geometry::PixelBox& box, SurfaceObjects& surface) {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateExcludeRectTexture()"};
    if (box.isEmpty())
        return S_OK;
    RETURN_IF_FAILED_TRACED(trace, createSurface(m_log, m_held.device.get(), static_cast<UINT>(box.width()),
                                                 static_cast<UINT>(box.height()), pictureFormat,
                                                 SurfaceView::shaderResource, surface));
    return S_OK;
}

HRESULT CD3d11Device::createVertexBuffer(std::span<const geometry::Vertex> vertices, D3D11_USAGE usage,
                                         com::ComPtr<ID3D11Buffer>& buffer) {
    const FailureTrace trace{m_log, "CDewarpingTransform::InitDirect3D()"};
    RETURN_IF_FAILED_TRACED(trace, createBuffer(*m_held.device, std::as_bytes(vertices), usage,
                                                D3D11_BIND_VERTEX_BUFFER, buffer));
    return S_OK;
}

HRESULT CD3d11Device::geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) {
    if (!isOpen())
        return E_FAIL;
    com::ComPtr<ID3D11Buffer> newVertices;
    CConstantRecord newRecord;
    SurfaceObjects newArea;
    RETURN_IF_FAILED(createVertexBuffer(vertices, D3D11_USAGE_DEFAULT, newVertices));
    RETURN_IF_FAILED(CreateExcludeCBuffer(exclude.constants, newRecord));
    RETURN_IF_FAILED(CreateExcludeRectTexture(exclude.box, newArea));

    m_held.bindings.unbind(m_held.viewVertices.get());
    m_held.viewVertices = std::move(newVertices);
    m_held.bindings.unbind(m_held.pixelRecords[excludeSlot].buffer());
    m_held.pixelRecords[excludeSlot] = std::move(newRecord);
    SurfaceObjects& area = ownObjectsOf(Surface::excludeArea);
    m_held.bindings.unbind(area.view.get());
    area = std::move(newArea);
    return S_OK;
}

HRESULT CD3d11Device::overviewMarker(const geometry::OverviewMarkerVertices& vertices) {
    if (!isOpen())
        return E_FAIL;
    // It follows the view, perhaps in every frame: made once, then written.
    if (!m_held.markerVertices)
        return createVertexBuffer(vertices, D3D11_USAGE_DYNAMIC, m_held.markerVertices);
    D3D11_MAPPED_SUBRESOURCE mapped{};
    RETURN_IF_FAILED(
        m_held.context->Map(m_held.markerVertices.get(), 0, D3D11_MAP_WRITE_DISCARD, 0, &mapped));
    std::memcpy(mapped.pData, vertices.data(), sizeof(vertices));
    m_held.context->Unmap(m_held.markerVertices.get(), 0);
    return S_OK;
}

bool CD3d11Device::hasProgram(ShaderProgram program) const {
    return !bytecodeOf(m_findBytecode, program).empty();
}

HRESULT CD3d11Device::prepare(ShaderProgram program, ConstantSlot slot,
                              std::span<const std::byte> constants) {
    releaseProgram();
    if (!isOpen())
        return E_FAIL;
    const ProgramInputs inputs = inputsOf(program);
    // A record in another slot would leave the program without one.
    if (inputs.viewRecord == ConstantSlot::none || inputs.viewRecord != slot)
        return E_INVALIDARG;
    com::ComPtr<ID3D11PixelShader> shader;
    RETURN_IF_FAILED(createPixelShader(*m_held.device, m_findBytecode, program, shader));
    const auto index = static_cast<std::size_t>(slot);
    CConstantRecord& record = m_held.pixelRecords[index];
    RETURN_IF_FAILED(record.create(*m_held.device, inputs.viewRecordBytes, D3D11_USAGE_DYNAMIC, constants));
    m_held.prepared = {program, std::move(shader), slot};
    m_held.bindings.pixelConstants(index, record.buffer());
    return S_OK;
}

void CD3d11Device::releaseProgram() {
    PreparedProgram& prepared = m_held.prepared;
    if (!prepared.program.has_value())
        return;
    CConstantRecord& record = m_held.pixelRecords[static_cast<std::size_t>(prepared.slot)];
    m_held.bindings.unbind(prepared.shader.get());
    m_held.bindings.unbind(record.buffer());
    record = {};
    prepared = {};
}

HRESULT CD3d11Device::lookup(int width, int height) {
    if (!isOpen())
        return E_FAIL;
    if (width <= 0 || height <= 0)
        return E_INVALIDARG;
    SurfaceObjects& surface = ownObjectsOf(Surface::lookup);
    const auto newWidth = static_cast<UINT>(width);
    const auto newHeight = static_cast<UINT>(height);
    if (surface.resource && surface.width == newWidth && surface.height == newHeight)
        return S_OK;
    releaseLookup();
    return createSurface(m_log, m_held.device.get(), newWidth, newHeight, lookupFormat,
                         SurfaceView::shaderResource, surface);
}

void CD3d11Device::releaseLookup() {
    SurfaceObjects& surface = ownObjectsOf(Surface::lookup);
    m_held.bindings.unbind(surface.view.get());
    surface = {};
}

} // namespace tarvo::render::d3d11
