#include "tests/com/FailingNew.h"
#include "tests/render/ReferenceDeviceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace tarvo::render::reference {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr Bgra blue{255, 0, 0, 255};
constexpr Bgra green{0, 255, 0, 255};
constexpr Bgra red{0, 0, 255, 255};
constexpr Bgra zero{0, 0, 0, 0};

TEST_F(ReferenceDevice, isAlwaysThereAndAlwaysSoftware) {
    EXPECT_TRUE(device.isAvailable());
    EXPECT_FALSE(device.isOpen());
    ASSERT_EQ(device.open(rgb32Input(4, 2), rgb32Output(2, 2)), S_OK);
    EXPECT_TRUE(device.isOpen());
    EXPECT_EQ(device.kind(), DeviceKind::software);
    EXPECT_EQ(device.openStates(), S_OK);
    for (const ShaderResource& resource : shaderResources) {
        EXPECT_TRUE(device.hasProgram(resource.program));
    }
    device.close();
    EXPECT_FALSE(device.isOpen());
    device.close();
    EXPECT_FALSE(device.isOpen());
    EXPECT_THAT(logLines(), testing::IsEmpty());
}

TEST_F(ReferenceDevice, nothingWorksBeforeOpenAndAfterClose) {
    struct CVisitor final : IMappedRowsVisitor {
        bool isVisited = false;
        HRESULT visit(const MappedRows&) override {
            isVisited = true;
            return S_OK;
        }
    };
    const geometry::DewarpConstants constants{};
    const Picture picture(4, 2);
    const auto expectFailures = [&] {
        CVisitor visitor;
        EXPECT_EQ(device.openStates(), E_FAIL);
        EXPECT_EQ(device.geometry(quads(), {}), E_FAIL);
        EXPECT_EQ(device.overviewMarker({}), E_FAIL);
        EXPECT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(constants)),
                  E_FAIL);
        EXPECT_EQ(device.lookup(2, 2), E_FAIL);
        EXPECT_EQ(device.upload(Surface::inputPicture, rowsOf(picture)), E_FAIL);
        EXPECT_EQ(device.draw(copyPass(Surface::inputPicture)), E_FAIL);
        EXPECT_EQ(device.readBack(visitor), E_FAIL);
        EXPECT_FALSE(visitor.isVisited);
        device.clear(Surface::outputTarget, greyClear);
        device.copy(Surface::conversionTarget, Surface::inputPicture);
        device.copyBox(Surface::inputPicture, {0, 0, 1, 1}, Surface::excludeArea);
        device.releaseProgram();
        device.releaseLookup();
        device.flush();
    };
    expectFailures();
    openFor(rgb32Input(4, 2), rgb32Output(4, 2));
    device.close();
    expectFailures();
}

TEST_F(ReferenceDevice, impossibleSizesFailWithALineAndLeaveNothing) {
    const std::pair<int, int> impossible[] = {{0, 2},     {2, 0},    {-1, 2}, {2, -2147483647 - 1},
                                              {16385, 2}, {2, 16385}};
    for (const auto& [width, height] : impossible) {
        SCOPED_TRACE(testing::Message() << width << ' ' << height);
        InputFormat input = rgb32Input(2, 2);
        input.width = width;
        input.height = height;
        OutputFormat output = rgb32Output(2, 2);
        EXPECT_EQ(device.open(input, output), E_INVALIDARG);
        EXPECT_FALSE(device.isOpen());
        output.width = width;
        output.height = height;
        EXPECT_EQ(device.open(rgb32Input(2, 2), output), E_INVALIDARG);
        EXPECT_FALSE(device.isOpen());
    }
    EXPECT_EQ(logLines().size(), 12U);
    EXPECT_THAT(logLines(), testing::Each(HasSubstr("CDewarpingTransform::CreateTextures() [id: 7]")));
    EXPECT_EQ(device.open(rgb32Input(16384, 1), rgb32Output(1, 16384)), S_OK);
    EXPECT_EQ(logLines().size(), 12U);
}

