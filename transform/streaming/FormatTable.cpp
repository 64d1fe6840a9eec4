#include "transform/streaming/FormatTable.h"

#include <algorithm>
#include <array>

namespace tarvo::transform {
namespace {

using render::PixelFormat;

constexpr std::uint32_t code(PixelFormat format) {
    return static_cast<std::uint32_t>(format);
}

constexpr StreamFormat yuy2{"YUY2", &MEDIASUBTYPE_YUY2, PixelFormat::yuy2, 16, code(PixelFormat::yuy2)};
constexpr StreamFormat yv12{"YV12", &MEDIASUBTYPE_YV12, PixelFormat::yv12, 12, code(PixelFormat::yv12)};
constexpr StreamFormat rgb32{"RGB32", &MEDIASUBTYPE_RGB32, PixelFormat::rgb32, 32, BI_RGB};

constexpr std::array inputs{yuy2, yv12, rgb32};
constexpr std::array outputs{yv12, rgb32};

} // namespace

std::uint64_t StreamFormat::packedFrameBytes(std::uint64_t width, std::uint64_t height) const {
    if (pixelFormat == PixelFormat::yv12)
        return width * height + 2 * (width / 2) * (height / 2);
    return width * height * (bitsPerPixel / 8);
}

std::uint32_t StreamFormat::strideBytes(std::uint32_t frameBytes, std::uint32_t height) const {
    const std::uint64_t rowBytes = frameBytes / height;
    // A row of YV12 counts 12 bits a pixel, 8 of them luma.
    return static_cast<std::uint32_t>(pixelFormat == PixelFormat::yv12 ? rowBytes * 8 / 12 : rowBytes);
}

std::span<const StreamFormat> inputFormats() {
    return inputs;
}

std::span<const StreamFormat> outputFormats() {
    return outputs;
}

const StreamFormat* findFormat(std::span<const StreamFormat> formats, const GUID& subtype) {
    const auto found =
        std::ranges::find_if(formats, [&](const StreamFormat& format) { return *format.subtype == subtype; });
    return found == formats.end() ? nullptr : &*found;
}

} // namespace tarvo::transform
