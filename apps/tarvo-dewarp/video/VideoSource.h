#pragma once

#include "apps/host/VideoFormat.h"
#include "apps/tarvo-dewarp/video/FrameRate.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarvo::apps::video {

/// A frame as the transform takes it. Times in units of 100 ns, the first frame of a video begins at 0.
struct VideoFrame {
    std::vector<std::byte> bytes;
    std::int64_t start = 0;
    std::int64_t duration = 0; ///< 0: unknown
};

/// What is known of a video before its frames.
struct VideoInput {
    host::VideoFormat format;
    FrameRate rate;
    std::optional<std::int64_t> frameCount; ///< as far as the file tells, for showing progress alone
};

/// Frames one after the other, each beginning later than the one before.
class IVideoSource {
public:
    virtual ~IVideoSource() = default;

    virtual const VideoInput& description() const = 0;
    /// The next frame, none after the last one. Throws FileError for what is broken, std::bad_alloc,
    /// Interrupted when the user ends the program while there is nothing to read.
    virtual std::optional<VideoFrame> next() = 0;
};

} // namespace tarvo::apps::video
