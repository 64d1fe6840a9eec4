#include "apps/tarvo-dewarp/video/ffmpeg/FfmpegSource.h"

#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/video/Interruption.h"

#include <cstdarg>
#include <cstdio>
#include <stdexcept>

namespace tarvo::apps::video::ffmpeg {
namespace {

/// A jump in time beyond this is none of the scene but one of the clock.
constexpr std::int64_t longestGap = 3600 * ticksPerSecond;

/// Times beyond some three hundred years are not believed; sums of those that are fit their numbers.
constexpr std::int64_t farthest = 100'000'000'000'000'000;

/// A time of the file's stream in ticks, if it is one.
std::optional<std::int64_t> ticksOf(std::int64_t time, AVRational units) {
    if (time == AV_NOPTS_VALUE) {
        return std::nullopt;
    }
    const std::int64_t ticks = av_rescale_q(time, units, tickLength);
    return ticks > -farthest && ticks < farthest ? std::optional(ticks) : std::nullopt;
}

/// Names of files pass as they are: the libraries would take what stands before a colon for a protocol.
std::string urlOf(const std::string& name, bool isStream) {
    return isStream ? name : "file:" + name;
}

/// What a reader of files last complained about in this thread. Some end a file that breaks off as if it were
/// whole, and tell the difference to the log alone.
thread_local std::string lastComplaint;

void noteComplaint(void* object, int level, const char* format, va_list values) {
    const AVClass* const type = object != nullptr ? *static_cast<AVClass**>(object) : nullptr;
    if (level > AV_LOG_ERROR || type == nullptr) {
        return;
    }
    const AVClassCategory category =
        type->get_category != nullptr ? type->get_category(object) : type->category;
    if (category != AV_CLASS_CATEGORY_DEMUXER) {
        return;
    }
    char text[256] = "";
    std::vsnprintf(text, sizeof text, format, values);
    lastComplaint = text;
    lastComplaint.erase(lastComplaint.find_last_not_of(" .\n") + 1);
}

int isInterrupted(void*) {
    return CInterruption::isAsked() ? 1 : 0;
}

} // namespace

CFfmpegSource::CFfmpegSource(const std::string& name, host::FramePixels pixels)
    : m_name(pathFromText(name)), m_isStream(name.find("://") != std::string::npos),
      m_packet(owned<Packet>(av_packet_alloc())), m_decoded(owned<Frame>(av_frame_alloc())) {
    // What there is to say is said in one line, by us.
    av_log_set_callback(noteComplaint);
    AVFormatContext* input = avformat_alloc_context();
    if (input == nullptr) {
        throw std::bad_alloc();
    }
    input->interrupt_callback.callback = isInterrupted;
    // Frees the input when it fails.
    const int result = avformat_open_input(&input, urlOf(name, m_isStream).c_str(), nullptr, nullptr);
    CInterruption::check();
    require(result, m_name, "it cannot be read as a video");
    m_input.reset(input);
    openDecoder();
    if (!decode()) {
        throw FileError(m_name, "it holds no frames");
    }
    describe(pixels);
    m_ahead = takeDecoded();
}

void CFfmpegSource::openDecoder() {
    const int found = avformat_find_stream_info(m_input.get(), nullptr);
    CInterruption::check();
    require(found, m_name, "it cannot be read as a video");
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(m_input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    // The cover of a piece of music is no video, either.
    if (index < 0 || (m_input->streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
        throw FileError(m_name, index == AVERROR_DECODER_NOT_FOUND ? "there is no decoder for its video"
                                                                   : "there is no video in it");
    }
    m_stream = m_input->streams[index];
    for (unsigned i = 0; i < m_input->nb_streams; ++i) {
        m_input->streams[i]->discard = static_cast<int>(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    m_decoder = owned<Codec>(avcodec_alloc_context3(codec));
    require(avcodec_parameters_to_context(m_decoder.get(), m_stream->codecpar), m_name,
            "opening its decoder");
    m_decoder->pkt_timebase = m_stream->time_base;
    m_decoder->thread_count = 0; // as many as there are processors
    require(avcodec_open2(m_decoder.get(), codec, nullptr), m_name, "opening its decoder");
}

void CFfmpegSource::describe(host::FramePixels pixels) {
    const AVRational guessed = av_guess_frame_rate(m_input.get(), m_stream, nullptr);
    if (const FrameRate rate{guessed.num, guessed.den}; isPlausible(rate)) {
        m_description.rate = rate;
    }
    const int width = m_decoded->width;
    const int height = m_decoded->height;
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    if (width < 1 || height < 1 || width > maxPictureSide || height > maxPictureSide) {
        throw FileError(m_name, "its frames have " + size + " pixels, and each side must be 1 to " +
                                    std::to_string(maxPictureSide));
    }
    if (pixels == host::FramePixels::yuy2 && width % 2 != 0) {
        throw UsageError("--input-format: a yuy2 frame has an even width, and the input has " + size);
    }
    try {
        m_description.format =
            host::makeVideoFormat(pixels, width, pixels == host::FramePixels::rgb32 ? -height : height,
                                  startOf(1, m_description.rate));
    } catch (const std::invalid_argument& error) {
        throw FileError(m_name, error.what());
    }
    if (m_stream->nb_frames > 0) {
        m_description.frameCount = m_stream->nb_frames;
    } else if (m_input->duration > 0) {
        m_description.frameCount =
            indexAt(av_rescale_q(m_input->duration, AV_TIME_BASE_Q, tickLength), m_description.rate);
    }
}

bool CFfmpegSource::decode() {
    for (;;) {
        CInterruption::check();
        const int result = avcodec_receive_frame(m_decoder.get(), m_decoded.get());
        if (result == AVERROR_EOF) {
            return false;
        }
        if (result == AVERROR(EAGAIN)) {
            feed();
        } else if (result >= 0) {
            return true;
        } else if (!m_isStream) {
            require(result, m_name, "a frame cannot be decoded");
        }
    }
}

void CFfmpegSource::feed() {
    for (;;) {
        lastComplaint.clear();
        const int result = av_read_frame(m_input.get(), m_packet.get());
        CInterruption::check();
        if (result == AVERROR_EOF) {
            if (!lastComplaint.empty() && !m_isStream) {
                throw FileError(m_name, "it breaks off: " + lastComplaint);
            }
            m_isAtEnd = true;
            avcodec_send_packet(m_decoder.get(), nullptr);
            return;
        }
        require(result, m_name, "it breaks off");
        const bool isOurs = m_packet->stream_index == m_stream->index;
        const bool isCut = (m_packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
        const int sent = isOurs ? avcodec_send_packet(m_decoder.get(), m_packet.get()) : 0;
        av_packet_unref(m_packet.get());
        if (!isOurs) {
            continue;
        }
        // Streams lose packets and begin anywhere: there the next good frame counts.
        if (!m_isStream) {
            if (isCut) {
                throw FileError(m_name, "it is damaged or breaks off");
            }
            require(sent, m_name, "a frame cannot be decoded");
        }
        return;
    }
}

std::int64_t CFfmpegSource::placeDecoded() {
    const std::int64_t nominal = m_lastDuration > 0 ? m_lastDuration : m_description.format.ticksPerFrame;
    const std::int64_t expected = m_lastStart ? *m_lastStart + nominal : 0;
    std::int64_t start = expected;
    if (const auto ticks = ticksOf(m_decoded->best_effort_timestamp, m_stream->time_base)) {
        if (!m_lastStart) {
            m_timeOffset = -*ticks;
        }
        start = *ticks + m_timeOffset;
        if (m_lastStart && (start <= *m_lastStart || start - *m_lastStart > longestGap)) {
            m_timeOffset += expected - start;
            start = expected;
        }
    }
    const std::int64_t declared = ticksOf(m_decoded->pkt_duration, m_stream->time_base).value_or(0);
    m_lastDuration = declared > 0 && declared <= longestGap ? declared : 0;
    m_lastStart = start;
    return start;
}

VideoFrame CFfmpegSource::takeDecoded() {
    const host::VideoFormat& format = m_description.format;
    const int height = format.height < 0 ? -format.height : format.height;
    if (m_decoded->width != format.width || m_decoded->height != height) {
        throw FileError(m_name, "its frames change their size to " + std::to_string(m_decoded->width) + "x" +
                                    std::to_string(m_decoded->height));
    }
    const ColourMeaning from = meaningOf(*m_decoded);
    ColourMeaning meaning = from;
    if (format.pixels == host::FramePixels::rgb32) {
        meaning.isFullRange = true;
    }
    VideoFrame frame;
    frame.start = placeDecoded();
    const bool isAlreadyYv12 =
        format.pixels == host::FramePixels::yv12 &&
        (m_decoded->format == AV_PIX_FMT_YUV420P || m_decoded->format == AV_PIX_FMT_YUVJ420P);
    frame.bytes = packed(
        isAlreadyYv12 ? *m_decoded
                      : m_converter.convert(*m_decoded, from, pixelFormatOf(format.pixels), meaning, m_name),
        format);
    frame.duration = m_lastDuration > 0 ? m_lastDuration : format.ticksPerFrame;
    av_frame_unref(m_decoded.get());
    return frame;
}

std::optional<VideoFrame> CFfmpegSource::next() {
    std::optional<VideoFrame> frame = std::exchange(m_ahead, std::nullopt);
    if (frame && decode()) {
        m_ahead = takeDecoded();
        frame->duration = m_ahead->start - frame->start;
    }
    return frame;
}

} // namespace tarvo::apps::video::ffmpeg
