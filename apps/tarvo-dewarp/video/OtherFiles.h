#pragma once

#include "apps/tarvo-dewarp/video/VideoSink.h"
#include "apps/tarvo-dewarp/video/VideoSource.h"

#include <memory>
#include <string>

namespace tarvo::apps::video {

// All kinds of files but YUV4MPEG2. What stands behind these functions, the build chooses.

/// Whether this program knows any.
bool knowsOtherFiles();

/// As openVideo(), checkVideoTarget() and createVideo() do it. Throw FileError where no kind is known.
std::unique_ptr<IVideoSource> openOtherVideo(const std::string& name, host::FramePixels pixels);
void checkOtherTarget(const std::string& name, const std::string& encoder);
std::unique_ptr<IVideoSink> createOtherVideo(const std::string& name, const VideoOutput& video,
                                             const std::string& encoder);

} // namespace tarvo::apps::video
