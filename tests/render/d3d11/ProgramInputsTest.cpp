#include "render/d3d11/ProgramInputs.h"

#include "tests/render/shaders/EmbeddedShader.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace tarvo::render::d3d11 {
namespace {

using tests::BindingKind;

class ProgramInputsTest : public testing::TestWithParam<ShaderResource> {
protected:
    /// The slots at which the bytecode says that it reads something of these kinds.
    std::vector<std::uint32_t> slotsOf(std::initializer_list<BindingKind> kinds) const {
        std::vector<std::uint32_t> result;
        for (const tests::ShaderBinding& binding : embeddedReflection(GetParam()).bindings) {
            if (std::ranges::find(kinds, binding.kind) != kinds.end())
                result.push_back(binding.slot);
        }
        std::ranges::sort(result);
        return result;
    }
};

// What is not said to be read is not bound, and would be missing from the picture.
TEST_P(ProgramInputsTest, areThoseOfTheBytecode) {
    const ProgramInputs inputs = inputsOf(GetParam().program);
    std::vector<std::uint32_t> textures;
    for (std::uint32_t slot = 0; slot < inputs.textures.size(); ++slot) {
        if (inputs.textures[slot])
            textures.push_back(slot);
    }
    EXPECT_EQ(textures, slotsOf({BindingKind::texture, BindingKind::structuredBuffer}));
}

TEST_P(ProgramInputsTest, haveARecordWhereTheProgramOfAViewReadsIt) {
    const ProgramInputs inputs = inputsOf(GetParam().program);
    // The views' programs are the first six.
    const bool belongsToView = GetParam().program <= ShaderProgram::customVirtualPtz;
    EXPECT_EQ(inputs.viewRecord != ConstantSlot::none, belongsToView);
    if (!belongsToView)
        return;
    EXPECT_EQ(slotsOf({BindingKind::constantBuffer}),
              std::vector{static_cast<std::uint32_t>(inputs.viewRecord)});
    const tests::ShaderReflection reflection = embeddedReflection(GetParam());
    ASSERT_EQ(reflection.constantBuffers.size(), 1U);
    EXPECT_GE(inputs.viewRecordBytes, reflection.constantBuffers[0].size);
}

INSTANTIATE_TEST_SUITE_P(Programs, ProgramInputsTest, testing::ValuesIn(shaderResources), nameOfCase);

TEST(ProgramInputs, ofWhatIsNoProgramAreNone) {
    const ProgramInputs inputs = inputsOf(static_cast<ShaderProgram>(99));
    EXPECT_EQ(inputs.textures, (std::array<bool, 5>{}));
    EXPECT_EQ(inputs.viewRecord, ConstantSlot::none);
}

} // namespace
} // namespace tarvo::render::d3d11
