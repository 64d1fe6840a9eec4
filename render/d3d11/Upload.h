#pragma once

#include "platform/Direct3D11Types.h"
#include "render/RenderDevice.h"
#include "render/d3d11/Surfaces.h"

namespace tarvo::render::d3d11 {

/// Replaces the contents of a dynamic surface as IRenderDevice::upload() says, while the device may still be
/// drawing from the old ones. The failure of mapping it, or E_FAIL for a surface that is not there.
HRESULT uploadRows(ID3D11DeviceContext& context, const SurfaceObjects& surface, const SourceRows& rows);

} // namespace tarvo::render::d3d11
