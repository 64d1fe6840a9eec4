#include "render/software/kernels/RowTable.h"

namespace tarvo::render::software {
namespace {

void sample(const SampleBlock& block) {
    for (int row = 0; row < block.rows; ++row)
        samplePlainly(block, row, 0, block.count);
}

void mixLayers(const MixRow& row) {
    mixLayersPlainly(row, 0, row.count);
}

} // namespace

constinit const RowKernels plainRows = rowsWith(packPlainly, sample, mixLayers);

} // namespace tarvo::render::software