TEST_F(ReferenceDevice, aFrameWithoutChromaDoesNotOpen) {
    for (const auto& [width, height] : {std::pair(1, 4), std::pair(4, 1), std::pair(1, 1)}) {
        EXPECT_EQ(device.open(yv12Input(width, height), rgb32Output(2, 2)), E_INVALIDARG);
        EXPECT_FALSE(device.isOpen());
        EXPECT_EQ(device.upload(Surface::yPlane, {}), E_FAIL);
    }
    EXPECT_THAT(logLines().back(), HasSubstr("CDewarpingTransform::CreateTextures()"));
    EXPECT_EQ(device.open(yv12Input(3, 3), rgb32Output(2, 2)), S_OK);
}

TEST_F(ReferenceDevice, aPackedFrameOfLessThanAWordDoesNotOpen) {
    InputFormat input = yuy2Input(1, 1);
    for (const std::uint32_t bytes : {0U, 3U}) {
        input.frameBytes = bytes;
        EXPECT_EQ(device.open(input, rgb32Output(2, 2)), E_INVALIDARG);
        EXPECT_FALSE(device.isOpen());
        EXPECT_EQ(device.upload(Surface::inputPicture, {}), E_FAIL); // the textures went with it
    }
    EXPECT_THAT(logLines(),
                testing::Each(HasSubstr("CDewarpingTransform::CreateStructuredBuffer() [id: 7]")));
}

TEST_F(ReferenceDevice, everyAllocationMayFail) {
    const int yv12Failures = com::failuresUntilSuccess([&](int granted) {
        const com::CFailingNew failing(granted);
        const HRESULT result = device.open(yv12Input(4, 4), rgb32Output(2, 2));
        EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY);
        EXPECT_EQ(device.isOpen(), result == S_OK);
        return result == S_OK;
    });
    EXPECT_EQ(yv12Failures, 7); // four pictures and three planes
    const int yuy2Failures = com::failuresUntilSuccess([&](int granted) {
        const com::CFailingNew failing(granted);
        const HRESULT result = device.open(yuy2Input(4, 4), rgb32Output(2, 2));
        EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY);
        EXPECT_EQ(device.isOpen(), result == S_OK);
        return result == S_OK;
    });
    EXPECT_EQ(yuy2Failures, 5); // four pictures and the packed bytes
}

TEST_F(ReferenceDevice, whatFindsNoMemoryLaterKeepsWhatWasThere) {
    openFor(rgb32Input(4, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(4, 2, red))), S_OK);
    ASSERT_EQ(device.geometry(quads(), {{}, {0, 0, 2, 2}}), S_OK);
    device.copyBox(Surface::inputPicture, {0, 0, 2, 2}, Surface::excludeArea);
    ASSERT_EQ(device.lookup(2, 2), S_OK);
    {
        const com::CFailingNew failing(0);
        EXPECT_EQ(device.geometry({}, {{}, {0, 0, 4, 2}}), E_OUTOFMEMORY);
        EXPECT_EQ(device.lookup(3, 2), E_OUTOFMEMORY);
        EXPECT_EQ(device.lookup(2, 2), S_OK); // kept, so nothing is needed
    }
    // The old quads still draw and the old area still holds its pixels.
    EXPECT_EQ(shown(Surface::excludeArea).pixels, Picture(2, 2, red).pixels);
    EXPECT_EQ(device.geometry(quads(), {{}, {0, 0, 16386, 2}}), E_INVALIDARG);
    EXPECT_THAT(logLines().back(), HasSubstr("CDewarpingTransform::CreateExcludeRectTexture() [id: 7]"));
    EXPECT_EQ(shown(Surface::excludeArea).pixels, Picture(2, 2, red).pixels);
    for (const auto& [width, height] : {std::pair(0, 2), std::pair(2, -1), std::pair(2, 16385)}) {
        EXPECT_EQ(device.lookup(width, height), E_INVALIDARG);
        EXPECT_THAT(logLines().back(), HasSubstr("CreateTexture2D() [id: 7]"));
    }
}

