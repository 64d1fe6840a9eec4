#include "transform/streaming/VideoFormat.h"

#include <cstddef>
#include <cstring>

namespace tarvo::transform {
namespace {

template<class Header>
std::optional<VideoFormat> readHeader(const DMO_MEDIA_TYPE& type) {
    const std::size_t blockBytes = type.cbFormat;
    if (type.pbFormat == nullptr || blockBytes < sizeof(Header))
        return std::nullopt;
    // Copied, because nothing says that the block is aligned.
    Header header;
    std::memcpy(&header, type.pbFormat, sizeof(Header));
    const BITMAPINFOHEADER& bitmap = header.bmiHeader;
    if (bitmap.biSize > blockBytes - offsetof(Header, bmiHeader))
        return std::nullopt;
    const RECT& target = header.rcTarget;
    return VideoFormat{header.AvgTimePerFrame, bitmap.biWidth, bitmap.biHeight, bitmap.biSizeImage,
                       std::int64_t{target.right} - target.left};
}

} // namespace

std::optional<VideoFormat> readVideoFormat(const DMO_MEDIA_TYPE& type) {
    if (type.formattype == FORMAT_VideoInfo)
        return readHeader<VIDEOINFOHEADER>(type);
    if (type.formattype == FORMAT_VideoInfo2)
        return readHeader<VIDEOINFOHEADER2>(type);
    return std::nullopt;
}

} // namespace tarvo::transform
