#include "render/d3d11/RowCopy.h"

#include <algorithm>
#include <cstring>

namespace tarvo::render::d3d11 {

void copyRows(const SourceRows& from, const MappedSurface& to) {
    const std::size_t copied = from.data == nullptr ? 0 : std::min(from.rowBytes, to.rowBytes);
    const int coveredRows = copied == 0 ? 0 : std::clamp(from.rowCount, 0, to.rowCount);
    const auto pitch = static_cast<std::ptrdiff_t>(to.pitchBytes);
    int row = 0;
    // What lies between rows is part of either memory and of no picture: it may come along. Behind the last
    // row there may be nothing.
    if (coveredRows > 0 && from.stepBytes == pitch && copied == to.rowBytes) {
        std::memcpy(to.data, from.data, static_cast<std::size_t>(coveredRows - 1) * to.pitchBytes + copied);
        row = coveredRows;
    }
    for (; row < coveredRows; ++row) {
        std::byte* const target = to.data + row * pitch;
        std::memcpy(target, from.data + row * from.stepBytes, copied);
        std::memset(target + copied, 0, to.rowBytes - copied);
    }
    for (; row < to.rowCount; ++row)
        std::memset(to.data + row * pitch, 0, to.rowBytes);
}

} // namespace tarvo::render::d3d11
