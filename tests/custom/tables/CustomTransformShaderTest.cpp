#include "custom/tables/CustomTransformShader.h"

#include "tests/com/FailingNew.h"
#include "tests/custom/tables/Blob.h"
#include "tests/custom/tables/FakeDevice.h"
#include "tests/custom/tables/LoggedLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

namespace tarvo::custom {
namespace {

using geometry::CustomTransformControlType;
using render::ShaderProgram;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

/// Two tables of 2 x 1.
constexpr TableDimensions twoTables{2, 2, 1};
const std::vector<std::uint16_t> twoTableEntries{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};

class CustomTransformShader : public testing::Test {
protected:
    HRESULT setTables(TableDimensions dimensions, const std::vector<std::uint16_t>& words) {
        return shader.SetTransform(dimensions, bytesOfWords(words));
    }

    template<typename Record>
    static Record recordIn(std::span<const std::byte> bytes) {
        Record record{};
        EXPECT_EQ(bytes.size(), sizeof(Record));
        std::memcpy(&record, bytes.data(), std::min(bytes.size(), sizeof(Record)));
        return record;
    }

    std::vector<std::string> takeCalls() { return std::exchange(device.calls, {}); }

    void expectFailureLine() {
        const std::vector<std::string> logged = lines.take();
        ASSERT_EQ(logged.size(), 1U);
        EXPECT_THAT(logged[0], testing::StartsWith(":E:CCustomTransformShader::UpdateTransform() [id: 7]  "
                                                   "[line: "));
        EXPECT_THAT(logged[0], testing::HasSubstr("] Erroneous HRESULT on line "));
        EXPECT_THAT(logged[0], testing::HasSubstr(" error: "));
    }

