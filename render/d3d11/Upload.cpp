#include "render/d3d11/Upload.h"

#include "com/Trace.h"
#include "render/d3d11/RowCopy.h"

#include <algorithm>

namespace tarvo::render::d3d11 {

HRESULT uploadRows(ID3D11DeviceContext& context, const SurfaceObjects& surface, const SourceRows& rows) {
    if (!surface.resource)
        return E_FAIL;
    D3D11_MAPPED_SUBRESOURCE mapped{};
    RETURN_IF_FAILED(context.Map(surface.resource.get(), 0, D3D11_MAP_WRITE_DISCARD, 0, &mapped));
    // The pitch of a buffer means nothing, and it has but one row.
    const std::size_t pitch = surface.height == 1 ? surface.rowBytes() : mapped.RowPitch;
    copyRows(rows, {static_cast<std::byte*>(mapped.pData), pitch, std::min(surface.rowBytes(), pitch),
                    static_cast<int>(surface.height)});
    context.Unmap(surface.resource.get(), 0);
    return S_OK;
}

} // namespace tarvo::render::d3d11
