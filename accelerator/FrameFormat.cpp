#include "accelerator/FrameFormat.h"

#include <cstddef>
#include <cstdlib>

namespace tarvo::accelerator {
namespace {

template<class Format>
const Format* formatAs(const AM_MEDIA_TYPE& type, REFGUID formatType) noexcept {
    if (type.formattype != formatType || type.pbFormat == nullptr || type.cbFormat < sizeof(Format))
        return nullptr;
    return reinterpret_cast<const Format*>(type.pbFormat);
}

static_assert(offsetof(VIDEOINFOHEADER, bmiHeader) == 48 && offsetof(VIDEOINFOHEADER2, bmiHeader) == 72);
static_assert(offsetof(VIDEOINFOHEADER, AvgTimePerFrame) == offsetof(VIDEOINFOHEADER2, AvgTimePerFrame));

std::int64_t bytesOfRows(const BITMAPINFOHEADER& header) noexcept {
    const std::int64_t rowBits = std::abs(std::int64_t{header.biWidth}) * header.biBitCount;
    return (rowBits + 31) / 32 * 4 * std::abs(std::int64_t{header.biHeight});
}

} // namespace

const BITMAPINFOHEADER* bitmapHeader(const AM_MEDIA_TYPE& type) noexcept {
    if (const auto* format = formatAs<VIDEOINFOHEADER>(type, FORMAT_VideoInfo); format != nullptr)
        return &format->bmiHeader;
    if (const auto* format = formatAs<VIDEOINFOHEADER2>(type, FORMAT_VideoInfo2); format != nullptr)
        return &format->bmiHeader;
    return nullptr;
}

std::optional<FrameFormat> readFrameFormat(const AM_MEDIA_TYPE& type) noexcept {
    const BITMAPINFOHEADER* const header = bitmapHeader(type);
    if (header == nullptr)
        return std::nullopt;
    FrameFormat format;
    format.subtype = type.subtype;
    format.imageBytes = header->biSizeImage != 0 ? std::int64_t{header->biSizeImage} : bytesOfRows(*header);
    format.height = std::abs(std::int64_t{header->biHeight});
    format.isBottomUp = header->biHeight > 0;
    // It lies at the same place in both.
    format.frameDuration100ns = reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat)->AvgTimePerFrame;
    return format;
}

} // namespace tarvo::accelerator
