#include "diagnostics/Log.h"
#include "render/software/SoftwareDevice.h"
#include "tests/render/conformance/DevicesUnderTest.h"

#include <array>

namespace tarvo::render::conformance {
namespace {

constexpr std::array<DeviceUnderTest, 1> devices{{{"software",
                                                   []() -> std::unique_ptr<IRenderDevice> {
                                                       return std::make_unique<software::CSoftwareDevice>(
                                                           diagnostics::ObjectLog{diagnostics::moduleLog, 1});
                                                   },
                                                   true}}};

} // namespace

std::span<const DeviceUnderTest> devicesUnderTest() {
    return devices;
}

} // namespace tarvo::render::conformance
