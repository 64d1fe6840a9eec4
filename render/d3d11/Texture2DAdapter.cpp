#include "render/d3d11/Texture2DAdapter.h"

#include "render/d3d11/FailureTrace.h"
#include "render/d3d11/Upload.h"

#include <utility>

namespace tarvo::render::d3d11 {

PlaneRecords planeRecordsOf(const InputFormat& input) {
    PlaneRecords records{};
    for (std::size_t i = 0; i < planeCount; ++i) {
        const PlaneFormat plane = yv12Plane(input, static_cast<int>(i));
        records[i] = {plane.width,
                      plane.height,
                      static_cast<std::uint32_t>(planeFormat.format),
                      static_cast<std::uint32_t>(planeFormat.usage),
                      planeFormat.bindFlags,
                      planeFormat.cpuAccessFlags,
                      plane.strideBytes,
                      plane.planeBytes,
                      1};
    }
    return records;
}

CTexture2DAdapter::CTexture2DAdapter(com::ComPtr<ID3D11Device> device,
                                     com::ComPtr<ID3D11DeviceContext> context, diagnostics::ObjectLog log)
    : m_device(std::move(device)), m_context(std::move(context)), m_log(log) {}

HRESULT CTexture2DAdapter::InitializeTextures(const PlaneRecords& records) {
    const FailureTrace trace{m_log, "CTexture2DAdapter::InitializeTextures()"};
    m_planes = {};
    std::array<SurfaceObjects, planeCount> planes;
    for (std::size_t i = 0; i < planeCount; ++i) {
        const PlaneRecord& record = records[i];
        const TextureFormat format{static_cast<DXGI_FORMAT>(record.format),
                                   static_cast<D3D11_USAGE>(record.usage), record.bindFlags,
                                   record.cpuAccessFlags};
        RETURN_IF_FAILED_TRACED(trace, createSurface(m_log, m_device.get(), record.width, record.height,
                                                     format, SurfaceView::shaderResource, planes[i]));
    }
    m_planes = std::move(planes);
    return S_OK;
}

HRESULT CTexture2DAdapter::UpdateResources(std::size_t plane, const SourceRows& rows) {
    const FailureTrace trace{m_log, "CTexture2DAdapter::UpdateResources()"};
    RETURN_IF_FAILED_TRACED(trace, uploadRows(*m_context, m_planes[plane], rows));
    return S_OK;
}

} // namespace tarvo::render::d3d11
