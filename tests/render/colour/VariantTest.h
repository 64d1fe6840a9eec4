#pragma once

#include "render/colour/ColourKernels.h"

#include <gtest/gtest.h>

#include <string>

namespace tarvo::render {

/// A test once per instruction set; one that the processor lacks is reported as not run.
class CVariantTest : public testing::TestWithParam<InstructionSet> {
protected:
    void SetUp() override {
        if (GetParam() > detectInstructionSet())
            GTEST_SKIP() << "this processor has no " << instructionSetName(GetParam());
    }

    const ColourKernels& variant() const { return colourKernels(GetParam()); }
    static const ColourKernels& reference() { return colourKernels(InstructionSet::reference); }
};

inline std::string variantName(const testing::TestParamInfo<InstructionSet>& info) {
    return instructionSetName(info.param);
}

} // namespace tarvo::render

#define TARVO_FOR_ALL_VARIANTS(suite)                                                                        \
    INSTANTIATE_TEST_SUITE_P(                                                                                \
        variants, suite,                                                                                     \
        testing::Values(InstructionSet::sse41, InstructionSet::avx2, InstructionSet::avx512), variantName)
