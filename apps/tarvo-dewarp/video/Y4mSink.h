#pragma once

#include "apps/tarvo-dewarp/video/ByteTarget.h"
#include "apps/tarvo-dewarp/video/FramePlanes.h"
#include "apps/tarvo-dewarp/video/SteadyPace.h"
#include "apps/tarvo-dewarp/video/VideoSink.h"

#include <memory>
#include <vector>

namespace tarvo::apps::video {

/// Writes YV12 frames as a YUV4MPEG2 stream. Such a stream has no times: a frame that is shown for longer is
/// written repeatedly.
class CY4mSink final : public IVideoSink {
public:
    /// Throws UsageError for frames that such a stream cannot hold, FileError.
    CY4mSink(std::unique_ptr<IByteTarget> target, const VideoOutput& video);

    void put(std::span<const std::byte> frame, std::int64_t start, std::int64_t duration) override;
    void finish() override;

private:
    void write(std::int64_t repeats);

    std::unique_ptr<IByteTarget> m_target;
    Yv12Planes m_planes;
    CSteadyPace m_pace;
    std::vector<std::byte> m_held;
};

} // namespace tarvo::apps::video
