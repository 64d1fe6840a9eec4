#include "render/software/kernels/RowChoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>

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

TEST(RowChoice, isOfTheHighestLevel) {
    const auto variant = std::ranges::find(rowVariants(), &rowKernels(), &RowVariant::kernels);
    ASSERT_NE(variant, rowVariants().end());
    EXPECT_EQ(variant->needs, detectInstructionSet());
}

TEST(RowChoice, isBetweenVariantsThatSampleDifferently) {
    for (std::size_t i = 0; i < rowVariants().size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            EXPECT_NE(rowVariants()[i].kernels->sample, rowVariants()[k].kernels->sample) << i << ", " << k;
            EXPECT_NE(rowVariants()[i].kernels->mixLayers, rowVariants()[k].kernels->mixLayers)
                << i << ", " << k;
        }
    }
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
