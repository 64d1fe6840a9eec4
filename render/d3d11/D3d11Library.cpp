#include "render/d3d11/D3d11Library.h"

namespace tarvo::render::d3d11 {

bool CD3d11Library::isInstalled() {
    return static_cast<bool>(platform::CSystemLibrary(m_name));
}

HRESULT CD3d11Library::createDevice(const DeviceRequest& request, com::ComPtr<ID3D11Device>& device,
                                    com::ComPtr<ID3D11DeviceContext>& context) {
    device.reset();
    context.reset();
    if (!m_library)
        m_library = platform::CSystemLibrary(m_name);
    // Not through function<>(): a template's argument loses the calling convention on native builds.
    const auto create = reinterpret_cast<PFN_D3D11_CREATE_DEVICE>(m_library.symbol("D3D11CreateDevice"));
    if (create == nullptr)
        return E_FAIL;
    const HRESULT result =
        create(nullptr, request.driverType, nullptr, request.flags, request.featureLevels.data(),
               static_cast<UINT>(request.featureLevels.size()), request.sdkVersion, device.put(), nullptr,
               context.put());
    if (FAILED(result)) {
        device.reset();
        context.reset();
    }
    return result;
}

} // namespace tarvo::render::d3d11
