#include "render/InputUpload.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <exception>

namespace tarvo::render {
namespace {

constexpr std::size_t bytesPerPixel = 4;
constexpr std::array<Surface, 3> planeSurfaces{Surface::yPlane, Surface::crPlane, Surface::cbPlane};

} // namespace

bool CInputUpload::RowLayout::fitsInto(std::size_t byteCount) const {
    return rowCount == 0 || (rowCount - 1) * stepBytes + rowBytes <= byteCount;
}

SourceRows CInputUpload::RowLayout::rowsOf(std::span<const std::byte> bytes) const {
    const auto step = static_cast<std::ptrdiff_t>(stepBytes);
    const std::size_t first = isBottomUp && rowCount > 0 ? (rowCount - 1) * stepBytes : 0;
    return {bytes.data() + first, isBottomUp ? -step : step, rowBytes, static_cast<int>(rowCount), true};
}

void CInputUpload::upload(IRenderDevice& device, const InputFormat& format,
                          std::span<const std::byte> frame) {
    switch (format.format) {
    case PixelFormat::yv12:
        uploadPlanes(device, format, frame);
        break;
    case PixelFormat::yuy2: {
        // One long row, whatever the stride: the program counts on rows without gaps.
        const std::size_t size = std::min<std::size_t>(format.frameBytes, frame.size());
        device.upload(Surface::packedInput, {frame.data(), 0, size, 1, true});
        break;
    }
    case PixelFormat::rgb32: {
        const std::size_t rowBytes =
            std::min<std::size_t>(format.strideBytes, static_cast<std::size_t>(format.width) * bytesPerPixel);
        uploadRows(
            device, Surface::inputPicture, frame,
            {format.strideBytes, rowBytes, static_cast<std::size_t>(format.height), format.isBottomUp});
        break;
    }
    }
}

void CInputUpload::uploadPlanes(IRenderDevice& device, const InputFormat& format,
                                std::span<const std::byte> frame) {
    std::size_t offset = 0;
    for (int i = 0; i < static_cast<int>(planeSurfaces.size()); ++i) {
        const PlaneFormat plane = yv12Plane(format, i);
        const HRESULT result = uploadRows(device, planeSurfaces[static_cast<std::size_t>(i)],
                                          frame.subspan(std::min(offset, frame.size())),
                                          {plane.strideBytes, plane.width, plane.height, false});
        if (FAILED(result)) {
            return;
        }
        offset += plane.planeBytes;
    }
}

HRESULT CInputUpload::uploadRows(IRenderDevice& device, Surface surface, std::span<const std::byte> bytes,
                                 const RowLayout& layout) {
    if (layout.fitsInto(bytes.size())) {
        return device.upload(surface, layout.rowsOf(bytes));
    }
    try {
        complete(bytes, layout);
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
    const RowLayout tight{layout.rowBytes, layout.rowBytes, layout.rowCount, layout.isBottomUp};
    const HRESULT result = device.upload(surface, tight.rowsOf(m_completed));
    device.keepInput(); // the next surface may want the same memory
    return result;
}

void CInputUpload::complete(std::span<const std::byte> bytes, const RowLayout& layout) {
    m_completed.assign(layout.rowCount * layout.rowBytes, std::byte{0});
    for (std::size_t row = 0; row < layout.rowCount && row * layout.stepBytes < bytes.size(); ++row) {
        const auto rest = bytes.subspan(row * layout.stepBytes);
        std::memcpy(m_completed.data() + row * layout.rowBytes, rest.data(),
                    std::min(layout.rowBytes, rest.size()));
    }
}

} // namespace tarvo::render
