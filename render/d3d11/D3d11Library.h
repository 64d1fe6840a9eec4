#pragma once

#include "com/ComPtr.h"
#include "platform/Direct3D11Types.h"
#include "platform/SystemLibrary.h"

#include <span>

namespace tarvo::render::d3d11 {

/// What a device is asked for with; always of the default adapter.
struct DeviceRequest {
    D3D_DRIVER_TYPE driverType = D3D_DRIVER_TYPE_HARDWARE;
    UINT flags = 0;
    std::span<const D3D_FEATURE_LEVEL> featureLevels{}; ///< the first one that can be had is taken
    UINT sdkVersion = 0;
};

/// Where Direct3D 11 comes from. Must outlive the devices it made.
class ID3d11Library {
public:
    virtual ~ID3d11Library() = default;

    /// Whether the system has the library; it is not kept.
    virtual bool isInstalled() = 0;

    /// A device with its immediate context, or the failure and neither. E_FAIL without the library.
    virtual HRESULT createDevice(const DeviceRequest& request, com::ComPtr<ID3D11Device>& device,
                                 com::ComPtr<ID3D11DeviceContext>& context) = 0;
};

/// The system's own. It is loaded by name, so that a program which carries this code starts on machines
/// without it, and from the first device on kept for as long as this object lives.
class CD3d11Library final : public ID3d11Library {
public:
    explicit CD3d11Library(const char* name = "d3d11.dll") : m_name(name) {}

    bool isInstalled() override;
    HRESULT createDevice(const DeviceRequest& request, com::ComPtr<ID3D11Device>& device,
                         com::ComPtr<ID3D11DeviceContext>& context) override;

private:
    const char* m_name;
    platform::CSystemLibrary m_library;
};

} // namespace tarvo::render::d3d11
