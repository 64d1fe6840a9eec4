#pragma once

// For every file that is compiled for one instruction set: see PositionRows.h.

#include "render/software/kernels/PositionRows.h"
#include "render/software/kernels/TableCells.h"

namespace tarvo::render::software {
namespace {

// Compilers know vectors of a given length for every instruction set, and split those that it does not have.
// An entry is four channels, and there are always two of them side by side.
using FourFloats [[gnu::vector_size(16)]] = float;
using EightFloats [[gnu::vector_size(32)]] = float;

/// The cells of a table around some places, and what is found there.
struct TableCells {
    static constexpr int most = 32;

    alignas(64) std::int32_t texels[most]; ///< the upper left one
    alignas(64) float sharesX[most];
    alignas(64) float sharesY[most];
    alignas(64) float doubts[most]; ///< 0, or no number where the place is none
    alignas(64) float x[most];      ///< of the entries, words
    alignas(64) float y[most];
    alignas(64) float weights[most];
    CellBox box; ///< of those that are somewhere
};

/// Beyond every cell.
constexpr std::int32_t noCell = 1 << 20;

void findCells(const TableRow& row, int begin, int count, TableCells& cells) {
    const float* __restrict const x = row.x + begin;
    const float* __restrict const y = row.y + begin;
    const auto lastX = static_cast<float>(row.columns - 1);
    const auto lastY = static_cast<float>(row.rows - 1);
    const auto pitch = static_cast<std::int32_t>(row.pitch);
    const int columns = row.columns;
    const int rows = row.rows;
    const float scaleX = row.scaleX;
    const float scaleY = row.scaleY;
    const float originX = row.originX;
    const float originY = row.originY;
    std::int32_t firstColumn = noCell;
    std::int32_t firstLine = noCell;
    std::int32_t lastColumn = -1;
    std::int32_t lastLine = -1;
    for (int i = 0; i < count; ++i) {
        const float fromX = x[i] * scaleX + originX;
        const float fromY = y[i] * scaleY + originY;
        const float insideX = keptInside(fromX, lastX);
        const float insideY = keptInside(fromY, lastY);
        const std::int32_t column = firstOfTwo(insideX, columns);
        const std::int32_t line = firstOfTwo(insideY, rows);
        cells.texels[i] = line * pitch + column;
        cells.sharesX[i] = insideX - static_cast<float>(column);
        cells.sharesY[i] = insideY - static_cast<float>(line);
        const bool isSomewhere = (fromX == fromX) & (fromY == fromY);
        cells.doubts[i] = isSomewhere ? 0.0F : nowhere;
        const std::int32_t leastColumn = isSomewhere ? column : noCell;
        const std::int32_t leastLine = isSomewhere ? line : noCell;
        const std::int32_t mostColumn = isSomewhere ? column : -1;
        const std::int32_t mostLine = isSomewhere ? line : -1;
        firstColumn = leastColumn < firstColumn ? leastColumn : firstColumn;
        firstLine = leastLine < firstLine ? leastLine : firstLine;
        lastColumn = mostColumn > lastColumn ? mostColumn : lastColumn;
        lastLine = mostLine > lastLine ? mostLine : lastLine;
    }
    cells.box = {firstColumn, lastColumn, firstLine, lastLine};
    // Cells are mixed four at a time.
    for (int i = count; i % 4 != 0; ++i) {
        cells.texels[i] = 0;
        cells.sharesX[i] = cells.sharesY[i] = 0.0F;
    }
}

void storeNothing(const TableRow& row, int begin, int count) {
    for (int i = begin; i < begin + count; ++i) {
        row.positionX[i] = row.positionY[i] = nowhere;
        row.weights[i] = 0;
    }
}

/// The entry of one place.
[[gnu::always_inline]] inline FourFloats mixCell(const TableRow& row, const TableCells& cells, int i) {
    // A lone row is its own neighbour; a lone column has what pads it as one, of which nothing counts.
    const std::ptrdiff_t down = row.rows > 1 ? row.pitch * 4 : 0;
    const float* const texel = row.texels + static_cast<std::ptrdiff_t>(cells.texels[i]) * 4;
    EightFloats upper;
    EightFloats lower;
    __builtin_memcpy(&upper, texel, sizeof(upper));
    __builtin_memcpy(&lower, texel + down, sizeof(lower));
    const EightFloats both = upper + (lower - upper) * cells.sharesY[i];
    const FourFloats left = __builtin_shufflevector(both, both, 0, 1, 2, 3);
    const FourFloats right = __builtin_shufflevector(both, both, 4, 5, 6, 7);
    return left + (right - left) * cells.sharesX[i];
}

void mixCells(const TableRow& row, int count, TableCells& cells) {
    // Four at a time, and then channel by channel.
    for (int i = 0; i < count; i += 4) {
        const FourFloats a = mixCell(row, cells, i);
        const FourFloats b = mixCell(row, cells, i + 1);
        const FourFloats c = mixCell(row, cells, i + 2);
        const FourFloats d = mixCell(row, cells, i + 3);
        const FourFloats placesAB = __builtin_shufflevector(a, b, 0, 4, 1, 5);
        const FourFloats placesCD = __builtin_shufflevector(c, d, 0, 4, 1, 5);
        const FourFloats x = __builtin_shufflevector(placesAB, placesCD, 0, 1, 4, 5);
        const FourFloats y = __builtin_shufflevector(placesAB, placesCD, 2, 3, 6, 7);
        const FourFloats weights = __builtin_shufflevector(
            __builtin_shufflevector(a, b, 2, 6, 2, 6), __builtin_shufflevector(c, d, 2, 6, 2, 6), 0, 1, 4, 5);
        __builtin_memcpy(cells.x + i, &x, sizeof(x));
        __builtin_memcpy(cells.y + i, &y, sizeof(y));
        __builtin_memcpy(cells.weights + i, &weights, sizeof(weights));
    }
}

/// Whether any counts, and whether any does but not fully.
struct SeenWeights {
    std::uint32_t any = 0;
    std::uint32_t partial = 0;
};

void storeEntries(const TableRow& row, int begin, int count, const TableCells& cells, SeenWeights& seen) {
    constexpr float wordUnit = 1.0F / 65535.0F;
    const float* __restrict const doubts = cells.doubts;
    const float* __restrict const foundX = cells.x;
    const float* __restrict const foundY = cells.y;
    const float* __restrict const foundWeights = cells.weights;
    float* __restrict const positionX = row.positionX + begin;
    float* __restrict const positionY = row.positionY + begin;
    std::uint16_t* __restrict const weights = row.weights + begin;
    const float unitX = row.width * wordUnit;
    const float unitY = row.height * wordUnit;
    std::uint32_t any = 0;
    std::uint32_t partial = 0;
    for (int i = 0; i < count; ++i) {
        const auto found = static_cast<std::int32_t>(foundWeights[i] + 0.5F);
        const std::int32_t weight = doubts[i] == 0.0F ? found : 0;
        positionX[i] = weight != 0 ? foundX[i] * unitX : nowhere;
        positionY[i] = weight != 0 ? foundY[i] * unitY : nowhere;
        weights[i] = static_cast<std::uint16_t>(weight);
        any |= static_cast<std::uint32_t>(weight);
        partial |= ((weight != 0) & (weight != fullWeight)) ? 1U : 0U;
    }
    seen.any |= any;
    seen.partial |= partial;
}

TableWeights lookUp(const TableRow& row) {
    TableCells cells;
    SeenWeights seen;
    for (int begin = 0; begin < row.count; begin += TableCells::most) {
        const int left = row.count - begin;
        const int count = left < TableCells::most ? left : TableCells::most;
        findCells(row, begin, count, cells);
        if (areWithoutWeight(cells.box, row.texels, row.pitch, row.columns, row.rows)) {
            storeNothing(row, begin, count);
            continue;
        }
        mixCells(row, count, cells);
        storeEntries(row, begin, count, cells, seen);
    }
    if (seen.any == 0)
        return TableWeights::none;
    return seen.partial == 0 ? TableWeights::full : TableWeights::any;
}

} // namespace
} // namespace tarvo::render::software
