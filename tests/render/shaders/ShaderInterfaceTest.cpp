#include "render/VertexLayout.h"
#include "tests/render/shaders/EmbeddedShader.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <ostream>

namespace tarvo::render {

/// Something bound to a slot.
struct Bound {
    tests::BindingKind kind;
    std::uint32_t slot;
    std::string name;

    friend bool operator==(const Bound&, const Bound&) = default;
};

void PrintTo(const Bound& bound, std::ostream* stream) {
    *stream << "bstx?"[std::min(static_cast<int>(bound.kind), 4)] << bound.slot << " " << bound.name;
}

namespace {

using testing::UnorderedElementsAreArray;
using tests::BindingKind;
using tests::SignatureElement;

Bound record(std::uint32_t slot, const char* name = "PSConstants") {
    return {BindingKind::constantBuffer, slot, name};
}

Bound texture(std::uint32_t slot, const char* name) {
    return {BindingKind::texture, slot, name};
}

const Bound theSampler{BindingKind::sampler, 0, "sampleType"};

std::vector<Bound> bindingsOf(ShaderProgram program) {
    switch (program) {
    case ShaderProgram::singleView:
    case ShaderProgram::panoramaWall:
    case ShaderProgram::panoramaCeiling:
    case ShaderProgram::panoramaDesk:
        return {theSampler, texture(0, "inputTexture"), record(0)};
    case ShaderProgram::customTransform:
    case ShaderProgram::customVirtualPtz:
        return {theSampler, texture(0, "inputTexture"), texture(4, "lookupTexture"), record(4)};
    case ShaderProgram::yv12ToRgb:
        return {theSampler, texture(0, "yTexture"), texture(1, "uTexture"), texture(2, "vTexture")};
    case ShaderProgram::yuy2ToRgb:
        return {{BindingKind::structuredBuffer, 3, "yuy"}, record(3)};
    case ShaderProgram::excludeRegion:
        return {theSampler, texture(0, "shaderTexture"), record(1)};
    case ShaderProgram::vertex:
        return {record(0, "cbPerObject")};
    case ShaderProgram::overviewRegion:
        return {};
    case ShaderProgram::plainCopy:
        return {theSampler, texture(0, "shaderTexture")};
    }
    return {};
}

class ShaderInterfaceTest : public testing::TestWithParam<ShaderResource> {
protected:
    std::vector<SignatureElement> signature(const char* chunk) const {
        return tests::readSignature(embeddedContainer(GetParam()).chunk(chunk));
    }
};

TEST_P(ShaderInterfaceTest, bindsWhatThePassesBind) {
    std::vector<Bound> actual;
    for (const tests::ShaderBinding& binding : embeddedReflection(GetParam()).bindings) {
        actual.push_back({binding.kind, binding.slot, binding.name});
        EXPECT_EQ(binding.count, 1U) << binding.name;
        if (binding.kind == BindingKind::texture || binding.kind == BindingKind::structuredBuffer) {
            EXPECT_EQ(binding.dimensionOrStride, 4U) << binding.name;
        }
    }
    EXPECT_THAT(actual, UnorderedElementsAreArray(bindingsOf(GetParam().program)));
}

/// The components of a vector, from its first.
std::uint32_t width(const SignatureElement& element) {
    return static_cast<std::uint32_t>(std::popcount(element.mask));
}

/// What the rasteriser hands on: the place on the screen, the colour, the texture coordinate.
void expectPixelValues(const std::vector<SignatureElement>& elements) {
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_EQ(elements[0].semantic, "SV_POSITION");
    EXPECT_TRUE(elements[0].isPosition);
    EXPECT_EQ(width(elements[0]), 4U);
    EXPECT_EQ(elements[1].semantic, "COLOR");
    EXPECT_FALSE(elements[1].isPosition);
    EXPECT_EQ(width(elements[1]), 1U);
    EXPECT_EQ(elements[2].semantic, "TEXCOORD");
    EXPECT_FALSE(elements[2].isPosition);
    EXPECT_EQ(width(elements[2]), 2U);
    for (const SignatureElement& element : elements) {
        EXPECT_EQ(element.index, 0U) << element.semantic;
        EXPECT_TRUE(element.isFloat) << element.semantic;
    }
}

TEST_P(ShaderInterfaceTest, takesWhatTheStageBeforeHandsOver) {
    const std::vector<SignatureElement> input = signature("ISGN");
    if (!isVertexProgram(GetParam())) {
        expectPixelValues(input);
        return;
    }
    ASSERT_EQ(input.size(), vertexLayout.size());
    for (std::size_t i = 0; i < input.size(); ++i) {
        EXPECT_EQ(input[i].semantic, vertexLayout[i].semantic);
        // Of the position it takes one more than the buffer holds: that is filled in with 1, and nobody reads
        // it.
        const std::uint32_t filledIn = i == 0 ? 1 : 0;
        EXPECT_EQ(width(input[i]), vertexLayout[i].floatCount + filledIn) << input[i].semantic;
    }
    for (const SignatureElement& element : input) {
        EXPECT_EQ(element.index, 0U) << element.semantic;
        EXPECT_TRUE(element.isFloat) << element.semantic;
        EXPECT_FALSE(element.isPosition) << element.semantic;
    }
}

TEST_P(ShaderInterfaceTest, handsOverWhatTheNextStageTakes) {
    const std::vector<SignatureElement> output = signature("OSGN");
    if (isVertexProgram(GetParam())) {
        expectPixelValues(output);
        return;
    }
    ASSERT_EQ(output.size(), 1U);
    EXPECT_EQ(output[0].semantic, "SV_TARGET");
    EXPECT_EQ(output[0].index, 0U);
    EXPECT_TRUE(output[0].isFloat);
    EXPECT_EQ(width(output[0]), 4U);
}

TEST_P(ShaderInterfaceTest, declaresStructuredBuffersWhereItUsesThem) {
    constexpr std::uint32_t rawAndStructuredBuffers = 0x4000;
    const tests::ShaderCode code = embeddedCode(GetParam());
    const bool usesThem = std::ranges::count(code.opcodes, tests::opcode::declareStructuredResource) != 0;
    EXPECT_EQ(usesThem, GetParam().program == ShaderProgram::yuy2ToRgb);
    EXPECT_EQ((code.globalFlagsToken & rawAndStructuredBuffers) != 0, usesThem);
    if (usesThem) {
        EXPECT_EQ(code.opcodes.front(), tests::opcode::declareGlobalFlags);
        EXPECT_EQ(std::ranges::count(code.opcodes, tests::opcode::declareGlobalFlags), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Shaders, ShaderInterfaceTest, testing::ValuesIn(shaderResources), nameOfCase);

TEST(ShaderInterface, ofPixelProgramsFitsTheVertexProgram) {
    const std::vector<SignatureElement> given =
        tests::readSignature(embeddedContainer(shaderResource(ShaderProgram::vertex)).chunk("OSGN"));
    for (const ShaderResource& resource : shaderResources) {
        if (isVertexProgram(resource))
            continue;
        SCOPED_TRACE(resource.sourceName);
        const std::vector<SignatureElement> taken =
            tests::readSignature(embeddedContainer(resource).chunk("ISGN"));
        ASSERT_EQ(taken.size(), given.size());
        for (std::size_t i = 0; i < taken.size(); ++i) {
            EXPECT_EQ(taken[i].registerIndex, given[i].registerIndex) << taken[i].semantic;
            EXPECT_EQ(taken[i].mask, given[i].mask) << taken[i].semantic;
        }
    }
}

} // namespace
} // namespace tarvo::render
