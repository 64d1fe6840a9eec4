#include "render/DewarpPixelShader.h"

#include "tests/render/sequence/SequenceTest.h"

namespace tarvo::render {
namespace {

using geometry::PanoramaMode;
using tests::RecordedCall;
using tests::Verb;

class DewarpPixelShaderTest : public testing::Test {
protected:
    DewarpPixelShaderTest() {
        log.SetModule("T", 2);
        EXPECT_EQ(device.open({}, {}), S_OK);
        device.calls.clear();
    }

    diagnostics::FakeLogServices services;
    diagnostics::Log log{services};
    tests::CRecordingDevice device;
    geometry::CDewarpParameters parameters;
    CDewarpPixelShader shader{parameters, {log, instanceId}};
    PixelShaderUse use;
};

TEST_F(DewarpPixelShaderTest, hasNothingToDrawWithBeforeItIsInitialised) {
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    EXPECT_FALSE(use.program);
}

TEST_F(DewarpPixelShaderTest, preparesTheProgramOfThePanoramaMode) {
    const std::pair<PanoramaMode, ShaderProgram> cases[]{
        {PanoramaMode::singleView, ShaderProgram::singleView},
        {PanoramaMode::ceiling, ShaderProgram::panoramaCeiling},
        {PanoramaMode::desk, ShaderProgram::panoramaDesk},
        {PanoramaMode::wall, ShaderProgram::panoramaWall}};
    for (const auto& [mode, program] : cases) {
        parameters.selectPanoramaMode(mode);
        device.calls.clear();
        ASSERT_EQ(shader.initialise(device), S_OK);
        const std::vector<RecordedCall> expected{{.verb = Verb::releaseProgram},
                                                 {.verb = Verb::prepare,
                                                  .program = program,
                                                  .slot = ConstantSlot::dewarp,
                                                  .constants = bytesOf(recordBytes(parameters.constants()))}};
        EXPECT_EQ(device.calls, expected);
        ASSERT_EQ(shader.pixelShader(use), S_OK);
        EXPECT_EQ(use.program, program);
        EXPECT_EQ(use.constantSlot, ConstantSlot::dewarp);
        EXPECT_FALSE(use.readsLookup);
    }
}

TEST_F(DewarpPixelShaderTest, keepsTheProgramThatTheModeAskedForWhenItWasInitialised) {
    ASSERT_EQ(shader.initialise(device), S_OK);
    parameters.selectPanoramaMode(PanoramaMode::desk);
    ASSERT_EQ(shader.pixelShader(use), S_OK);
    EXPECT_EQ(use.program, ShaderProgram::singleView);
}

TEST_F(DewarpPixelShaderTest, readsTheParametersAtEachUse) {
    ASSERT_EQ(shader.initialise(device), S_OK);
    parameters.setInputGeometry(640, 480, geometry::defaultLensProfile);
    ASSERT_EQ(shader.pixelShader(use), S_OK);
    ASSERT_EQ(use.constants.size(), sizeof(DewarpConstants));
    DewarpConstants constants;
    std::memcpy(&constants, use.constants.data(), sizeof constants);
    EXPECT_EQ(constants.size[0], 640.0F);
    EXPECT_EQ(constants.imageCenter[1], 240.0F);
}

TEST_F(DewarpPixelShaderTest, withoutTheProgramsCodeItSaysSo) {
    device.missingPrograms = {ShaderProgram::singleView};
    EXPECT_EQ(shader.initialise(device), E_FAIL);
    EXPECT_EQ(services.debuggerLines, std::vector<std::string>{"T:E:No shader data\n"});
    EXPECT_EQ(device.count(Verb::prepare), 0);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
}

TEST_F(DewarpPixelShaderTest, aFailureLeavesNothingOfWhatWasThereBefore) {
    ASSERT_EQ(shader.initialise(device), S_OK);
    device.fail(Verb::prepare, E_OUTOFMEMORY);
    EXPECT_EQ(shader.initialise(device), E_OUTOFMEMORY);
    EXPECT_FALSE(device.prepared);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);

    device.answer = nullptr;
    ASSERT_EQ(shader.initialise(device), S_OK);
    device.missingPrograms = {ShaderProgram::panoramaWall};
    parameters.selectPanoramaMode(PanoramaMode::wall);
    EXPECT_EQ(shader.initialise(device), E_FAIL);
    EXPECT_FALSE(device.prepared);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
}

TEST_F(DewarpPixelShaderTest, releasedItForgetsItsProgram) {
    ASSERT_EQ(shader.initialise(device), S_OK);
    shader.release();
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    shader.release();
}

} // namespace
} // namespace tarvo::render
