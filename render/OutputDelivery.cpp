#include "render/OutputDelivery.h"

#include "render/colour/ConvertRGB32ToYV12.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tarvo::render {
namespace {

constexpr std::size_t bytesPerPixel = 4;

std::size_t rgb32RowBytes(int width) {
    return static_cast<std::size_t>(width) * bytesPerPixel;
}

} // namespace

HRESULT COutputDelivery::visit(const MappedRows& rows) {
    const bool isDelivered = m_rowsDelivered.load(std::memory_order_relaxed) == rows.height;
    const HRESULT result = isDelivered ? S_OK : deliver(rows);
    if (m_observer != nullptr) {
        m_observer->visit(rows);
    }
    return result;
}

WritableRows COutputDelivery::rowsToFill(int width, int height) noexcept {
    const std::size_t stride = m_format.strideBytes;
    if (!takesRowsAlone() || m_format.format != PixelFormat::rgb32 || stride < rgb32RowBytes(width) ||
        !hasRoomForRgb32(width, height)) {
        return {};
    }
    const auto step = static_cast<std::ptrdiff_t>(stride);
    if (m_format.isBottomUp) {
        return {m_output.data() + static_cast<std::size_t>(height - 1) * stride, -step};
    }
    return {m_output.data(), step};
}

void COutputDelivery::rowsFinished(const MappedRows& picture, int first, int end) noexcept {
    // What cannot be delivered is not delivered in part: visit() says so.
    if (picture.data == nullptr || SUCCEEDED(deliverRows(picture, first, end))) {
        m_rowsDelivered.fetch_add(end - first, std::memory_order_relaxed);
    }
}

HRESULT COutputDelivery::deliver(const MappedRows& rows) const {
    if (m_format.format != PixelFormat::rgb32 && m_format.format != PixelFormat::yv12) {
        m_log.error("Could not convert image data to output image format.");
        return E_FAIL;
    }
    // Without pixels, because the rows were shown one by one and could not be delivered.
    if (rows.data == nullptr) {
        return E_FAIL;
    }
    return deliverRows(rows, 0, rows.height);
}

HRESULT COutputDelivery::deliverRows(const MappedRows& rows, int first, int end) const {
    switch (m_format.format) {
    case PixelFormat::rgb32:
        return deliverRgb32(rows, first, end);
    case PixelFormat::yv12:
        return deliverYv12(rows, first, end);
    case PixelFormat::yuy2:
        break;
    }
    return E_FAIL;
}

bool COutputDelivery::hasRoomForRgb32(int width, int height) const {
    const std::size_t stride = m_format.strideBytes;
    // The last row needs no room behind its pixels; with less stride than a row takes, rows are cut off.
    const std::size_t pixelBytes = std::min(rgb32RowBytes(width), stride);
    return static_cast<std::size_t>(height - 1) * stride + pixelBytes <= m_output.size();
}

HRESULT COutputDelivery::deliverRgb32(const MappedRows& rows, int first, int end) const {
    const std::size_t stride = m_format.strideBytes;
    // Rows of no bytes ask for nothing, and a buffer of none may be nowhere.
    if (stride == 0) {
        return S_OK;
    }
    if (!hasRoomForRgb32(rows.width, rows.height)) {
        return E_FAIL;
    }
    const auto height = static_cast<std::size_t>(rows.height);
    const auto firstRow = static_cast<std::size_t>(first);
    const auto endRow = static_cast<std::size_t>(end);
    // Rows that lie alike go in one piece, padding and all.
    if (rows.pitchBytes == stride && !m_format.isBottomUp && firstRow < endRow) {
        const std::size_t offset = firstRow * stride;
        std::memcpy(m_output.data() + offset, rows.data + offset,
                    std::min(endRow * stride, m_output.size()) - offset);
        return S_OK;
    }
    for (std::size_t row = firstRow; row < endRow; ++row) {
        const std::size_t offset = (m_format.isBottomUp ? height - 1 - row : row) * stride;
        std::memcpy(m_output.data() + offset, rows.data + row * rows.pitchBytes,
                    std::min({rows.pitchBytes, stride, m_output.size() - offset}));
    }
    return S_OK;
}

HRESULT COutputDelivery::deliverYv12(const MappedRows& rows, int first, int end) const {
    const std::size_t stride = m_format.strideBytes;
    const auto height = static_cast<std::size_t>(rows.height);
    // With less stride than a row takes, columns are cut off: rows that overlapped would spoil one another.
    const std::size_t width = std::min(static_cast<std::size_t>(rows.width), stride);
    if (width < 2 || height < 2) {
        return E_FAIL;
    }
    // The buffer holds luma, then the converter's plane 2, then its plane 1. A fourth of the luma added to it
    // is five fourths, without the product that could overflow.
    const std::size_t plane2 = height * stride;
    const std::size_t plane1 = plane2 + plane2 / 4;
    const std::size_t chromaStride = stride / 2;
    if (plane1 + (height / 2 - 1) * chromaStride + width / 2 > m_output.size()) {
        return E_FAIL;
    }
    // The last row of an odd height has no chroma, and no luma either.
    if (end - first < 2) {
        return S_OK;
    }
    const auto row = static_cast<std::size_t>(first);
    auto* const output = reinterpret_cast<std::uint8_t*>(m_output.data());
    const auto step = static_cast<std::ptrdiff_t>(stride);
    const auto chromaStep = static_cast<std::ptrdiff_t>(chromaStride);
    const ImageStatus status =
        ConvertRGB32ToYV12(reinterpret_cast<const std::uint8_t*>(rows.data + row * rows.pitchBytes),
                           static_cast<std::ptrdiff_t>(rows.pitchBytes),
                           {output + row * stride, output + plane1 + row / 2 * chromaStride,
                            output + plane2 + row / 2 * chromaStride},
                           {step, chromaStep, chromaStep},
                           {static_cast<std::int32_t>(width), static_cast<std::int32_t>(end - first)});
    return status == ImageStatus::done || status == ImageStatus::oddSize ? S_OK : E_FAIL;
}

} // namespace tarvo::render
