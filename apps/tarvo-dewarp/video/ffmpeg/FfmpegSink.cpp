#include "apps/tarvo-dewarp/video/ffmpeg/FfmpegSink.h"

#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/video/Interruption.h"

#include <algorithm>
#include <array>

namespace tarvo::apps::video::ffmpeg {
namespace {

/// Parts of a second in which frames have their times. The usual rates are whole numbers of it, and it is as
/// fine as MPEG-4 can be.
constexpr int timeBase = 60'000;

/// Codecs whose encoders would else spend a fixed number of bits whatever the size of the picture, and the
/// quality to be had instead: 2 is best, 31 worst.
bool hasQualityScale(AVCodecID codec) {
    constexpr std::array codecs{AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG4,
                                AV_CODEC_ID_MJPEG,      AV_CODEC_ID_H263,       AV_CODEC_ID_FLV1,
                                AV_CODEC_ID_MSMPEG4V3,  AV_CODEC_ID_WMV2};
    return std::ranges::find(codecs, codec) != codecs.end();
}
constexpr int usualQualityScale = 3;

bool isSubsampled(AVPixelFormat pixels) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(pixels);
    return descriptor != nullptr && (descriptor->log2_chroma_w != 0 || descriptor->log2_chroma_h != 0);
}

} // namespace

const AVCodec& findEncoder(const std::string& name, const std::string& encoder) {
    const AVOutputFormat& format = outputFormatOf(name);
    if (encoder.empty()) {
        const AVCodecID id = av_guess_codec(&format, nullptr, name.c_str(), nullptr, AVMEDIA_TYPE_VIDEO);
        const AVCodec* const codec = avcodec_find_encoder(id);
        if (codec == nullptr) {
            throw FileError(pathFromText(name),
                            std::string("there is no encoder for ") + avcodec_get_name(id));
        }
        return *codec;
    }
    const AVCodec* const codec = avcodec_find_encoder_by_name(encoder.c_str());
    if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO) {
        throw UsageError("--encoder: there is no video encoder \"" + encoder +
                         "\"; such are libx264, mpeg4, ffv1, mjpeg");
    }
    if (avformat_query_codec(&format, codec->id, FF_COMPLIANCE_NORMAL) == 0) {
        throw UsageError("--encoder: files as " + name + " cannot hold what " + encoder + " makes");
    }
    return *codec;
}

CFfmpegSink::CFfmpegSink(const std::string& name, const VideoOutput& video, const std::string& encoder)
    : m_video(video), m_file(name), m_packet(owned<Packet>(av_packet_alloc())) {
    const AVCodec& codec = findEncoder(name, encoder);
    m_encoder = owned<Codec>(avcodec_alloc_context3(&codec));
    const int height = video.format.height < 0 ? -video.format.height : video.format.height;
    m_encoder->width = video.format.width;
    m_encoder->height = height;
    m_encoder->sample_aspect_ratio = {1, 1};
    m_frame = makeFrame(pixelFormatOf(video.format.pixels), video.format.width, height);
    m_meaning.isFullRange = video.isFullRange || video.format.pixels == host::FramePixels::rgb32;
    choosePixels(codec);
    chooseTimes(codec);
    openEncoder(codec);
    m_file.begin(*m_encoder);
}

void CFfmpegSink::choosePixels(const AVCodec& codec) {
    AVPixelFormat wanted = pixelFormatOf(m_video.format.pixels);
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec.id);
    const bool isLossy = descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSY) != 0;
    if (isLossy) {
        wanted = AV_PIX_FMT_YUV420P; // what every player knows
    }
    m_encoder->pix_fmt = codec.pix_fmts == nullptr
                             ? wanted
                             : avcodec_find_best_pix_fmt_of_list(codec.pix_fmts, wanted, 0, nullptr);
    const AVPixFmtDescriptor* const pixels = av_pix_fmt_desc_get(m_encoder->pix_fmt);
    const bool isRgb = pixels != nullptr && (pixels->flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const bool isFullRange =
        isRgb || m_encoder->pix_fmt == AV_PIX_FMT_YUVJ420P || m_encoder->pix_fmt == AV_PIX_FMT_YUVJ422P ||
        m_encoder->pix_fmt == AV_PIX_FMT_YUVJ444P || (m_video.isFullRange && m_encoder->pix_fmt == wanted);
    m_encoder->color_range = isFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    m_encoder->colorspace = isRgb ? AVCOL_SPC_RGB : AVCOL_SPC_SMPTE170M;
    const bool isOdd = m_encoder->width % 2 != 0 || m_encoder->height % 2 != 0;
    if (isOdd && isSubsampled(m_encoder->pix_fmt)) {
        throw UsageError("the output would have " + std::to_string(m_encoder->width) + "x" +
                         std::to_string(m_encoder->height) +
                         " pixels, and this encoder wants even sides: choose another size");
    }
}

