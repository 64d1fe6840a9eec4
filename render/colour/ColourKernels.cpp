#include "render/colour/ColourKernels.h"

#include <array>

namespace tarvo::render {
namespace {

constexpr ColourKernels referenceKernels{};

constexpr ColourKernels sse41Kernels{sse41::rgb32ToYv12, sse41::swapReversed24, sse41::swapBytes,
                                     sse41::yv12ToBgra,  sse41::yuy2ToBgra,     &referenceKernels};

constexpr ColourKernels avx2Kernels{avx2::rgb32ToYv12, avx2::swapReversed24, avx2::swapBytes,
                                    avx2::yv12ToBgra,  avx2::yuy2ToBgra,     &sse41Kernels};

// Mirroring moves bytes and computes nothing; still wider vectors gain nothing there.
constexpr ColourKernels avx512Kernels{avx512::rgb32ToYv12, nullptr,     nullptr, avx512::yv12ToBgra,
                                      avx512::yuy2ToBgra,  &avx2Kernels};

constexpr std::array<const ColourKernels*, instructionSetCount> table{&referenceKernels, &sse41Kernels,
                                                                      &avx2Kernels, &avx512Kernels};

} // namespace

const ColourKernels& colourKernels(InstructionSet set) {
    return *table[static_cast<std::size_t>(set)];
}

const ColourKernels& colourKernels() {
    return colourKernels(detectInstructionSet());
}

} // namespace tarvo::render
