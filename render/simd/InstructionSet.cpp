#include "render/simd/InstructionSet.h"

namespace tarvo::render {
namespace {

InstructionSet askProcessor() {
    // The compilers' run-time library reads CPUID and, for the AVX levels, also XGETBV: a set whose registers
    // the operating system does not save counts as absent.
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("ssse3") || !__builtin_cpu_supports("sse4.1"))
        return InstructionSet::reference;
    if (!__builtin_cpu_supports("avx2"))
        return InstructionSet::sse41;
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512bw") ||
        !__builtin_cpu_supports("avx512vl"))
        return InstructionSet::avx2;
    return InstructionSet::avx512;
}

} // namespace

InstructionSet detectInstructionSet() {
    static const InstructionSet detected = askProcessor();
    return detected;
}

const char* instructionSetName(InstructionSet set) {
    switch (set) {
    case InstructionSet::reference:
        return "reference";
    case InstructionSet::sse41:
        return "sse41";
    case InstructionSet::avx2:
        return "avx2";
    case InstructionSet::avx512:
        return "avx512";
    }
    return "unknown";
}

} // namespace tarvo::render
