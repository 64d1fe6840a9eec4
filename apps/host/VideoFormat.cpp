#include "apps/host/VideoFormat.h"

#include <limits>
#include <new>
#include <stdexcept>

namespace tarvo::host {
namespace {

struct Row {
    FramePixels pixels;
    const GUID& subtype;
    WORD bitsPerPixel;
    DWORD compression;
};

const Row& rowOf(FramePixels pixels) {
    // A format in YUV is compressed by its four-character code, which is also the subtype's first field.
    static const Row rows[] = {{FramePixels::yv12, MEDIASUBTYPE_YV12, 12, MEDIASUBTYPE_YV12.Data1},
                               {FramePixels::yuy2, MEDIASUBTYPE_YUY2, 16, MEDIASUBTYPE_YUY2.Data1},
                               {FramePixels::rgb32, MEDIASUBTYPE_RGB32, 32, BI_RGB}};
    return rows[static_cast<std::size_t>(pixels)];
}

std::int64_t leastStride(FramePixels pixels, std::int64_t width) {
    switch (pixels) {
    case FramePixels::yv12:
        return (width + 1) / 2 * 2;
    case FramePixels::yuy2:
        return (width + 1) / 2 * 4;
    default:
        return width * 4;
    }
}

} // namespace

VideoFormat makeVideoFormat(FramePixels pixels, std::int32_t width, std::int32_t height,
                            std::int64_t ticksPerFrame, std::uint32_t strideBytes) {
    const std::int64_t rows = height < 0 ? -std::int64_t{height} : height;
    if (width < 1 || rows < 1) {
        throw std::invalid_argument("a frame has at least one pixel");
    }
    const std::int64_t least = leastStride(pixels, width);
    const std::int64_t stride = strideBytes == 0 ? least : strideBytes;
    if (stride < least || (pixels == FramePixels::yv12 && stride % 2 != 0)) {
        throw std::invalid_argument("such a stride fits no row of the frame");
    }
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    // One limit after the other, so that no product overflows.
    const std::int64_t plane = stride > most ? most + 1 : stride * rows;
    const std::int64_t bytes = pixels == FramePixels::yv12 && plane <= most ? plane / 2 * 3 : plane;
    if (bytes > most) {
        throw std::invalid_argument("the frame is too large");
    }
    return {pixels, width, height, static_cast<std::uint32_t>(bytes), ticksPerFrame};
}

com::CMediaType mediaTypeOf(const VideoFormat& format) {
    const Row& row = rowOf(format.pixels);
    VIDEOINFOHEADER header{};
    header.rcTarget.right = format.width;
    header.rcTarget.bottom = format.height < 0 ? -format.height : format.height;
    header.AvgTimePerFrame = format.ticksPerFrame;
    header.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    header.bmiHeader.biWidth = format.width;
    header.bmiHeader.biHeight = format.height;
    header.bmiHeader.biPlanes = 1;
    header.bmiHeader.biBitCount = row.bitsPerPixel;
    header.bmiHeader.biCompression = row.compression;
    header.bmiHeader.biSizeImage = format.frameBytes;
    com::CMediaType type;
    if (FAILED(type.setFormat(FORMAT_VideoInfo, header))) {
        throw std::bad_alloc();
    }
    type.fields().majortype = MEDIATYPE_Video;
    type.fields().subtype = row.subtype;
    type.fields().bFixedSizeSamples = TRUE;
    type.fields().lSampleSize = format.frameBytes;
    return type;
}

std::optional<FramePixels> pixelsOf(const DMO_MEDIA_TYPE& type) {
    for (const FramePixels pixels : {FramePixels::yv12, FramePixels::yuy2, FramePixels::rgb32}) {
        if (type.subtype == rowOf(pixels).subtype) {
            return pixels;
        }
    }
    return std::nullopt;
}

} // namespace tarvo::host