void CFfmpegSink::chooseTimes(const AVCodec& codec) {
    constexpr int limit = 1 << 30;
    AVRational rate{};
    av_reduce(&rate.num, &rate.den, m_video.rate.numerator, m_video.rate.denominator, limit);
    const bool hasTimes = (m_file.format().flags & AVFMT_VARIABLE_FPS) != 0;
    if (codec.supported_framerates != nullptr) {
        rate = codec.supported_framerates[av_find_nearest_q_idx(rate, codec.supported_framerates)];
    }
    m_encoder->framerate = rate;
    m_encoder->time_base = {1, timeBase};
    if (!hasTimes || codec.supported_framerates != nullptr) {
        m_encoder->time_base = av_inv_q(rate);
        m_pace.emplace(FrameRate{rate.num, rate.den});
    }
}

void CFfmpegSink::openEncoder(const AVCodec& codec) {
    m_encoder->thread_count = 0;
    if ((m_file.format().flags & AVFMT_GLOBALHEADER) != 0) {
        m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    if (hasQualityScale(codec.id)) {
        m_encoder->flags |= AV_CODEC_FLAG_QSCALE;
        m_encoder->global_quality = usualQualityScale * FF_QP2LAMBDA;
    } else {
        // Encoders with a scale of their own do not want the libraries' usual number of bits either.
        m_encoder->bit_rate = 0;
        if (codec.id == AV_CODEC_ID_VP9) {
            av_opt_set(m_encoder->priv_data, "crf", "31", 0);
        }
    }
    require(avcodec_open2(m_encoder.get(), &codec, nullptr), m_file.name(),
            std::string("the encoder ") + codec.name + " refuses a video of " +
                std::to_string(m_encoder->width) + "x" + std::to_string(m_encoder->height) + " pixels");
}

void CFfmpegSink::put(std::span<const std::byte> frame, std::int64_t start, std::int64_t duration) {
    if (m_pace) {
        for (auto repeats = m_pace->repeatsUntil(start, duration); repeats > 0; --repeats) {
            encode(m_count, 1);
        }
        unpack(frame, m_video.format, *m_frame);
        return;
    }
    unpack(frame, m_video.format, *m_frame);
    const AVRational units = m_encoder->time_base;
    // Two frames within one unit keep their order.
    const std::int64_t stamp = std::max(av_rescale_q(start, tickLength, units), m_lastStamp + 1);
    encode(stamp, std::max<std::int64_t>(av_rescale_q(start + duration, tickLength, units) - stamp, 1));
}

void CFfmpegSink::encode(std::int64_t stamp, std::int64_t duration) {
    CInterruption::check();
    ColourMeaning meaning;
    meaning.isFullRange = m_encoder->color_range == AVCOL_RANGE_JPEG;
    const AVFrame& converted =
        m_converter.convert(*m_frame, m_meaning, m_encoder->pix_fmt, meaning, m_file.name());
    // A reference of the encoder's own: ours is overwritten by the next frame, but only when nobody else has
    // it.
    const auto given = owned<Frame>(av_frame_clone(&converted));
    given->pts = stamp;
    given->pict_type = AV_PICTURE_TYPE_NONE;
    given->color_range = m_encoder->color_range;
    given->colorspace = m_encoder->colorspace;
    m_lastStamp = stamp;
    ++m_count;
    m_shown.push_back({stamp, duration});
    require(avcodec_send_frame(m_encoder.get(), given.get()), m_file.name(), "a frame cannot be encoded");
    drain();
    require(av_frame_make_writable(m_frame.get()), m_file.name(), "a frame cannot be encoded");
}

void CFfmpegSink::drain() {
    for (;;) {
        const int result = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        require(result, m_file.name(), "a frame cannot be encoded");
        const auto shown = std::ranges::find(m_shown, m_packet->pts, &Shown::stamp);
        if (shown != m_shown.end()) {
            m_packet->duration = shown->duration;
            m_shown.erase(shown);
        }
        m_file.write(*m_packet, m_encoder->time_base);
    }
}

void CFfmpegSink::finish() {
    if (m_pace) {
        for (auto repeats = m_pace->repeatsToEnd(); repeats > 0; --repeats) {
            encode(m_count, 1);
        }
    }
    require(avcodec_send_frame(m_encoder.get(), nullptr), m_file.name(), "a frame cannot be encoded");
    drain();
    m_file.finish();
}

} // namespace tarvo::apps::video::ffmpeg
