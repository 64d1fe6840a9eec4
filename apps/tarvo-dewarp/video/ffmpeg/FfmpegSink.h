#pragma once

#include "apps/tarvo-dewarp/video/SteadyPace.h"
#include "apps/tarvo-dewarp/video/VideoSink.h"
#include "apps/tarvo-dewarp/video/ffmpeg/EncodedFile.h"
#include "apps/tarvo-dewarp/video/ffmpeg/PixelConverter.h"

#include <deque>
#include <optional>
#include <string>

namespace tarvo::apps::video::ffmpeg {

/// Encodes a video into a file of any kind that FFmpeg's libraries write. Frames keep their times where the
/// kind of file has times, else they are repeated as long as they last.
class CFfmpegSink final : public IVideoSink {
public:
    /// With the encoder of that name, or else with the usual one of such files. Throws UsageError, FileError.
    CFfmpegSink(const std::string& name, const VideoOutput& video, const std::string& encoder);

    void put(std::span<const std::byte> frame, std::int64_t start, std::int64_t duration) override;
    void finish() override;

private:
    struct Shown {
        std::int64_t stamp;
        std::int64_t duration;
    };

    void choosePixels(const AVCodec& codec);
    void chooseTimes(const AVCodec& codec);
    void openEncoder(const AVCodec& codec);
    /// Gives the encoder the frame in m_frame.
    void encode(std::int64_t stamp, std::int64_t duration);
    void drain();

    VideoOutput m_video;
    CEncodedFile m_file;
    Codec m_encoder;
    Packet m_packet;
    ColourMeaning m_meaning; ///< of the frames that come
    Frame m_frame;           ///< the last one that came
    CPixelConverter m_converter;
    std::optional<CSteadyPace> m_pace; ///< for files without times
    std::int64_t m_count = 0;          ///< frames that the encoder got
    std::int64_t m_lastStamp = -1;
    std::deque<Shown> m_shown; ///< by their stamps: how long frames last that are not written yet
};

/// The encoder that such a file is written with. Throws UsageError, FileError.
const AVCodec& findEncoder(const std::string& name, const std::string& encoder);

} // namespace tarvo::apps::video::ffmpeg
