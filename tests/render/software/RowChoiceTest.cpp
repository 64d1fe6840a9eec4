#include "render/software/kernels/RowKernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace tarvo::render::software {
namespace {

void quick(const SampleBlock& /*block*/) {}

void slow(const SampleBlock& /*block*/) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(20);
    while (std::chrono::steady_clock::now() < end) {
    }
}

RowKernels sampling(SampleKernel sample) {
    RowKernels rows = plainRows;
    rows.sample = sample;
    return rows;
}

TEST(RowChoice, takesTheFaster) {
    const RowKernels fast = sampling(quick);
    const RowKernels slower = sampling(slow);
    EXPECT_EQ(&fasterRows(fast, slower), &fast);
    EXPECT_EQ(&fasterRows(slower, fast), &fast);
}

TEST(RowChoice, isOfTheHighestLevelAndStays) {
    const RowKernels& chosen = rowKernels();
    const auto variant = std::ranges::find(rowVariants(), &chosen, &RowVariant::kernels);
    ASSERT_NE(variant, rowVariants().end());
    EXPECT_EQ(variant->needs, detectInstructionSet());
    EXPECT_EQ(&rowKernels(), &chosen);
}

TEST(RowChoice, hasAVariantForEachLevelAndThePlainOneFirst) {
    ASSERT_FALSE(rowVariants().empty());
    EXPECT_EQ(rowVariants().front().kernels, &plainRows);
    for (int level = 0; level < instructionSetCount; ++level)
        EXPECT_GT(std::ranges::count(rowVariants(), static_cast<InstructionSet>(level), &RowVariant::needs),
                  0)
            << level;
}

} // namespace
} // namespace tarvo::render::software
