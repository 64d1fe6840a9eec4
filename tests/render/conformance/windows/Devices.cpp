#include "diagnostics/Log.h"
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/D3d11Library.h"
#include "render/software/SoftwareDevice.h"
#include "tests/render/conformance/DevicesUnderTest.h"

#include <array>

namespace tarvo::render::conformance {
namespace {

constexpr std::array<DeviceUnderTest, 2> devices{{{"software",
                                                   []() -> std::unique_ptr<IRenderDevice> {
                                                       return std::make_unique<software::CSoftwareDevice>(
                                                           diagnostics::ObjectLog{diagnostics::moduleLog, 1});
                                                   },
                                                   true},
                                                  {"direct3d11",
                                                   []() -> std::unique_ptr<IRenderDevice> {
                                                       return std::make_unique<d3d11::CD3d11Device>(
                                                           std::make_unique<d3d11::CD3d11Library>(),
                                                           diagnostics::ObjectLog{diagnostics::moduleLog, 1});
                                                   },
                                                   false}}};

} // namespace

std::span<const DeviceUnderTest> devicesUnderTest() {
    return devices;
}

} // namespace tarvo::render::conformance
