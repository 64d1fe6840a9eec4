#pragma once

#include "apps/host/VideoFormat.h"
#include "apps/tarvo-dewarp/Values.h"
#include "geometry/ExcludeArea.h"
#include "render/FrameFormat.h"

namespace tarvo::apps {

// What the command line's records, which are those of a host, mean to the renderer.

/// A frame that comes in; its stride is the one that its size gives.
render::InputFormat inputFormatOf(const host::VideoFormat& format);

/// A frame that goes out.
render::OutputFormat outputFormatOf(const host::VideoFormat& format);

geometry::ExcludeArea excludeAreaOf(const Edges& edges);

} // namespace tarvo::apps
