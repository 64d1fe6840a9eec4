#pragma once

#include "apps/tarvo-dewarp/FrameSettings.h"
#include "custom/tables/CustomTransformShader.h"
#include "diagnostics/ObjectLog.h"
#include "geometry/ViewState.h"
#include "render/RenderDevice.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace tarvo::apps {

/// A frame that could not be rendered; the text says at which step and why.
class RenderError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

using DeviceMaker = std::function<std::unique_ptr<render::IRenderDevice>(const diagnostics::ObjectLog&)>;

/// The device that the component itself would render with on this system.
std::unique_ptr<render::IRenderDevice> makeUsualDevice(const diagnostics::ObjectLog& log);

/// The log as the renderer of this program writes to it.
diagnostics::ObjectLog openRendererLog();

/// Throws RenderError, which names the step, when it failed.
void requireStep(HRESULT result, const char* step);

struct FrameJob {
    const InputFrame& input;
    const host::VideoFormat& output;
    const geometry::CViewState& view;
    custom::CCustomTransformShader* customShader = nullptr; ///< draws the custom view, which needs it
    bool isBypassed = false;
};

/// Runs one frame through a device; the result is the output buffer as a host gets it. Throws RenderError,
/// std::bad_alloc.
std::vector<std::byte> runFrame(const DeviceMaker& makeDevice, const diagnostics::ObjectLog& log,
                                const FrameJob& job);

} // namespace tarvo::apps
