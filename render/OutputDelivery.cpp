#include "render/OutputDelivery.h"

#include "render/colour/ConvertRGB32ToYV12.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tarvo::render {
namespace {

constexpr std::size_t bytesPerPixel = 4;

} // namespace

HRESULT COutputDelivery::visit(const MappedRows& rows) {
    const HRESULT result = deliver(rows);
    if (m_observer != nullptr) {
        m_observer->visit(rows);
    }
    return result;
}

HRESULT COutputDelivery::deliver(const MappedRows& rows) const {
    switch (m_format.format) {
    case PixelFormat::rgb32:
        return deliverRgb32(rows);
    case PixelFormat::yv12:
        return deliverYv12(rows);
    case PixelFormat::yuy2:
        break;
    }
    m_log.error("Could not convert image data to output image format.");
    return E_FAIL;
}

HRESULT COutputDelivery::deliverRgb32(const MappedRows& rows) const {
    const std::size_t stride = m_format.strideBytes;
    // Rows of no bytes ask for nothing, and a buffer of none may be nowhere.
    if (stride == 0) {
        return S_OK;
    }
    const auto height = static_cast<std::size_t>(rows.height);
    const std::size_t lastRow = (height - 1) * stride;
    // The last row needs no room behind its pixels; with less stride than a row takes, rows are cut off.
    const std::size_t pixelBytes = std::min(static_cast<std::size_t>(rows.width) * bytesPerPixel, stride);
    if (lastRow + pixelBytes > m_output.size()) {
        return E_FAIL;
    }
    if (rows.pitchBytes == stride && !m_format.isBottomUp) {
        std::memcpy(m_output.data(), rows.data, std::min(height * stride, m_output.size()));
        return S_OK;
    }
    for (std::size_t row = 0; row < height; ++row) {
        const std::size_t offset = (m_format.isBottomUp ? height - 1 - row : row) * stride;
        std::memcpy(m_output.data() + offset, rows.data + row * rows.pitchBytes,
                    std::min({rows.pitchBytes, stride, m_output.size() - offset}));
    }
    return S_OK;
}

HRESULT COutputDelivery::deliverYv12(const MappedRows& rows) const {
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
    auto* const output = reinterpret_cast<std::uint8_t*>(m_output.data());
    const auto step = static_cast<std::ptrdiff_t>(stride);
    const auto chromaStep = static_cast<std::ptrdiff_t>(chromaStride);
    const ImageStatus status = ConvertRGB32ToYV12(
        reinterpret_cast<const std::uint8_t*>(rows.data), static_cast<std::ptrdiff_t>(rows.pitchBytes),
        {output, output + plane1, output + plane2}, {step, chromaStep, chromaStep},
        {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)});
    return status == ImageStatus::done || status == ImageStatus::oddSize ? S_OK : E_FAIL;
}

} // namespace tarvo::render
