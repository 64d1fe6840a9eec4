#pragma once

#include "apps/tarvo-dewarp/Still.h"
#include "apps/tarvo-render/FrameRun.h"

namespace tarvo::apps {

/// Draws a still on a device, past the module: what a host gets from the module is the same to the byte where
/// the module uses that device. Throws as StillRenderer does, and RenderError.
StillFrame drawOnDevice(const DeviceMaker& makeDevice, const StillJob& job);

} // namespace tarvo::apps
