// What CD3d11Device moves between memory and surfaces, and from one surface to another.

#include "com/Trace.h"
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/Upload.h"

namespace tarvo::render::d3d11 {
namespace {

/// Gives mapped memory back whatever happens to it.
class CMapped {
public:
    CMapped(ID3D11DeviceContext& context, ID3D11Resource& resource)
        : m_context(context), m_resource(resource) {}
    ~CMapped() { m_context.Unmap(&m_resource, 0); }
    CMapped(const CMapped&) = delete;
    CMapped& operator=(const CMapped&) = delete;

private:
    ID3D11DeviceContext& m_context;
    ID3D11Resource& m_resource;
};

bool isInside(const geometry::PixelBox& box, const SurfaceObjects& surface) {
    return box.left >= 0 && box.top >= 0 && static_cast<UINT>(box.right) <= surface.width &&
           static_cast<UINT>(box.bottom) <= surface.height;
}

/// The number of a plane, or none.
std::optional<std::size_t> planeOf(Surface surface) {
    switch (surface) {
    case Surface::yPlane:
        return 0;
    case Surface::crPlane:
        return 1;
    case Surface::cbPlane:
        return 2;
    default:
        return std::nullopt;
    }
}

/// The failure itself or, where the device is gone for whatever reason, that it is: drivers that hang or fail
/// inside answer by other codes, and no call succeeds after them.
HRESULT lossBehind(HRESULT failure, ID3D11Device& device) {
    const bool isNamed = failure == DXGI_ERROR_DEVICE_REMOVED || failure == DXGI_ERROR_DEVICE_RESET;
    return isNamed || SUCCEEDED(device.GetDeviceRemovedReason()) ? failure : DXGI_ERROR_DEVICE_REMOVED;
}

} // namespace

const SurfaceObjects& CD3d11Device::objectsOf(Surface surface) const {
    static const SurfaceObjects nothing;
    const auto index = static_cast<std::size_t>(surface);
    if (const std::optional<std::size_t> plane = planeOf(surface))
        return m_held.planes ? m_held.planes->plane(*plane) : nothing;
    return index < m_held.surfaces.size() ? m_held.surfaces[index] : nothing;
}

HRESULT CD3d11Device::upload(Surface surface, const SourceRows& rows) {
    if (!isOpen() || !objectsOf(surface).resource)
        return E_FAIL;
    if (const std::optional<std::size_t> plane = planeOf(surface))
        return m_held.planes->UpdateResources(*plane, rows);
    switch (surface) {
    case Surface::inputPicture:
    case Surface::packedInput:
    case Surface::lookup:
        return uploadRows(*m_held.context, objectsOf(surface), rows);
    default:
        return E_INVALIDARG;
    }
}

void CD3d11Device::clear(Surface target, const std::array<float, 4>& colour) {
    if (ID3D11RenderTargetView* const view = objectsOf(target).target.get(); view != nullptr)
        m_held.context->ClearRenderTargetView(view, colour.data());
}

void CD3d11Device::copy(Surface from, Surface to) {
    const SurfaceObjects& source = objectsOf(from);
    const SurfaceObjects& target = objectsOf(to);
    if (from != to && source.resource && target.resource && source.isSameKindAs(target))
        m_held.context->CopyResource(target.resource.get(), source.resource.get());
}

void CD3d11Device::copyBox(Surface from, const geometry::PixelBox& box, Surface to) {
    const SurfaceObjects& source = objectsOf(from);
    const SurfaceObjects& target = objectsOf(to);
    if (from == to || !source.resource || !target.resource || source.format != target.format ||
        box.isEmpty() || !isInside(box, source) || !isInside({0, 0, box.width(), box.height()}, target))
        return;
    const D3D11_BOX region{static_cast<UINT>(box.left),  static_cast<UINT>(box.top),    0,
                           static_cast<UINT>(box.right), static_cast<UINT>(box.bottom), 1};
    m_held.context->CopySubresourceRegion(target.resource.get(), 0, 0, 0, 0, source.resource.get(), 0,
                                          &region);
}

void CD3d11Device::flush() {
    if (m_held.context)
        m_held.context->Flush();
}

HRESULT CD3d11Device::readBack(IMappedRowsVisitor& visitor) {
    if (!isOpen())
        return E_FAIL;
    const SurfaceObjects& output = objectsOf(Surface::outputTarget);
    ID3D11Resource& staging = *m_held.readBack[0].resource;
    m_held.context->CopyResource(&staging, output.resource.get());
    D3D11_MAPPED_SUBRESOURCE mapped{};
    if (const HRESULT result = m_held.context->Map(&staging, 0, D3D11_MAP_READ, 0, &mapped); FAILED(result))
        return lossBehind(result, *m_held.device);
    const CMapped unmapAtEnd(*m_held.context, staging);
    return visitor.visit({static_cast<const std::byte*>(mapped.pData), mapped.RowPitch,
                          static_cast<int>(output.width), static_cast<int>(output.height)});
}

} // namespace tarvo::render::d3d11
