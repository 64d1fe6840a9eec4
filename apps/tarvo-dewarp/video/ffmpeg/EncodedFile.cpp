#include "apps/tarvo-dewarp/video/ffmpeg/EncodedFile.h"

#include <algorithm>

namespace tarvo::apps::video::ffmpeg {
namespace {

constexpr int bufferBytes = 1 << 16;

} // namespace

const AVOutputFormat& outputFormatOf(const std::string& name) {
    const AVOutputFormat* const format = av_guess_format(nullptr, name.c_str(), nullptr);
    if (format == nullptr || name.find("://") != std::string::npos) {
        throw FileError(pathFromText(name), "no kind of video has a name with this ending");
    }
    if ((format->flags & AVFMT_NOFILE) != 0 || format->video_codec == AV_CODEC_ID_NONE) {
        throw FileError(pathFromText(name), "files with this ending do not hold a whole video");
    }
    return *format;
}

CEncodedFile::CEncodedFile(const std::string& name) : m_name(pathFromText(name)), m_file(m_name) {
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* context = nullptr;
    const int result = avformat_alloc_output_context2(&context, &outputFormatOf(name), nullptr, nullptr);
    m_context.reset(context);
    require(result, "it cannot be written");
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    m_io = buffer == nullptr ? nullptr
                             : avio_alloc_context(buffer, bufferBytes, 1, this, nullptr, writeBytes, seek);
    if (m_io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    m_context->pb = m_io;
}

CEncodedFile::~CEncodedFile() {
    m_context.reset();
    if (m_io != nullptr) {
        // The libraries may have put another buffer there.
        av_freep(&m_io->buffer);
        avio_context_free(&m_io);
    }
}

void CEncodedFile::begin(const AVCodecContext& encoder) {
    m_stream = avformat_new_stream(m_context.get(), nullptr);
    if (m_stream == nullptr) {
        throw std::bad_alloc();
    }
    require(avcodec_parameters_from_context(m_stream->codecpar, &encoder), "it cannot be written");
    m_stream->time_base = encoder.time_base;
    m_stream->avg_frame_rate = encoder.framerate;
    m_stream->sample_aspect_ratio = encoder.sample_aspect_ratio;
    require(avformat_write_header(m_context.get(), nullptr), "it cannot be written");
}

void CEncodedFile::write(AVPacket& packet, AVRational timeBase) {
    packet.stream_index = m_stream->index;
    av_packet_rescale_ts(&packet, timeBase, m_stream->time_base);
    require(av_interleaved_write_frame(m_context.get(), &packet), "it cannot be written");
    // What the buffer could not get rid of, nobody tells otherwise before the end.
    require(m_io->error, "it cannot be written");
}

void CEncodedFile::finish() {
    require(av_write_trailer(m_context.get()), "it cannot be written");
    avio_flush(m_io);
    require(m_io->error, "it cannot be written");
    m_file.replaceTarget();
}

void CEncodedFile::require(int result, const char* step) {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    ffmpeg::require(result, m_name, step);
}

int CEncodedFile::writeBytes(void* file, std::uint8_t* bytes, int count) noexcept {
    auto& self = *static_cast<CEncodedFile*>(file);
    try {
        self.m_file.write({bytes, static_cast<std::size_t>(count)});
    } catch (...) {
        self.m_failure = std::current_exception();
        return AVERROR(EIO);
    }
    self.m_position += count;
    self.m_size = std::max(self.m_size, self.m_position);
    return count;
}

std::int64_t CEncodedFile::seek(void* file, std::int64_t offset, int origin) noexcept {
    auto& self = *static_cast<CEncodedFile*>(file);
    switch (origin & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return self.m_size;
    case SEEK_CUR:
        offset += self.m_position;
        break;
    case SEEK_END:
        offset += self.m_size;
        break;
    default:
        break;
    }
    if (offset < 0) {
        return AVERROR(EINVAL);
    }
    try {
        self.m_file.seek(static_cast<std::uint64_t>(offset));
    } catch (...) {
        self.m_failure = std::current_exception();
        return AVERROR(EIO);
    }
    return self.m_position = offset;
}

} // namespace tarvo::apps::video::ffmpeg
