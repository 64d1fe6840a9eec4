#pragma once

#include "com/ComPtr.h"
#include "platform/Direct3D11Types.h"

namespace tarvo::render::d3d11 {

/// Mixes a program's colour into the target by its alpha, which also becomes the target's.
HRESULT createBlendState(ID3D11Device& device, com::ComPtr<ID3D11BlendState>& state);

/// Linear, and the edge's colour beyond it: anisotropic, with no more than one sample.
HRESULT createSampler(ID3D11Device& device, com::ComPtr<ID3D11SamplerState>& sampler);

} // namespace tarvo::render::d3d11
