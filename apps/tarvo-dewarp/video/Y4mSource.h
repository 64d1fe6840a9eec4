#pragma once

#include "apps/tarvo-dewarp/video/FramePlanes.h"
#include "apps/tarvo-dewarp/video/VideoSource.h"
#include "apps/tarvo-dewarp/video/Y4mHeader.h"

#include <filesystem>
#include <istream>
#include <memory>

namespace tarvo::apps::video {

/// A YUV4MPEG2 stream whose colours have half the size, as YV12 frames.
class CY4mSource final : public IVideoSource {
public:
    /// Of a stream whose first line was read; `name` is for messages. Throws FileError for colours of another
    /// kind and for frames that are too large.
    CY4mSource(const std::filesystem::path& name, std::istream& stream, const Y4mHeader& header);

    const VideoInput& description() const override { return m_description; }
    std::optional<VideoFrame> next() override;

    /// Says how many frames the stream should have.
    void expectFrames(std::int64_t count) { m_description.frameCount = count; }

private:
    bool readFrameLine();
    void readPlane(std::vector<std::byte>& frame, const Plane& plane, std::size_t fileWidth,
                   std::size_t fileHeight);
    [[noreturn]] void breakOff() const;

    std::filesystem::path m_name;
    std::istream& m_stream;
    VideoInput m_description;
    Yv12Planes m_planes;
    std::int64_t m_index = 0;
};

/// Opens such a file, or standard input for "-". Nothing when the file is YUV4MPEG2 but of another kind,
/// which others may know to read. Throws FileError.
std::unique_ptr<IVideoSource> openY4m(const std::string& name);

} // namespace tarvo::apps::video
