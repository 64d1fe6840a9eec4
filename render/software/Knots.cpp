#include "render/software/Knots.h"

#include "render/software/TouchedTiles.h"

#include <algorithm>
#include <limits>

namespace tarvo::render::software {
namespace {

/// Far enough from the edges for what the reach is uncertain by.
bool isWithin(const Reach& reach, int size) {
    constexpr float margin = 2.0F;
    const float least = *std::min_element(reach.least, reach.least + Reach::count);
    const float most = *std::max_element(reach.most, reach.most + Reach::count);
    return least >= margin && most <= static_cast<float>(size) - margin;
}

} // namespace

void CKnots::project(const VertexValues& values, int firstRow, int endRow, int x, int right) noexcept {
    const SampledWindow& window = m_positions.window;
    alignas(alignment) float u[bandHeight * mostColumns];
    alignas(alignment) float v[bandHeight * mostColumns];
    const int pieces = std::min((right - x + pieceLength - 1) / pieceLength, mostPieces);
    m_columns = (pieces - 1) * perPiece + knotCount;
    // The centres of every knotDistance-th pixel, counted from the knot before the first piece.
    const auto atKnots = [x](const LinearRow& row) -> LinearRow {
        const double step = row.perColumn * knotDistance;
        return {row.atLeftEdge + row.perColumn * (x - knotDistance + 0.5) - 0.5 * step, step};
    };
    for (int y = firstRow; y < endRow; ++y) {
        const int row = (y - firstRow) * m_columns;
        m_kernels.interpolate(atKnots(alongRow(values.u, y)), 0, m_columns, u + row);
        m_kernels.interpolate(atKnots(alongRow(values.v, y)), 0, m_columns, v + row);
    }
    m_positions.kernel(m_positions.record.bytes.data(), {u, v, (endRow - firstRow) * m_columns},
                       {m_x, m_y, static_cast<float>(window.width), static_cast<float>(window.height)});
}

bool CKnots::spread(const Block& block, int row, float* x, float* y) noexcept {
    const int knot = row * m_columns + pieceOf(block) * perPiece;
    if (row == 0) {
        reachNothing();
        m_isInside = true;
    } else if (isTorn(m_x, knot + 1) || isTorn(m_y, knot + 1)) {
        touch(block.columns);
        reachNothing();
    }
    if (!m_kernels.spread(m_x + knot, m_y + knot, block.columns, x, y))
        return false;
    m_kernels.widen(m_x + knot, m_reachX);
    m_kernels.widen(m_y + knot, m_reachY);
    return true;
}

void CKnots::touch(int columns) noexcept {
    const SampledWindow& window = m_positions.window;
    touchTiles(window, m_reachX, m_reachY, columns, m_positions.isBounded, m_tiles);
    m_isInside = m_isInside && isWithin(m_reachX, window.width) && isWithin(m_reachY, window.height);
}

bool CKnots::isTorn(const float* knots, int knot) const {
    constexpr float most = tileWidth;
    const float step = knots[knot] - knots[knot - m_columns];
    return !(step > -most && step < most); // what is no number is torn
}

void CKnots::reachNothing() {
    for (Reach* const reach : {&m_reachX, &m_reachY}) {
        std::fill_n(reach->least, Reach::count, std::numeric_limits<float>::infinity());
        std::fill_n(reach->most, Reach::count, -std::numeric_limits<float>::infinity());
    }
}

} // namespace tarvo::render::software
