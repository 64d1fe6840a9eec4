#include "render/d3d11/Surfaces.h"

#include "render/d3d11/FailureTrace.h"

#include <utility>

namespace tarvo::render::d3d11 {
namespace {

D3D11_TEXTURE2D_DESC description(UINT width, UINT height, const TextureFormat& format) {
    D3D11_TEXTURE2D_DESC result{};
    result.Width = width;
    result.Height = height;
    result.MipLevels = 1;
    result.ArraySize = 1;
    result.Format = format.format;
    result.SampleDesc.Count = 1;
    result.SampleDesc.Quality = 0;
    result.Usage = format.usage;
    result.BindFlags = format.bindFlags;
    result.CPUAccessFlags = format.cpuAccessFlags;
    result.MiscFlags = 0;
    return result;
}

D3D11_SHADER_RESOURCE_VIEW_DESC viewDescription(DXGI_FORMAT format) {
    D3D11_SHADER_RESOURCE_VIEW_DESC result{};
    result.Format = format;
    result.ViewDimension = D3D11_SRV_DIMENSION_TEXTURE2D;
    result.Texture2D.MostDetailedMip = 0;
    result.Texture2D.MipLevels = 1;
    return result;
}

std::size_t texelBytes(DXGI_FORMAT format) {
    switch (format) {
    case DXGI_FORMAT_R8_UNORM:
        return 1;
    case DXGI_FORMAT_R16G16B16A16_UNORM:
        return 8;
    default:
        return 4;
    }
}

} // namespace

HRESULT CreateTexture2D(const diagnostics::ObjectLog& log, ID3D11Device* device, UINT width, UINT height,
                        const TextureFormat& format, com::ComPtr<ID3D11Texture2D>* texture,
                        com::ComPtr<ID3D11ShaderResourceView>* view,
                        com::ComPtr<ID3D11RenderTargetView>* target) {
    const FailureTrace trace{log, "CreateTexture2D()"};
    if (device == nullptr || (texture == nullptr && view == nullptr && target == nullptr))
        return TRACE_IF_FAILED(trace, E_INVALIDARG);

    const D3D11_TEXTURE2D_DESC textureDescription = description(width, height, format);
    com::ComPtr<ID3D11Texture2D> newTexture;
    RETURN_IF_FAILED_TRACED(trace, device->CreateTexture2D(&textureDescription, nullptr, newTexture.put()));
    com::ComPtr<ID3D11ShaderResourceView> newView;
    if (view != nullptr) {
        const D3D11_SHADER_RESOURCE_VIEW_DESC shown = viewDescription(format.format);
        RETURN_IF_FAILED_TRACED(trace,
                                device->CreateShaderResourceView(newTexture.get(), &shown, newView.put()));
    }
    if (target != nullptr) {
        com::ComPtr<ID3D11RenderTargetView> newTarget;
        RETURN_IF_FAILED_TRACED(trace,
                                device->CreateRenderTargetView(newTexture.get(), nullptr, newTarget.put()));
        *target = std::move(newTarget);
    }
    if (view != nullptr)
        *view = std::move(newView);
    if (texture != nullptr)
        *texture = std::move(newTexture);
    return S_OK;
}

std::size_t SurfaceObjects::rowBytes() const {
    return width * texelBytes(format);
}

HRESULT createSurface(const diagnostics::ObjectLog& log, ID3D11Device* device, UINT width, UINT height,
                      const TextureFormat& format, SurfaceView view, SurfaceObjects& surface) {
    com::ComPtr<ID3D11Texture2D> texture;
    SurfaceObjects made;
    RETURN_IF_FAILED(CreateTexture2D(log, device, width, height, format, &texture,
                                     view == SurfaceView::shaderResource ? &made.view : nullptr,
                                     view == SurfaceView::renderTarget ? &made.target : nullptr));
    made.resource = std::move(texture);
    made.format = format.format;
    made.width = width;
    made.height = height;
    surface = std::move(made);
    return S_OK;
}

} // namespace tarvo::render::d3d11
