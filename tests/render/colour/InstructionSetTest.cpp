#include "render/simd/InstructionSet.h"

#include <gtest/gtest.h>

#include <cpuid.h>
#include <cstdint>

namespace tarvo::render {
namespace {

/// What CPUID and XGETBV say, read bit by bit after the processors' manual.
struct Processor {
    unsigned leaf1Ecx = 0;
    unsigned leaf7Ebx = 0;
    std::uint32_t savedState = 0; ///< which registers the operating system saves

    Processor() {
        unsigned eax = 0;
        unsigned ebx = 0;
        unsigned ecx = 0;
        unsigned edx = 0;
        if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0)
            leaf1Ecx = ecx;
        if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0)
            leaf7Ebx = ebx;
        if (bit(leaf1Ecx, 27)) { // OSXSAVE: XGETBV may be asked
            std::uint32_t high = 0;
            __asm__("xgetbv" : "=a"(savedState), "=d"(high) : "c"(0));
        }
    }

    static bool bit(unsigned value, int number) { return ((value >> number) & 1U) != 0; }

    bool hasSse41() const { return bit(leaf1Ecx, 9) && bit(leaf1Ecx, 19); } // SSSE3, SSE4.1
    bool hasAvx2() const { return bit(leaf7Ebx, 5) && (savedState & 0x6U) == 0x6U; }
    bool hasAvx512() const { // F, BW, VL; XMM, YMM, mask and both kinds of ZMM state
        return bit(leaf7Ebx, 16) && bit(leaf7Ebx, 30) && bit(leaf7Ebx, 31) && (savedState & 0xE6U) == 0xE6U;
    }
};

TEST(InstructionSet, isWhatTheProcessorAndTheSystemSupport) {
    const Processor processor;
    const InstructionSet detected = detectInstructionSet();
    EXPECT_EQ(detected >= InstructionSet::sse41, processor.hasSse41());
    EXPECT_EQ(detected >= InstructionSet::avx2, processor.hasSse41() && processor.hasAvx2());
    EXPECT_EQ(detected >= InstructionSet::avx512,
              processor.hasSse41() && processor.hasAvx2() && processor.hasAvx512());
}

TEST(InstructionSet, everyLevelHasItsName) {
    EXPECT_STREQ(instructionSetName(InstructionSet::reference), "reference");
    EXPECT_STREQ(instructionSetName(InstructionSet::sse41), "sse41");
    EXPECT_STREQ(instructionSetName(InstructionSet::avx2), "avx2");
    EXPECT_STREQ(instructionSetName(InstructionSet::avx512), "avx512");
    EXPECT_EQ(static_cast<int>(InstructionSet::avx512) + 1, instructionSetCount);
}

} // namespace
} // namespace tarvo::render
