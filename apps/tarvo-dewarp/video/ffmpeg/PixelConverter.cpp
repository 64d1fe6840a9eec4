#include "apps/tarvo-dewarp/video/ffmpeg/PixelConverter.h"

#include "apps/tarvo-dewarp/video/FramePlanes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tarvo::apps::video::ffmpeg {
namespace {

/// Formats whose very name says that their range is full.
bool isFullRangeByName(int pixels) {
    constexpr std::array formats{AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P,
                                 AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ411P};
    return std::ranges::find(formats, static_cast<AVPixelFormat>(pixels)) != formats.end();
}

/// The same without a range in it: the range is told apart, in one way only.
AVPixelFormat plainFormat(int pixels) {
    switch (pixels) {
    case AV_PIX_FMT_YUVJ420P:
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
        return AV_PIX_FMT_YUV411P;
    default:
        return static_cast<AVPixelFormat>(pixels);
    }
}

bool isRgb(int pixels) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(pixels));
    return descriptor != nullptr && (descriptor->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

struct PlanePair {
    int index; ///< of the plane in the libraries' frame
    Plane plane;
};

/// The planes of a frame for the transform, at their places in one of the libraries'.
std::vector<PlanePair> planesOf(const host::VideoFormat& format) {
    if (format.pixels != host::FramePixels::yv12) {
        return {{0, packedPlane(format)}};
    }
    const Yv12Planes planes = yv12Planes(format);
    return {{0, planes.luma}, {1, planes.blue}, {2, planes.red}};
}

} // namespace

AVPixelFormat pixelFormatOf(host::FramePixels pixels) {
    switch (pixels) {
    case host::FramePixels::yv12:
        return AV_PIX_FMT_YUV420P;
    case host::FramePixels::yuy2:
        return AV_PIX_FMT_YUYV422;
    default:
        return AV_PIX_FMT_BGR0;
    }
}

ColourMeaning meaningOf(const AVFrame& frame) {
    constexpr int firstHdHeight = 720;
    ColourMeaning meaning;
    if (isRgb(frame.format)) {
        meaning.isFullRange = true;
        return meaning;
    }
    meaning.isFullRange = frame.color_range == AVCOL_RANGE_JPEG || isFullRangeByName(frame.format);
    meaning.space = frame.colorspace;
    if (frame.colorspace == AVCOL_SPC_UNSPECIFIED || frame.colorspace == AVCOL_SPC_RGB) {
        meaning.space =
            !meaning.isFullRange && frame.height >= firstHdHeight ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
    return meaning;
}

const AVFrame& CPixelConverter::convert(const AVFrame& from, const ColourMeaning& fromMeaning,
                                        AVPixelFormat pixels, const ColourMeaning& meaning,
                                        const std::filesystem::path& file) {
    const AVPixelFormat source = plainFormat(from.format);
    const AVPixelFormat target = plainFormat(pixels);
    const bool hasSameMeaning =
        fromMeaning.space == meaning.space && fromMeaning.isFullRange == meaning.isFullRange;
    if (source == target && hasSameMeaning && from.format == pixels) {
        return from;
    }
    m_scaler.reset(sws_getCachedContext(
        m_scaler.release(), from.width, from.height, source, from.width, from.height, target,
        SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!m_scaler) {
        const char* const name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(from.format));
        throw FileError(file, "pixels of the kind " + std::string(name != nullptr ? name : "?") +
                                  " cannot be converted");
    }
    // Formats in which the libraries know nothing to adjust refuse this; they have no meaning to choose.
    static_cast<void>(sws_setColorspaceDetails(
        m_scaler.get(), sws_getCoefficients(fromMeaning.space), fromMeaning.isFullRange ? 1 : 0,
        sws_getCoefficients(meaning.space), meaning.isFullRange ? 1 : 0, 0, 1 << 16, 1 << 16));
    if (!m_converted || m_converted->format != pixels || m_converted->width != from.width ||
        m_converted->height != from.height) {
        m_converted = makeFrame(pixels, from.width, from.height);
    }
    // An encoder may still hold what it was given.
    require(av_frame_make_writable(m_converted.get()), file, "converting a frame");
    require(sws_scale(m_scaler.get(), from.data, from.linesize, 0, from.height, m_converted->data,
                      m_converted->linesize),
            file, "converting a frame");
    return *m_converted;
}

std::vector<std::byte> packed(const AVFrame& frame, const host::VideoFormat& format) {
    std::vector<std::byte> bytes(format.frameBytes);
    for (const auto& [index, plane] : planesOf(format)) {
        for (std::size_t y = 0; y < plane.height; ++y) {
            // Strides of the libraries are negative for pictures that stand on their heads.
            std::memcpy(bytes.data() + plane.offset + y * plane.stride,
                        frame.data[index] + static_cast<std::ptrdiff_t>(y) * frame.linesize[index],
                        plane.width);
        }
    }
    return bytes;
}

void unpack(std::span<const std::byte> bytes, const host::VideoFormat& format, AVFrame& frame) {
    for (const auto& [index, plane] : planesOf(format)) {
        for (std::size_t y = 0; y < plane.height; ++y) {
            std::memcpy(frame.data[index] + static_cast<std::ptrdiff_t>(y) * frame.linesize[index],
                        bytes.data() + plane.offset + y * plane.stride, plane.width);
        }
    }
}

Frame makeFrame(AVPixelFormat pixels, int width, int height) {
    auto frame = owned<Frame>(av_frame_alloc());
    frame->format = pixels;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    return frame;
}

} // namespace tarvo::apps::video::ffmpeg
