#pragma once

#include "diagnostics/ObjectLog.h"
#include "render/RenderDevice.h"

#include <functional>
#include <memory>

namespace tarvo::transform {

/// Makes the device, not open yet, that an object draws with. Never null; throws std::bad_alloc.
using DeviceMaker = std::function<std::unique_ptr<render::IRenderDevice>(diagnostics::ObjectLog)>;

/// The maker of this build: Direct3D 11 where the system has it by design, the component's own elsewhere.
std::unique_ptr<render::IRenderDevice> makeRenderDevice(diagnostics::ObjectLog log);

} // namespace tarvo::transform
