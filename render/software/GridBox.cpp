#include "render/software/GridBox.h"

#include "render/software/kernels/TableCells.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarvo::render::software {

CGridBox::CGridBox(const float* x, const float* y, int count)
    : m_x(reachOf(x, count)), m_y(reachOf(y, count)) {}

CGridBox::Side CGridBox::reachOf(const float* places, int count) {
    // Several at once, which compilers turn into vectors.
    constexpr int lanes = 8;
    float low[lanes];
    float high[lanes];
    std::fill_n(low, lanes, std::numeric_limits<float>::infinity());
    std::fill_n(high, lanes, -std::numeric_limits<float>::infinity());
    const auto widen = [&](int lane, float place) {
        low[lane] = place < low[lane] ? place : low[lane];
        high[lane] = place > high[lane] ? place : high[lane];
    };
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        for (int lane = 0; lane < lanes; ++lane)
            widen(lane, places[i + lane]);
    }
    for (; i < count; ++i)
        widen(0, places[i]);
    return {*std::min_element(low, low + lanes), *std::max_element(high, high + lanes)};
}

bool CGridBox::isBlind(const TableRow& row) const {
    if (!(m_x.least <= m_x.most && m_y.least <= m_y.most))
        return true;
    const float left = m_x.least * row.scaleX + row.originX;
    const float right = m_x.most * row.scaleX + row.originX;
    const float top = m_y.least * row.scaleY + row.originY;
    const float bottom = m_y.most * row.scaleY + row.originY;
    if (std::isnan(left + right + top + bottom))
        return false;
    // Products and sums are rounded such that they keep their order, so that no place in between finds a cell
    // beyond these.
    const auto cellAt = [](float place, int size) {
        return firstOfTwo(keptInside(place, static_cast<float>(size - 1)), size);
    };
    return areWithoutWeight(
        {cellAt(std::min(left, right), row.columns), cellAt(std::max(left, right), row.columns),
         cellAt(std::min(top, bottom), row.rows), cellAt(std::max(top, bottom), row.rows)},
        row.texels, row.pitch, row.columns, row.rows);
}

} // namespace tarvo::render::software