TEST_F(ReferenceDevice, openingAnewForgetsEverything) {
    openFor(rgb32Input(4, 2), rgb32Output(2, 2));
    const geometry::DewarpConstants constants{};
    ASSERT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(constants)), S_OK);
    ASSERT_EQ(device.geometry(quads(), {{}, {0, 0, 2, 2}}), S_OK);
    ASSERT_EQ(device.overviewMarker({}), S_OK);
    ASSERT_EQ(device.lookup(2, 2), S_OK);
    ASSERT_EQ(device.open(rgb32Input(2, 2), rgb32Output(2, 2)), S_OK);
    EXPECT_EQ(device.draw(copyPass(Surface::inputPicture)), E_FAIL); // no vertices
    ASSERT_EQ(device.geometry(quads(), {}), S_OK);
    EXPECT_EQ(device.draw(copyPass(Surface::excludeArea)), E_FAIL);
    EXPECT_EQ(device.upload(Surface::lookup, {}), E_FAIL);
    Pass view = copyPass(Surface::inputPicture);
    view.program = ShaderProgram::singleView;
    view.constantSlot = ConstantSlot::dewarp;
    view.constants = recordBytes(constants);
    EXPECT_EQ(device.draw(view), E_FAIL);
    Pass marker;
    marker.program = ShaderProgram::overviewRegion;
    marker.range = overviewMarkerRange;
    EXPECT_EQ(device.draw(marker), E_FAIL);
}

TEST_F(ReferenceDevice, clearFillsATargetAndNothingElse) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(2, 2, red))), S_OK);
    EXPECT_EQ(output().pixels, Picture(2, 2, grey).pixels);
    device.clear(Surface::outputTarget, {2.0F, -1.0F, 0.0F, 0.25F}); // saturates
    EXPECT_EQ(output().pixels, Picture(2, 2, {0, 0, 255, 64}).pixels);
    device.clear(Surface::inputPicture, greyClear);
    EXPECT_EQ(shown(Surface::inputPicture).pixels, Picture(2, 2, red).pixels);
    EXPECT_EQ(shown(Surface::conversionTarget).pixels, Picture(2, 2, grey).pixels);
}

TEST_F(ReferenceDevice, uploadTakesRowsInAnyOrderAndDistance) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    // Three pixels from row to row, of which two are the row's; the last row lies first.
    const std::vector<Bgra> memory{red, green, zero, blue, red, zero};
    const auto bytes = std::as_bytes(std::span(memory));
    ASSERT_EQ(device.upload(Surface::inputPicture, {bytes.data() + 12, -12, 8, 2}), S_OK);
    EXPECT_THAT(shown(Surface::inputPicture).pixels, ElementsAre(blue, red, red, green));
    // The same row for all.
    ASSERT_EQ(device.upload(Surface::inputPicture, {bytes.data(), 0, 8, 2}), S_OK);
    EXPECT_THAT(shown(Surface::inputPicture).pixels, ElementsAre(red, green, red, green));
}

TEST_F(ReferenceDevice, uploadFillsUpWithZerosAndIgnoresWhatIsBeyond) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    const auto upload = [&](const SourceRows& rows) {
        EXPECT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(2, 2, blue))), S_OK);
        EXPECT_EQ(device.upload(Surface::inputPicture, rows), S_OK);
        return shown(Surface::inputPicture).pixels;
    };
    const std::vector<Bgra> memory{red, green, blue, green, red, blue, green, green, green};
    EXPECT_THAT(upload(rowsOf(memory, 3)), ElementsAre(red, green, green, red));
    const auto* bytes = std::as_bytes(std::span(memory)).data();
    EXPECT_THAT(upload({bytes, 12, 8, 1}), ElementsAre(red, green, zero, zero));
    EXPECT_THAT(upload({bytes, 12, 6, 2}), ElementsAre(red, Bgra{0, 255, 0, 0}, green, zero));
    EXPECT_THAT(upload({}), ElementsAre(zero, zero, zero, zero));
}

