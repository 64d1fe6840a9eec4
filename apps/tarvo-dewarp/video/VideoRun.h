#pragma once

#include "apps/host/TransformStream.h"
#include "apps/tarvo-dewarp/video/FrameRate.h"
#include "apps/tarvo-dewarp/video/Moves.h"
#include "apps/tarvo-dewarp/video/VideoSink.h"
#include "apps/tarvo-dewarp/video/VideoSource.h"

#include <iosfwd>
#include <optional>

namespace tarvo::apps::video {

/// What a video is shown through.
struct VideoRun {
    IVideoSource& source;
    IDewarpingTransform& transform;
    host::CTransformStream& stream; ///< the transform's, with both types set
    IVideoSink& sink;
    const CMoves& moves;
    std::optional<FrameRate> outputRate; ///< that of the input if there is none
    std::ostream* progress = nullptr;    ///< where progress is shown, if anywhere
};

/// Whether frames are left out for an output of that rate.
bool isSlower(const std::optional<FrameRate>& outputRate, const FrameRate& inputRate);

/// Takes every frame of the source through the transform to the sink, which is not finished yet. The number
/// of frames that came out; 0 if the source has none. Throws FileError, HostError, Interrupted, QuietEnd,
/// std::bad_alloc.
std::int64_t runVideo(const VideoRun& run);

} // namespace tarvo::apps::video
