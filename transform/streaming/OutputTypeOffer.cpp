#include "transform/streaming/OutputTypeOffer.h"

#include "com/MediaType.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace tarvo::transform {
namespace {

/// What both kinds of header share; all else is zero.
template<class Header>
Header makeHeader(const StreamFormat& format, std::uint32_t width, std::uint32_t height,
                  std::int64_t ticksPerFrame, std::uint32_t imageBytes) {
    Header header;
    std::memset(&header, 0, sizeof(header));
    header.rcTarget.right = static_cast<LONG>(width);
    header.rcTarget.bottom = static_cast<LONG>(height);
    header.AvgTimePerFrame = ticksPerFrame;
    BITMAPINFOHEADER& bitmap = header.bmiHeader;
    bitmap.biSize = sizeof(BITMAPINFOHEADER);
    bitmap.biWidth = static_cast<LONG>(width);
    bitmap.biHeight = static_cast<LONG>(height);
    bitmap.biPlanes = 1;
    bitmap.biBitCount = format.bitsPerPixel;
    bitmap.biCompression = format.compression;
    bitmap.biSizeImage = imageBytes;
    return header;
}

} // namespace

AspectRatio reducedAspect(AspectRatio aspect) {
    constexpr std::array<std::uint32_t, 8> primes{2, 3, 5, 7, 11, 13, 17, 19};
    while (aspect.x > 1 && aspect.y >= 2) {
        const auto common = std::ranges::find_if(
            primes, [&](std::uint32_t prime) { return aspect.x % prime == 0 && aspect.y % prime == 0; });
        if (common == primes.end())
            break;
        aspect.x /= *common;
        aspect.y /= *common;
    }
    return aspect;
}

HRESULT makeOutputType(const StreamFormat& format, std::uint32_t width, std::uint32_t height,
                       std::int64_t ticksPerFrame, bool hasAspect, DMO_MEDIA_TYPE& type) {
    // A frame beyond what the field can say is beyond what anybody can allocate, too.
    const std::uint64_t pixels = std::uint64_t{width} * height;
    const std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t frameBytes =
        pixels > std::numeric_limits<std::uint64_t>::max() / 32 ? largest : pixels * format.bitsPerPixel / 8;
    const auto imageBytes = static_cast<std::uint32_t>(std::min(frameBytes, largest));

    com::CMediaType made;
    HRESULT result = S_OK;
    if (hasAspect) {
        auto header = makeHeader<VIDEOINFOHEADER2>(format, width, height, ticksPerFrame, imageBytes);
        const AspectRatio aspect = reducedAspect({width, height});
        header.dwPictAspectRatioX = aspect.x;
        header.dwPictAspectRatioY = aspect.y;
        result = made.setFormat(FORMAT_VideoInfo2, header);
    } else {
        result = made.setFormat(
            FORMAT_VideoInfo, makeHeader<VIDEOINFOHEADER>(format, width, height, ticksPerFrame, imageBytes));
    }
    if (SUCCEEDED(result)) {
        made.fields().majortype = MEDIATYPE_Video;
        made.fields().subtype = *format.subtype;
        made.fields().bFixedSizeSamples = TRUE;
        made.fields().lSampleSize = imageBytes;
    } else {
        made.reset();
    }
    type = made.detach();
    return result;
}

} // namespace tarvo::transform
