#pragma once

#include "apps/tarvo-render/FrameRun.h"

#include <string>

namespace tarvo::apps {

/// The devices that this build has, as the user names them: "d3d11, software or reference".
std::string deviceNames();

/// What makes the device of that name; throws UsageError for a name that is none.
DeviceMaker readDevice(const std::string& option, const std::string& text);

} // namespace tarvo::apps
