#include "apps/tarvo-render/RenderDevices.h"

#include "apps/tarvo-dewarp/OptionValues.h"
#include "render/reference/ReferenceDevice.h"
#include "render/software/SoftwareDevice.h"
#ifdef _WIN32
#include "render/d3d11/D3d11Device.h"
#endif

namespace tarvo::apps {

std::string deviceNames() {
#ifdef _WIN32
    return "d3d11, software or reference";
#else
    return "software or reference";
#endif
}

DeviceMaker readDevice(const std::string& option, const std::string& text) {
#ifdef _WIN32
    if (text == "d3d11") {
        return makeUsualDevice;
    }
#endif
    if (text == "software") {
        return [](const diagnostics::ObjectLog& log) {
            return std::make_unique<render::software::CSoftwareDevice>(log);
        };
    }
    if (text == "reference") {
        return [](const diagnostics::ObjectLog& log) {
            return std::make_unique<render::reference::CReferenceDevice>(log);
        };
    }
    refuseValue(option, text, deviceNames());
}

} // namespace tarvo::apps
