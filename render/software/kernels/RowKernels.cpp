#include "render/software/kernels/RowKernels.h"

#include <array>

namespace tarvo::render::software {

const RowKernels& rowKernels(InstructionSet set) {
    static constexpr std::array<const RowKernels*, instructionSetCount> table{&plainRows, &sse41Rows,
                                                                              &avx2Rows, &avx512Rows};
    return *table[static_cast<std::size_t>(set)];
}

const RowKernels& rowKernels() {
    return rowKernels(detectInstructionSet());
}

} // namespace tarvo::render::software
