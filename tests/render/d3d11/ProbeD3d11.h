#pragma once

#include "platform/Direct3D11Types.h"

namespace tarvo::render::d3d11 {

/// What tests/render/d3d11/ProbeD3d11.cpp was asked, and what it shall answer.
struct D3d11Probe {
    HRESULT result;
    ID3D11Device* device;
    ID3D11DeviceContext* context;

    int callCount;
    IDXGIAdapter* adapter;
    D3D_DRIVER_TYPE driverType;
    HMODULE software;
    UINT flags;
    D3D_FEATURE_LEVEL levels[4];
    UINT levelCount;
    UINT sdkVersion;
};

} // namespace tarvo::render::d3d11
