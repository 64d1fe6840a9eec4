#pragma once

#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software::plain {

void pack(const PackRow& row);
void sample(const SampleRow& row);

} // namespace tarvo::render::software::plain
