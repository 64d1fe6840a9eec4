#include "render/software/SoftwareDevice.h"
#include "transform/RenderDeviceMaker.h"

namespace tarvo::transform {

std::unique_ptr<render::IRenderDevice> makeRenderDevice(diagnostics::ObjectLog log) {
    return std::make_unique<render::software::CSoftwareDevice>(log);
}

} // namespace tarvo::transform
