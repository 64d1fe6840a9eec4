#pragma once

#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software {

/// The box around some places on the grid of a table, 0 … 1 along each side; places that are no number lie
/// nowhere.
class CGridBox {
public:
    CGridBox(const float* x, const float* y, int count);

    /// Whether a table, of which `row` says everything but the places, has no weight around any place of the
    /// box: looking them up would find none. Else it may have some.
    bool isBlind(const TableRow& row) const;

private:
    /// None where the least is greater than the most.
    struct Side {
        float least;
        float most;
    };
    static Side reachOf(const float* places, int count);

    Side m_x;
    Side m_y;
};

} // namespace tarvo::render::software
