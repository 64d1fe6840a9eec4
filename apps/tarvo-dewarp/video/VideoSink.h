#pragma once

#include "apps/host/VideoFormat.h"
#include "apps/tarvo-dewarp/video/FrameRate.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::apps::video {

/// What a video to write is made of.
struct VideoOutput {
    host::VideoFormat format; ///< YV12, or RGB32 with the top row first; no padding
    FrameRate rate;
    /// Of YV12: luma from 0 to 255 rather than from 16 to 235.
    bool isFullRange = false;
};

/// Takes frames one after the other. Until it is finished there is no file of the wanted name, and an old one
/// is as it was; a stream has got what was put.
class IVideoSink {
public:
    virtual ~IVideoSink() = default;

    /// A frame with its time in units of 100 ns, not earlier than that of the one before. Throws FileError,
    /// QuietEnd when nobody reads standard output any more, std::bad_alloc.
    virtual void put(std::span<const std::byte> frame, std::int64_t start, std::int64_t duration) = 0;
    /// Writes what is left; afterwards the file is there. Throws as put().
    virtual void finish() = 0;
};

} // namespace tarvo::apps::video
