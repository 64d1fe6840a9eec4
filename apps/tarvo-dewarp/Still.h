#pragma once

#include "apps/tarvo-dewarp/CustomViewSettings.h"
#include "apps/tarvo-dewarp/FrameSettings.h"
#include "apps/tarvo-dewarp/ViewSettings.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace tarvo::apps {

/// One picture, and what to show of it.
struct StillJob {
    const InputFrame& input;
    const FrameSettings& frames;
    const ViewSettings& view;
    const CustomViewSettings& customView;
    bool isBypassed = false;
};

/// A delivered frame.
struct StillFrame {
    host::VideoFormat format;
    std::vector<std::byte> bytes;
};

/// Whatever draws a still. Throws UsageError, FileError, host::HostError, std::bad_alloc.
using StillRenderer = std::function<StillFrame(const StillJob&)>;

} // namespace tarvo::apps
