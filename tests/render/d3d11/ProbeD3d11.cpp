// A library with the one function of Direct3D 11, which notes what it is asked.

#include "tests/render/d3d11/ProbeD3d11.h"

#include <algorithm>

extern "C" {

[[gnu::visibility("default")]] tarvo::render::d3d11::D3d11Probe tarvoD3d11Probe{};

[[gnu::visibility("default")]] HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter,
                                                                D3D_DRIVER_TYPE driverType, HMODULE software,
                                                                UINT flags, const D3D_FEATURE_LEVEL* levels,
                                                                UINT levelCount, UINT sdkVersion,
                                                                ID3D11Device** device, D3D_FEATURE_LEVEL*,
                                                                ID3D11DeviceContext** context) {
    auto& probe = tarvoD3d11Probe;
    ++probe.callCount;
    probe.adapter = adapter;
    probe.driverType = driverType;
    probe.software = software;
    probe.flags = flags;
    std::copy_n(levels, std::min(levelCount, UINT{4}), probe.levels);
    probe.levelCount = levelCount;
    probe.sdkVersion = sdkVersion;
    *device = probe.device;
    *context = probe.context;
    return probe.result;
}
}
