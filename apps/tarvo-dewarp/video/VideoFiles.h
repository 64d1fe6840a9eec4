#pragma once

#include "apps/tarvo-dewarp/video/VideoSink.h"
#include "apps/tarvo-dewarp/video/VideoSource.h"

#include <iosfwd>
#include <memory>
#include <string>

namespace tarvo::apps::video {

// A video's name is that of a file, an address such as rtsp://… (to read), or "-" for standard input or
// output, which carry YUV4MPEG2.

/// Opens a video for frames with these pixels. Throws UsageError for pixels that it cannot be read as,
/// FileError for everything that keeps it from being read, Interrupted.
std::unique_ptr<IVideoSource> openVideo(const std::string& name, host::FramePixels pixels);

/// Finds out before the work is done whether such a video could be written. Throws UsageError, FileError.
void checkVideoTarget(const std::string& name, host::FramePixels pixels, const std::string& encoder);

/// Begins to write a video with the encoder of that name or, for an empty one, with the usual one of such
/// files. Throws UsageError, FileError, QuietEnd.
std::unique_ptr<IVideoSink> createVideo(const std::string& name, const VideoOutput& video,
                                        const std::string& encoder, std::ostream& standardOutput);

/// Whether the name says that a video is YUV4MPEG2: it ends in .y4m, or is "-".
bool isY4mName(const std::string& name);

} // namespace tarvo::apps::video
