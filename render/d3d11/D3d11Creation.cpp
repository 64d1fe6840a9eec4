// What CD3d11Device makes once, when it is opened.

#include "geometry/ViewLayout.h"
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/FailureTrace.h"

namespace tarvo::render::d3d11 {

HRESULT CD3d11Device::CreateTextures() {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateTextures()"};
    ID3D11Device* const device = m_held.device.get();
    const auto inputWidth = static_cast<UINT>(m_held.input.width);
    const auto inputHeight = static_cast<UINT>(m_held.input.height);
    const auto outputWidth = static_cast<UINT>(m_held.output.width);
    const auto outputHeight = static_cast<UINT>(m_held.output.height);

    RETURN_IF_FAILED_TRACED(trace,
                            createSurface(m_log, device, outputWidth, outputHeight, targetFormat,
                                          SurfaceView::renderTarget, ownObjectsOf(Surface::outputTarget)));
    RETURN_IF_FAILED_TRACED(trace, createSurface(m_log, device, inputWidth, inputHeight, targetFormat,
                                                 SurfaceView::renderTarget,
                                                 ownObjectsOf(Surface::conversionTarget)));
    for (const Surface surface : {Surface::inputPicture, Surface::maskedInput}) {
        RETURN_IF_FAILED_TRACED(trace, createSurface(m_log, device, inputWidth, inputHeight, pictureFormat,
                                                     SurfaceView::shaderResource, ownObjectsOf(surface)));
    }
    // The second one has always been made and never used.
    for (SurfaceObjects& surface : m_held.readBack) {
        RETURN_IF_FAILED_TRACED(trace, createSurface(m_log, device, outputWidth, outputHeight, readBackFormat,
                                                     SurfaceView::none, surface));
    }
    if (m_held.input.format == PixelFormat::yv12) {
        m_held.planes = std::make_unique<CTexture2DAdapter>(m_held.device, m_held.context, m_log);
        RETURN_IF_FAILED_TRACED(trace, m_held.planes->InitializeTextures(planeRecordsOf(m_held.input)));
    }
    return S_OK;
}

HRESULT CD3d11Device::CreateStructuredBuffer() {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateStructuredBuffer()"};
    constexpr UINT elementBytes = 4;
    // Whole elements, so that an odd end of a frame is not lost.
    const UINT elementCount =
        m_held.input.frameBytes / elementBytes + (m_held.input.frameBytes % elementBytes != 0 ? 1U : 0U);
    D3D11_BUFFER_DESC description{};
    description.ByteWidth = elementCount * elementBytes;
    description.Usage = D3D11_USAGE_DYNAMIC;
    description.BindFlags = D3D11_BIND_SHADER_RESOURCE;
    description.CPUAccessFlags = D3D11_CPU_ACCESS_WRITE;
    description.MiscFlags = D3D11_RESOURCE_MISC_BUFFER_STRUCTURED;
    description.StructureByteStride = elementBytes;
    com::ComPtr<ID3D11Buffer> buffer;
    RETURN_IF_FAILED_TRACED(trace, m_held.device->CreateBuffer(&description, nullptr, buffer.put()));

    D3D11_SHADER_RESOURCE_VIEW_DESC shown{};
    shown.Format = DXGI_FORMAT_UNKNOWN;
    shown.ViewDimension = D3D11_SRV_DIMENSION_BUFFER;
    shown.Buffer.FirstElement = 0;
    shown.Buffer.NumElements = elementCount;
    SurfaceObjects& surface = ownObjectsOf(Surface::packedInput);
    RETURN_IF_FAILED_TRACED(
        trace, m_held.device->CreateShaderResourceView(buffer.get(), &shown, surface.view.put()));
    surface.resource = std::move(buffer);
    surface.format = DXGI_FORMAT_UNKNOWN;
    surface.width = elementCount;
    surface.height = 1;
    return S_OK;
}

HRESULT CD3d11Device::CreateShadersAndInputLayout() {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateShadersAndInputLayout()"};
    RETURN_IF_FAILED_TRACED(trace, m_held.shaders.create(*m_held.device, m_findBytecode));
    m_held.context->IASetInputLayout(m_held.shaders.inputLayout());
    return S_OK;
}

HRESULT CD3d11Device::CreateIndexBuffer() {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateIndexBuffer()"};
    const geometry::OverviewDiscIndices indices = geometry::overviewDiscIndices();
    RETURN_IF_FAILED_TRACED(trace,
                            createBuffer(*m_held.device, std::as_bytes(std::span(indices)),
                                         D3D11_USAGE_DEFAULT, D3D11_BIND_INDEX_BUFFER, m_held.indices));
    m_held.context->IASetIndexBuffer(m_held.indices.get(), DXGI_FORMAT_R32_UINT, 0);
    return S_OK;
}

HRESULT CD3d11Device::createVertexRecord() {
    const FailureTrace trace{m_log, "CDewarpingTransform::InitDirect3D()"};
    RETURN_IF_FAILED_TRACED(trace,
                            createBuffer(*m_held.device, recordBytes(mirroredRows), D3D11_USAGE_DEFAULT,
                                         D3D11_BIND_CONSTANT_BUFFER, m_held.vertexRecord));
    ID3D11Buffer* const record = m_held.vertexRecord.get();
    m_held.context->VSSetConstantBuffers(0, 1, &record);
    return S_OK;
}

HRESULT CD3d11Device::CreateYUY2PSCBuffer() {
    const FailureTrace trace{m_log, "CDewarpingTransform::CreateYUY2PSCBuffer()"};
    const Yuy2Constants constants{static_cast<std::uint32_t>(m_held.input.width), {}};
    CConstantRecord& record = m_held.pixelRecords[static_cast<std::size_t>(ConstantSlot::width)];
    RETURN_IF_FAILED_TRACED(
        trace, record.create(*m_held.device, sizeof(constants), D3D11_USAGE_DEFAULT, recordBytes(constants)));
    return S_OK;
}

} // namespace tarvo::render::d3d11
