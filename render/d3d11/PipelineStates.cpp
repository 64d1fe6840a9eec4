#include "render/d3d11/PipelineStates.h"

#include <algorithm>
#include <limits>

namespace tarvo::render::d3d11 {

HRESULT createBlendState(ID3D11Device& device, com::ComPtr<ID3D11BlendState>& state) {
    D3D11_BLEND_DESC description{};
    D3D11_RENDER_TARGET_BLEND_DESC& target = description.RenderTarget[0];
    target.BlendEnable = TRUE;
    target.SrcBlend = D3D11_BLEND_SRC_ALPHA;
    target.DestBlend = D3D11_BLEND_INV_SRC_ALPHA;
    target.BlendOp = D3D11_BLEND_OP_ADD;
    target.SrcBlendAlpha = D3D11_BLEND_ONE;
    target.DestBlendAlpha = D3D11_BLEND_ZERO;
    target.BlendOpAlpha = D3D11_BLEND_OP_ADD;
    target.RenderTargetWriteMask = D3D11_COLOR_WRITE_ENABLE_ALL;
    return device.CreateBlendState(&description, state.put());
}

HRESULT createSampler(ID3D11Device& device, com::ComPtr<ID3D11SamplerState>& sampler) {
    D3D11_SAMPLER_DESC description{};
    description.Filter = D3D11_FILTER_ANISOTROPIC;
    description.AddressU = D3D11_TEXTURE_ADDRESS_CLAMP;
    description.AddressV = D3D11_TEXTURE_ADDRESS_CLAMP;
    description.AddressW = D3D11_TEXTURE_ADDRESS_CLAMP;
    description.MipLODBias = 0.0F;
    description.MaxAnisotropy = 1;
    description.ComparisonFunc = D3D11_COMPARISON_NEVER;
    std::ranges::fill(description.BorderColor, 1.0F);
    description.MinLOD = std::numeric_limits<float>::lowest();
    description.MaxLOD = std::numeric_limits<float>::max();
    return device.CreateSamplerState(&description, sampler.put());
}

} // namespace tarvo::render::d3d11
