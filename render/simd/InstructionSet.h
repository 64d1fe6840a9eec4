#pragma once

namespace tarvo::render {

/// What vectorised routines may use, each level including those before it. A table of variants is indexed by
/// it.
enum class InstructionSet {
    reference, ///< plain C++, the measure of all others
    sse41,     ///< SSE4.1 and SSSE3
    avx2,      ///< AVX2
    avx512,    ///< AVX-512 F, BW and VL
};

inline constexpr int instructionSetCount = 4;

/// The highest level which both the processor and the operating system (it must save the wide registers)
/// support. Asked of the processor once per process. Any thread.
InstructionSet detectInstructionSet();

/// Name for messages, tests and benchmarks.
const char* instructionSetName(InstructionSet set);

} // namespace tarvo::render