TEST_F(ReferenceDevice, uploadThatFailsChangesNothing) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(2, 2, red))), S_OK);
    EXPECT_EQ(device.upload(Surface::inputPicture, {nullptr, 8, 8, 2}), E_INVALIDARG);
    const Picture picture(2, 2, blue);
    SourceRows rows = rowsOf(picture);
    rows.rowCount = -1;
    EXPECT_EQ(device.upload(Surface::inputPicture, rows), E_INVALIDARG);
    for (const Surface surface : {Surface::none, Surface::outputTarget, Surface::conversionTarget,
                                  Surface::maskedInput, Surface::excludeArea, static_cast<Surface>(99)}) {
        EXPECT_EQ(device.upload(surface, rowsOf(picture)), E_INVALIDARG);
    }
    for (const Surface surface :
         {Surface::yPlane, Surface::crPlane, Surface::cbPlane, Surface::packedInput, Surface::lookup}) {
        EXPECT_EQ(device.upload(surface, rowsOf(picture)), E_FAIL);
    }
    EXPECT_EQ(output().pixels, Picture(2, 2, grey).pixels);
    EXPECT_EQ(shown(Surface::inputPicture).pixels, Picture(2, 2, red).pixels);
}

TEST_F(ReferenceDevice, copyNeedsTheSameSize) {
    openFor(rgb32Input(3, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(3, 2, red))), S_OK);
    device.copy(Surface::inputPicture, Surface::outputTarget); // another size
    EXPECT_EQ(output().pixels, Picture(2, 2, grey).pixels);
    device.copy(Surface::inputPicture, Surface::maskedInput);
    device.copy(Surface::inputPicture, Surface::inputPicture);
    device.copy(Surface::lookup, Surface::maskedInput);
    device.copy(Surface::maskedInput, Surface::yPlane);
    EXPECT_EQ(shown(Surface::maskedInput).pixels, Picture(2, 2, red).pixels);
}

TEST_F(ReferenceDevice, copyBoxGoesToTheUpperLeftCorner) {
    openFor(rgb32Input(4, 4), rgb32Output(2, 2));
    ASSERT_EQ(device.geometry(quads(), {{}, {0, 0, 2, 2}}), S_OK);
    Picture input(4, 4, grey);
    input.at(1, 2) = red;
    input.at(2, 2) = green;
    input.at(1, 3) = blue;
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(input)), S_OK);
    device.copyBox(Surface::inputPicture, {1, 2, 3, 4}, Surface::excludeArea);
    EXPECT_THAT(shown(Surface::excludeArea).pixels, ElementsAre(red, green, blue, grey));
    // Boxes that are empty, that do not lie in the source and that find no room change nothing.
    const geometry::PixelBox wrong[] = {{2, 2, 2, 4},  {3, 3, 2, 2}, {-1, 0, 1, 2}, {3, 0, 5, 2},
                                        {0, -1, 2, 1}, {0, 3, 2, 5}, {0, 0, 3, 2}};
    for (const geometry::PixelBox& box : wrong) {
        device.copyBox(Surface::inputPicture, box, Surface::excludeArea);
    }
    EXPECT_THAT(shown(Surface::excludeArea).pixels, ElementsAre(red, green, blue, grey));
    // A smaller box leaves the rest.
    device.copyBox(Surface::inputPicture, {2, 2, 3, 3}, Surface::excludeArea);
    EXPECT_THAT(shown(Surface::excludeArea).pixels, ElementsAre(green, green, blue, grey));
    ASSERT_EQ(device.geometry(quads(), {}), S_OK);
    EXPECT_EQ(device.draw(copyPass(Surface::excludeArea)), E_FAIL); // no area any more
}

TEST_F(ReferenceDevice, readBackAnswersWithTheVisitor) {
    openFor(rgb32Input(2, 2), rgb32Output(3, 2));
    struct CVisitor final : IMappedRowsVisitor {
        MappedRows seen;
        HRESULT visit(const MappedRows& rows) override {
            seen = rows;
            return DISP_E_OVERFLOW;
        }
    };
    CVisitor visitor;
    EXPECT_EQ(device.readBack(visitor), DISP_E_OVERFLOW);
    EXPECT_EQ(visitor.seen.width, 3);
    EXPECT_EQ(visitor.seen.height, 2);
    EXPECT_GE(visitor.seen.pitchBytes, 12U);
    EXPECT_NE(visitor.seen.data, nullptr);
}

} // namespace
} // namespace tarvo::render::reference
