#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {
// Inlined wherever it is used, as that may be a file for one instruction set.
namespace {

/// Some cells of tables, by their upper left texels; none where the first is beyond the last.
struct CellBox {
    std::int32_t firstColumn;
    std::int32_t lastColumn;
    std::int32_t firstLine;
    std::int32_t lastLine;
};

/// A place along a side of the grid, in texels from the first one's centre, kept within the side. What is no
/// number lies at its beginning.
[[gnu::always_inline]] inline float keptInside(float place, float last) {
    return place > 0.0F ? (place < last ? place : last) : 0.0F;
}

/// The first of two neighbours along a side, such that there is a second wherever there are two.
[[gnu::always_inline]] inline std::int32_t firstOfTwo(float inside, int size) {
    const auto first = static_cast<std::int32_t>(inside);
    const std::int32_t last = size > 1 ? size - 2 : 0;
    return first < last ? first : last;
}

/// Whether no place in these cells finds any weight, as far as a glance tells: of several tables, most see
/// nothing in most of the view. Texels are those of TableRow, so many in a row and so many rows.
[[gnu::always_inline]] inline bool areWithoutWeight(const CellBox& cells, const float* texels,
                                                    std::ptrdiff_t pitch, int columns, int rows) {
    if (cells.firstColumn > cells.lastColumn)
        return true;
    constexpr int glance = 64;
    const int endColumn = cells.lastColumn + 2 < columns ? cells.lastColumn + 2 : columns;
    const int endLine = cells.lastLine + 2 < rows ? cells.lastLine + 2 : rows;
    if ((endColumn - cells.firstColumn) * (endLine - cells.firstLine) > glance)
        return false;
    for (int line = cells.firstLine; line < endLine; ++line) {
        const float* const first = texels + line * pitch * 4;
        for (int column = cells.firstColumn; column < endColumn; ++column) {
            if (first[column * 4 + 2] > 0.0F)
                return false;
        }
    }
    return true;
}

} // namespace
} // namespace tarvo::render::software