    CLoggedLines lines;
    CFakeDevice device;
    CCustomTransformShader shader{lines.objectLog()};
    render::PixelShaderUse use;
};

TEST_F(CustomTransformShader, withoutTablesHasNothingToDrawWith) {
    use.program = ShaderProgram::plainCopy;
    EXPECT_EQ(shader.pixelShader(use), S_FALSE);
    EXPECT_FALSE(use.program.has_value());
    EXPECT_EQ(shader.initialise(device), S_FALSE);
    EXPECT_EQ(shader.pixelShader(use), S_FALSE);
    EXPECT_FALSE(use.program.has_value());
    EXPECT_FALSE(shader.tableAspect().has_value());
    EXPECT_THAT(takeCalls(), ElementsAre("prepare"));
    EXPECT_THAT(lines.take(), IsEmpty());
}

TEST_F(CustomTransformShader, makesTheLookupOnceThereAreDeviceAndTables) {
    EXPECT_EQ(setTables(twoTables, twoTableEntries), S_FALSE) << "there is no device";
    EXPECT_EQ(shader.UpdateTransform(), S_FALSE);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    EXPECT_EQ(shader.initialise(device), S_OK);
    EXPECT_THAT(takeCalls(), ElementsAre("prepare", "lookup", "upload"));
    EXPECT_EQ(device.program, ShaderProgram::customTransform);
    EXPECT_EQ(device.slot, render::ConstantSlot::custom);
    EXPECT_EQ(device.lookupWidth, 2);
    EXPECT_EQ(device.lookupHeight, 2);
    // The fourth word is not read.
    ASSERT_EQ(device.lookupWords.size(), 16U);
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_EQ(device.lookupWords[i / 3 * 4 + i % 3], twoTableEntries[i]) << i;
    EXPECT_EQ(shader.pixelShader(use), S_OK);
    EXPECT_EQ(use.program, ShaderProgram::customTransform);
    EXPECT_EQ(use.constantSlot, render::ConstantSlot::custom);
    EXPECT_TRUE(use.readsLookup);
    const auto record = recordIn<render::CustomTransformConstants>(use.constants);
    EXPECT_EQ(record.numberOfTables, 2U);
    EXPECT_TRUE(std::ranges::equal(device.record, use.constants));
    EXPECT_EQ(shader.tableAspect(), 2.0F);
}

TEST_F(CustomTransformShader, keepsTheLookupForTablesOfTheSameSizeOnly) {
    shader.initialise(device);
    takeCalls();
    EXPECT_EQ(setTables(twoTables, twoTableEntries), S_OK);
    EXPECT_THAT(takeCalls(), ElementsAre("lookup", "upload"));
    std::vector<std::uint16_t> others = twoTableEntries;
    others[0] = 65535;
    EXPECT_EQ(setTables(twoTables, others), S_OK);
    EXPECT_THAT(takeCalls(), ElementsAre("lookup", "upload"));
    EXPECT_EQ(device.lookupWords[0], 65535);
    // As many entries, but in a column.
    EXPECT_EQ(setTables({2, 1, 2}, others), S_OK);
    EXPECT_THAT(takeCalls(), ElementsAre("releaseLookup", "lookup", "upload"));
    EXPECT_EQ(device.lookupWidth, 1);
    EXPECT_EQ(device.lookupHeight, 4);
    EXPECT_EQ(shader.tableAspect(), 0.5F);
}

TEST_F(CustomTransformShader, keepsItsTablesWhenNewOnesAreRefused) {
    setTables(twoTables, twoTableEntries);
    shader.initialise(device);
    takeCalls();
    for (const std::size_t words : {0U, 1U, 11U, 13U, 24U}) {
        EXPECT_EQ(setTables(twoTables, std::vector<std::uint16_t>(words)), E_INVALIDARG);
        EXPECT_THAT(lines.take(), ElementsAre(":E:Invalid data size\n"));
    }
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(shader.pixelShader(use), S_OK);
    EXPECT_EQ(recordIn<render::CustomTransformConstants>(use.constants).numberOfTables, 2U);
    // An odd last byte does not count.
    std::vector<std::byte> bytes = bytesOfWords(twoTableEntries);
    bytes.push_back(std::byte{1});
    EXPECT_EQ(shader.SetTransform(twoTables, bytes), S_OK);
}

TEST_F(CustomTransformShader, takesTablesOfNothingAsNone) {
    setTables(twoTables, twoTableEntries);
    shader.initialise(device);
    takeCalls();
    for (const TableDimensions dimensions : {TableDimensions{0, 3, 3}, {3, 0, 3}, {3, 3, 0}}) {
        EXPECT_EQ(setTables(dimensions, {}), S_FALSE);
        EXPECT_EQ(shader.pixelShader(use), S_FALSE);
        EXPECT_FALSE(use.program.has_value());
        EXPECT_FALSE(shader.tableAspect().has_value());
    }
    EXPECT_THAT(takeCalls(), ElementsAre("releaseLookup"));
    EXPECT_EQ(setTables(twoTables, twoTableEntries), S_OK);
    EXPECT_EQ(shader.pixelShader(use), S_OK);
}

TEST_F(CustomTransformShader, withTooLittleMemoryHasNoTables) {
    setTables(twoTables, twoTableEntries);
    const std::vector<std::byte> bytes = bytesOfWords(twoTableEntries);
    {
        const com::CFailingNew failing(0);
        EXPECT_EQ(shader.SetTransform(twoTables, bytes), E_OUTOFMEMORY);
    }
    EXPECT_FALSE(shader.tableAspect().has_value());
    EXPECT_EQ(shader.pixelShader(use), S_FALSE);
    EXPECT_EQ(shader.initialise(device), S_FALSE);
    EXPECT_EQ(setTables(twoTables, twoTableEntries), S_OK);
}

TEST_F(CustomTransformShader, withTooLittleMemoryForTheLookupSaysSo) {
    shader.initialise(device);
    const std::vector<std::byte> bytes = bytesOfWords(twoTableEntries);
    device.calls.reserve(10);
    HRESULT result = S_OK;
    {
        const com::CFailingNew failing(1); // the tables themselves
        result = shader.SetTransform(twoTables, bytes);
    }
    EXPECT_EQ(result, E_OUTOFMEMORY);
    EXPECT_THAT(takeCalls(), ElementsAre("prepare", "lookup"));
    EXPECT_TRUE(shader.tableAspect().has_value());
}

TEST_F(CustomTransformShader, reportsWhatTheDeviceCannotDo) {
    setTables(twoTables, twoTableEntries);
    device.lookupResult = E_OUTOFMEMORY;
    EXPECT_EQ(shader.initialise(device), E_OUTOFMEMORY);
    expectFailureLine();
    EXPECT_THAT(takeCalls(), ElementsAre("prepare", "lookup"));
    EXPECT_EQ(shader.pixelShader(use), S_FALSE) << "there is nothing to look up in";
    EXPECT_FALSE(use.program.has_value());

    device.lookupResult = S_OK;
    device.uploadResult = E_FAIL;
    EXPECT_EQ(shader.UpdateTransform(), E_FAIL);
    expectFailureLine();
    EXPECT_EQ(shader.pixelShader(use), S_OK);

    device.uploadResult = S_OK;
    EXPECT_EQ(shader.UpdateTransform(), S_OK);
    EXPECT_THAT(lines.take(), IsEmpty());
}

TEST_F(CustomTransformShader, withoutItsProgramDrawsNothing) {
    setTables(twoTables, twoTableEntries);
    device.missingPrograms = {ShaderProgram::customTransform};
    EXPECT_EQ(shader.initialise(device), E_FAIL);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    device.missingPrograms.clear();
    device.prepareResult = E_OUTOFMEMORY;
    EXPECT_EQ(shader.initialise(device), E_OUTOFMEMORY);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    device.prepareResult = S_OK;
    EXPECT_EQ(shader.initialise(device), S_OK);
    EXPECT_EQ(shader.pixelShader(use), S_OK);
}

TEST_F(CustomTransformShader, forgetsADeviceThatCloses) {
    setTables(twoTables, twoTableEntries);
    shader.initialise(device);
    takeCalls();
    shader.release();
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
    EXPECT_EQ(setTables({1, 1, 1}, {1, 2, 3}), S_FALSE);
    EXPECT_EQ(shader.setEffectLevel(0.5F), S_FALSE);
    EXPECT_EQ(shader.setControlType(CustomTransformControlType::virtualPtzFromPanorama), S_OK);
    EXPECT_THAT(takeCalls(), IsEmpty());
    CFakeDevice another;
    EXPECT_EQ(shader.initialise(another), S_OK);
    EXPECT_EQ(another.program, ShaderProgram::customVirtualPtz);
    EXPECT_EQ(another.lookupWidth, 1);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(CustomTransformShader, fillsTheLookupAnewForAnotherEffectLevel) {
    setTables({1, 2, 1}, {100, 200, 300, 0, 0, 0});
    shader.initialise(device);
    takeCalls();
    EXPECT_EQ(shader.setEffectLevel(1.0F), S_OK);
    EXPECT_EQ(shader.setEffectLevel(2.0F), S_OK) << "is limited to 1";
    EXPECT_EQ(shader.setEffectLevel(std::nanf("")), S_OK);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(shader.setEffectLevel(0.5F), S_OK);
    EXPECT_THAT(takeCalls(), ElementsAre("lookup", "upload"));
    // Half of 65535 is cut off: 32767.5 + 150, and alone 32767.
    EXPECT_EQ(device.lookupWords[0], 50);
    EXPECT_EQ(device.lookupWords[1], 100);
    EXPECT_EQ(device.lookupWords[2], 32917);
    EXPECT_EQ(device.lookupWords[4], 32767);
    EXPECT_EQ(device.lookupWords[6], 32767);
    EXPECT_EQ(shader.setEffectLevel(-1.0F), S_OK);
    EXPECT_EQ(shader.effectLevel(), 0.0F);
    EXPECT_EQ(device.lookupWords[2], 65535);
}

TEST_F(CustomTransformShader, changesProgramAndRecordWithTheControl) {
    setTables(twoTables, twoTableEntries);
    shader.initialise(device);
    takeCalls();
    VirtualPtzSettings values;
    values.pan = 45.0;
    shader.setVirtualPtz(values);
    EXPECT_EQ(shader.setControlType(CustomTransformControlType::digitalZoom), S_OK);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(shader.setControlType(CustomTransformControlType::virtualPtzFromPanorama), S_OK);
    EXPECT_THAT(takeCalls(), ElementsAre("prepare", "lookup", "upload"));
    EXPECT_EQ(device.program, ShaderProgram::customVirtualPtz);
    EXPECT_NEAR(recordIn<render::VirtualPtzConstants>(device.record).panTiltFov[0], 0.785398F, 1e-6F);
    EXPECT_EQ(shader.pixelShader(use), S_OK);
    EXPECT_EQ(use.program, ShaderProgram::customVirtualPtz);
    EXPECT_EQ(use.constants.size(), 96U);
    EXPECT_EQ(shader.setControlType(CustomTransformControlType::digitalZoom), S_OK);
    EXPECT_EQ(shader.pixelShader(use), S_OK);
    EXPECT_EQ(use.program, ShaderProgram::customTransform);
    EXPECT_EQ(use.constants.size(), 64U);
    EXPECT_EQ(shader.controlType(), CustomTransformControlType::digitalZoom);
    // A program that cannot be had: nothing is drawn rather than with the wrong one.
    device.missingPrograms = {ShaderProgram::customVirtualPtz};
    EXPECT_EQ(shader.setControlType(CustomTransformControlType::virtualPtzFromPanorama), E_FAIL);
    EXPECT_EQ(shader.pixelShader(use), E_FAIL);
}

TEST_F(CustomTransformShader, drawsTheNextFrameWithWhatWasSet) {
    setTables(twoTables, twoTableEntries);
    shader.initialise(device);
    shader.setViewRectangle({0.5, 0.25, 1.0, 0.75});
    shader.setOutputAspect(4.0F);
    for (const float ignored : {0.0F, -1.0F, std::nanf(""), std::numeric_limits<float>::infinity()})
        shader.setOutputAspect(ignored);
    ASSERT_EQ(shader.pixelShader(use), S_OK);
    auto zoom = recordIn<render::CustomTransformConstants>(use.constants);
    EXPECT_THAT(zoom.viewRect, ElementsAre(0.5F, 0.25F, 0.5F, 0.5F));
    EXPECT_THAT(zoom.projectionRect, ElementsAre(-0.5F, 0.0F, 2.0F, 1.0F));

    shader.setControlType(CustomTransformControlType::virtualPtzFromPanorama);
    VirtualPtzSettings values;
    values.effectLevel = 0.25;
    shader.setVirtualPtz(values);
    ASSERT_EQ(shader.pixelShader(use), S_OK);
    const auto ptz = recordIn<render::VirtualPtzConstants>(use.constants);
    EXPECT_EQ(ptz.outputAR, 4.0F);
    EXPECT_EQ(ptz.effectLevel, 0.25F);
}

TEST_F(CustomTransformShader, takesValuesOfAnotherThreadAsAWhole) {
    setTables(twoTables, twoTableEntries);
    shader.initialise(device);
    shader.setViewRectangle({0.0, 0.0, 0.0, 0.0});
    std::atomic<bool> isDone = false;
    std::thread setter([&] {
        for (int i = 1; !isDone; i = i % 1000 + 1) {
            const double value = i / 1024.0;
            shader.setViewRectangle({value, value, 2.0 * value, 2.0 * value});
        }
    });
    for (int frame = 0; frame < 5000; ++frame) {
        EXPECT_EQ(shader.pixelShader(use), S_OK);
        const auto record = recordIn<render::CustomTransformConstants>(use.constants);
        EXPECT_EQ(record.viewRect[1], record.viewRect[0]);
        EXPECT_EQ(record.viewRect[2], record.viewRect[0]);
        EXPECT_EQ(record.viewRect[3], record.viewRect[0]);
    }
    isDone = true;
    setter.join();
}

} // namespace
} // namespace tarvo::custom
