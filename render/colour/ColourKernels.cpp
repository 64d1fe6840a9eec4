#include "render/colour/ColourKernels.h"

#include <array>

namespace tarvo::render {
namespace {

constexpr std::array<const ColourKernels*, instructionSetCount> table{&plainKernels, &sse41Kernels,
                                                                      &avx2Kernels, &avx512Kernels};

} // namespace

constinit const ColourKernels plainKernels{};

const ColourKernels& colourKernels(InstructionSet set) {
    return *table[static_cast<std::size_t>(set)];
}

const ColourKernels& colourKernels() {
    return colourKernels(detectInstructionSet());
}

} // namespace tarvo::render
