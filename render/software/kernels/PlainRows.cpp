#include "render/software/kernels/PositionRows.h"

namespace tarvo::render::software {
namespace {

void sample(const SampleRow& row) {
    samplePlainly(row, 0, row.count);
}

} // namespace

constinit const RowKernels plainRows = rowsWith(packPlainly, sample);

} // namespace tarvo::render::software
