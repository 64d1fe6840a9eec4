#pragma once

#include "apps/tarvo-dewarp/ModuleOption.h"
#include "apps/tarvo-dewarp/Still.h"

namespace tarvo::apps {

/// Draws a still with the module, as any of its hosts would.
StillFrame drawWithModule(const ModuleSettings& module, const StillJob& job);

} // namespace tarvo::apps
