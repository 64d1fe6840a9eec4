#pragma once

#include "apps/tarvo-dewarp/video/VideoSource.h"
#include "apps/tarvo-dewarp/video/ffmpeg/PixelConverter.h"

#include <filesystem>
#include <string>

namespace tarvo::apps::video::ffmpeg {

struct CloseInput {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};

/// The first video of a file or stream that FFmpeg's libraries read. Frames in YUV of 4:2:0 become YV12 as
/// they are; other YUV keeps its range, and what is RGB becomes YUV of full range, as the transform reads it.
class CFfmpegSource final : public IVideoSource {
public:
    /// Throws FileError, UsageError for pixels that frames of that size cannot have, Interrupted.
    CFfmpegSource(const std::string& name, host::FramePixels pixels);

    const VideoInput& description() const override { return m_description; }
    std::optional<VideoFrame> next() override;

private:
    void openDecoder();
    void describe(host::FramePixels pixels);
    /// Decodes into m_decoded; false after the last frame.
    bool decode();
    void feed();
    VideoFrame takeDecoded();
    /// The time of the frame in m_decoded, which is later than that of the one before.
    std::int64_t placeDecoded();

    std::filesystem::path m_name;
    bool m_isStream;
    std::unique_ptr<AVFormatContext, CloseInput> m_input;
    AVStream* m_stream = nullptr; ///< the input's
    Codec m_decoder;
    Packet m_packet;
    Frame m_decoded;
    CPixelConverter m_converter;
    VideoInput m_description;
    bool m_isAtEnd = false;
    std::int64_t m_lastDuration = 0; ///< that the frame in m_decoded declares, in ticks
    std::int64_t m_timeOffset = 0;   ///< from the times of the file to ours
    std::optional<std::int64_t> m_lastStart;
    std::optional<VideoFrame> m_ahead; ///< how long it lasts, the one behind it tells
};

} // namespace tarvo::apps::video::ffmpeg
