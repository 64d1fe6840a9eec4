#include "transform/BitmapImage.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace tarvo::transform {
namespace {

constexpr std::uint64_t bitsPerPixel = 24;
constexpr std::size_t bytesPerPixel = 3;
constexpr std::size_t bytesPerSourcePixel = 4;

/// The last byte of each pixel is left out.
void convertRow(const std::byte* source, std::byte* target, std::size_t width) {
    for (std::size_t x = 0; x < width; ++x)
        std::memcpy(target + x * bytesPerPixel, source + x * bytesPerSourcePixel, bytesPerPixel);
}

} // namespace

HRESULT CBitmapImage::visit(const render::MappedRows& rows) {
    m_hasSeenPicture = true;
    if (rows.width <= 0 || rows.height <= 0 || rows.data == nullptr)
        return E_FAIL;
    const auto width = static_cast<std::uint64_t>(rows.width);
    const auto height = static_cast<std::uint64_t>(rows.height);
    const std::uint64_t stride = (width * bitsPerPixel + 31) / 8 & ~std::uint64_t{3};
    const std::uint64_t size = sizeof(BITMAPINFOHEADER) + height * stride;
    if (size > std::numeric_limits<std::uint32_t>::max())
        return E_OUTOFMEMORY;
    com::CSafeArray bytes = com::CSafeArray::vector(VT_UI1, static_cast<std::uint32_t>(size));
    const com::CSafeArrayAccess<std::uint8_t> access(bytes.get());
    if (FAILED(access.result()) || access.elements().data() == nullptr)
        return E_OUTOFMEMORY;

    BITMAPINFOHEADER header{};
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = rows.width;
    header.biHeight = rows.height;
    header.biPlanes = 1;
    header.biBitCount = bitsPerPixel;
    header.biCompression = BI_RGB;
    auto* const target = reinterpret_cast<std::byte*>(access.elements().data());
    std::memcpy(target, &header, sizeof header);
    for (std::size_t y = 0; y < height; ++y)
        convertRow(rows.data + y * rows.pitchBytes, target + sizeof header + (height - 1 - y) * stride,
                   static_cast<std::size_t>(width));
    m_bytes = std::move(bytes);
    return S_OK;
}

} // namespace tarvo::transform
