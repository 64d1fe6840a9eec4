#pragma once

#include "com/ComPtr.h"
#include "diagnostics/ObjectLog.h"
#include "platform/Direct3D11Types.h"

namespace tarvo::render::d3d11 {

/// What distinguishes the textures; all have one mip level, one array slice and a single sample.
struct TextureFormat {
    DXGI_FORMAT format;
    D3D11_USAGE usage;
    UINT bindFlags;
    UINT cpuAccessFlags;
};

/// Drawn to by the passes.
inline constexpr TextureFormat targetFormat{DXGI_FORMAT_B8G8R8A8_UNORM, D3D11_USAGE_DEFAULT,
                                            D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_RENDER_TARGET, 0};
/// Looked at by the passes, written by us or by a copy.
inline constexpr TextureFormat pictureFormat{DXGI_FORMAT_B8G8R8A8_UNORM, D3D11_USAGE_DYNAMIC,
                                             D3D11_BIND_SHADER_RESOURCE, D3D11_CPU_ACCESS_WRITE};
inline constexpr TextureFormat readBackFormat{DXGI_FORMAT_B8G8R8A8_UNORM, D3D11_USAGE_STAGING, 0,
                                              D3D11_CPU_ACCESS_READ};
inline constexpr TextureFormat planeFormat{DXGI_FORMAT_R8_UNORM, D3D11_USAGE_DYNAMIC,
                                           D3D11_BIND_SHADER_RESOURCE, D3D11_CPU_ACCESS_WRITE};
inline constexpr TextureFormat lookupFormat{DXGI_FORMAT_R16G16B16A16_UNORM, D3D11_USAGE_DYNAMIC,
                                            D3D11_BIND_SHADER_RESOURCE, D3D11_CPU_ACCESS_WRITE};

/// Makes a texture and what is asked for of it; a parameter that is not null becomes what was made. The
/// shader-resource view shows the whole texture, the render-target view is the default one. A failure is
/// logged and leaves the parameters as they were; E_INVALIDARG when there is no device or nothing is asked
/// for.
HRESULT CreateTexture2D(const diagnostics::ObjectLog& log, ID3D11Device* device, UINT width, UINT height,
                        const TextureFormat& format, com::ComPtr<ID3D11Texture2D>* texture,
                        com::ComPtr<ID3D11ShaderResourceView>* view,
                        com::ComPtr<ID3D11RenderTargetView>* target);

/// What is kept for a surface. No surface is both looked at and drawn to, so none ever has to be taken from
/// the one end of the pipeline before it is bound to the other.
struct SurfaceObjects {
    com::ComPtr<ID3D11Resource> resource;
    com::ComPtr<ID3D11ShaderResourceView> view;
    com::ComPtr<ID3D11RenderTargetView> target;
    DXGI_FORMAT format = DXGI_FORMAT_UNKNOWN; ///< unknown: a buffer of words
    UINT width = 0;                           ///< texels or words
    UINT height = 0;

    bool isSameKindAs(const SurfaceObjects& other) const {
        return format == other.format && width == other.width && height == other.height;
    }
    std::size_t rowBytes() const;
};

enum class SurfaceView { none, shaderResource, renderTarget };

/// A texture as a surface; CreateTexture2D's failures.
HRESULT createSurface(const diagnostics::ObjectLog& log, ID3D11Device* device, UINT width, UINT height,
                      const TextureFormat& format, SurfaceView view, SurfaceObjects& surface);

} // namespace tarvo::render::d3d11
