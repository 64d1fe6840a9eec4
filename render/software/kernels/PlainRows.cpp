#include "render/software/kernels/RowTable.h"

namespace tarvo::render::software {
namespace {

void sample(const SampleRow& row) {
    samplePlainly(row, 0, row.count);
}

void mixLayers(const MixRow& row) {
    mixLayersPlainly(row, 0, row.count);
}

} // namespace

constinit const RowKernels plainRows = rowsWith(packPlainly, sample, mixLayers);

} // namespace tarvo::render::software
