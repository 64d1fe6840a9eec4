// What a pass asks of the context, and what it does not ask again.

#include "tests/render/d3d11/D3d11Fixture.h"

#include <gmock/gmock.h>

#include <cstring>

namespace tarvo::render::d3d11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Made by the fixture: buffer0 the indices, 1 and 2 records, 3 the view's vertices, 4 the exclude record, 5
// the view's record, 6 the marker's vertices. pixelShader0 to 4: YV12, YUY2, overview region, exclude region,
// plain copy; 5 the view's. view0 the input, view1 the masked input. target0 the output, target1 the
// conversion.
class Drawing : public CD3d11Test {
protected:
    Drawing() { ready(PixelFormat::rgb32); }

    Pass viewPass() const {
        return {ShaderProgram::singleView, Surface::outputTarget, {Surface::inputPicture},
                ConstantSlot::dewarp,      recordBytes(dewarp),   quadRange(4)};
    }
    static Pass plainPass() {
        return {ShaderProgram::plainCopy,
                Surface::outputTarget,
                {Surface::inputPicture},
                ConstantSlot::none,
                {},
                quadRange(0)};
    }
    static Pass markerPass() {
        return {ShaderProgram::overviewRegion,
                Surface::outputTarget,
                {Surface::inputPicture},
                ConstantSlot::none,
                {},
                overviewMarkerRange,
                true};
    }
};

TEST_F(Drawing, bindsWhatThePassNames) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("OMSetRenderTargets target0", "RSSetViewports 0 0 200 150 depth 0 0",
                            "PSSetShaderResources 0 view0", "PSSetShader pixelShader5",
                            "IASetVertexBuffers buffer3 slot 0 stride 24 offset 0",
                            "IASetPrimitiveTopology strip", "Draw 4 from 4"));
}

TEST_F(Drawing, bindsNothingTwice) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    fake.takeCalls();
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Draw 4 from 4"));
}

TEST_F(Drawing, bindsOnlyWhatDiffers) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    fake.takeCalls();
    ASSERT_EQ(device->draw(plainPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetShader pixelShader4", "Draw 4 from 0"));

    Pass other = plainPass();
    other.target = Surface::conversionTarget;
    other.textures = {Surface::maskedInput};
    ASSERT_EQ(device->draw(other), S_OK);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("OMSetRenderTargets target1", "RSSetViewports 0 0 320 240 depth 0 0",
                            "PSSetShaderResources 0 view1", "Draw 4 from 0"));
}

TEST_F(Drawing, bindsNothingThatTheProgramDoesNotLookAt) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    fake.takeCalls();
    // The marker looks at nothing and the copy at one picture, whatever the pass has for them.
    Pass overMarker = markerPass();
    overMarker.textures = {Surface::maskedInput};
    ASSERT_EQ(device->draw(overMarker), S_OK);
    Pass copy = plainPass();
    copy.textures = {Surface::inputPicture, Surface::maskedInput, Surface::none, Surface::excludeArea};
    ASSERT_EQ(device->draw(copy), S_OK);
    for (const std::string& call : fake.takeCalls())
        EXPECT_FALSE(call.starts_with("PSSetShaderResources")) << call;
}

TEST_F(Drawing, aPictureThatThePassLeavesOutIsNotLookedAt) {
    ASSERT_EQ(device->draw(plainPass()), S_OK);
    fake.takeCalls();
    Pass without = plainPass();
    without.textures = {};
    ASSERT_EQ(device->draw(without), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetShaderResources 0 -", "Draw 4 from 0"));
}

TEST_F(Drawing, writesConstantsOnlyWhenTheyChange) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    fake.takeCalls();
    dewarp.lambdaOffset = 0.5F;
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Map buffer5", "Unmap buffer5", "Draw 4 from 4"));
    const std::vector<std::byte> written = fake.contents("buffer5");
    ASSERT_EQ(written.size(), sizeof(dewarp));
    EXPECT_EQ(std::memcmp(written.data(), &dewarp, sizeof(dewarp)), 0);

    ASSERT_EQ(device->draw(viewPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Draw 4 from 4"));
}

TEST_F(Drawing, aRecordThatCannotBeWrittenIsTriedAgain) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    fake.takeCalls();
    dewarp.lambdaOffset = 0.5F;
    fake.mapsUntilFailure = 0;
    fake.failure = static_cast<HRESULT>(0x887A0005);
    EXPECT_EQ(device->draw(viewPass()), fake.failure);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Map buffer5 fails"));
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Map buffer5", "Unmap buffer5", "Draw 4 from 4"));
}

TEST_F(Drawing, passesFillTheExcludeRecordAndTheWidth) {
    const ExcludeConstants same = exclude.constants;
    Pass blackout{ShaderProgram::excludeRegion, Surface::conversionTarget, {Surface::inputPicture},
                  ConstantSlot::exclude,        recordBytes(same),         quadRange(44)};
    ASSERT_EQ(device->draw(blackout), S_OK);
    std::vector<std::string> calls = fake.takeCalls();
    EXPECT_EQ(std::ranges::count(calls, "Map buffer4"), 0);
    EXPECT_EQ(std::ranges::count(calls, "PSSetConstantBuffers 1 buffer4"), 1);

    const ExcludeConstants other{{0, 0, 1, 1}};
    blackout.constants = recordBytes(other);
    ASSERT_EQ(device->draw(blackout), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Map buffer4", "Unmap buffer4", "Draw 4 from 44"));

    // The width's record is none that could be mapped.
    const Yuy2Constants width{640, {}};
    blackout.constantSlot = ConstantSlot::width;
    blackout.constants = recordBytes(width);
    ASSERT_EQ(device->draw(blackout), S_OK);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("UpdateSubresource buffer2", "PSSetConstantBuffers 3 buffer2", "Draw 4 from 44"));
    ASSERT_EQ(device->draw(blackout), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Draw 4 from 44"));
}

TEST_F(Drawing, aRecordWithoutBytesStaysAsItIs) {
    Pass pass = viewPass();
    pass.constants = {};
    ASSERT_EQ(device->draw(pass), S_OK);
    EXPECT_EQ(fake.takeCalls().back(), "Draw 4 from 4");
    EXPECT_EQ(fake.contents("buffer5"), fake.creation("buffer5").bytes);
}

TEST_F(Drawing, aRecordThatIsTooLongIsRefused) {
    const VirtualPtzConstants tooLong{};
    Pass pass = viewPass();
    pass.constants = recordBytes(tooLong);
    EXPECT_EQ(device->draw(pass), E_INVALIDARG);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(Drawing, blendsTheMarkerAndNothingElse) {
    ASSERT_EQ(device->draw(plainPass()), S_OK);
    fake.takeCalls();
    ASSERT_EQ(device->draw(markerPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetShader pixelShader2",
                                              "IASetVertexBuffers buffer6 slot 0 stride 24 offset 0",
                                              "OMSetBlendState blendState0 0.75 0.75 0.75 1 mask ffffffff",
                                              "Draw 4512 from 0"));
    ASSERT_EQ(device->draw(plainPass()), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetShader pixelShader4",
                                              "IASetVertexBuffers buffer3 slot 0 stride 24 offset 0",
                                              "OMSetBlendState - mask ffffffff", "Draw 4 from 0"));
}

TEST_F(Drawing, drawsTheDiscThroughItsIndices) {
    ASSERT_EQ(device->draw(plainPass()), S_OK);
    fake.takeCalls();
    Pass disc = plainPass();
    disc.range = overviewDiscRange;
    ASSERT_EQ(device->draw(disc), S_OK);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("IASetPrimitiveTopology list", "DrawIndexed 192 from 0 base 48"));
}

TEST_F(Drawing, aPassThatNamesSomethingAbsentFailsAndDrawsNothing) {
    const auto expectRefused = [this](const Pass& pass) {
        EXPECT_TRUE(FAILED(device->draw(pass)));
        EXPECT_THAT(fake.takeCalls(), IsEmpty());
    };
    Pass pass = plainPass();
    for (const ShaderProgram program :
         {ShaderProgram::vertex, ShaderProgram::panoramaDesk, ShaderProgram::customTransform}) {
        pass.program = program;
        expectRefused(pass);
    }
    pass = plainPass();
    // Planes and packed input are of other inputs; targets are not looked at.
    for (const Surface texture : {Surface::yPlane, Surface::packedInput, Surface::lookup,
                                  Surface::outputTarget, Surface::conversionTarget}) {
        pass.textures = {Surface::inputPicture, texture};
        expectRefused(pass);
    }
    pass = plainPass();
    for (const Surface target : {Surface::none, Surface::inputPicture, Surface::lookup}) {
        pass.target = target;
        expectRefused(pass);
    }
    pass = plainPass();
    for (const ConstantSlot slot :
         {ConstantSlot::custom, static_cast<ConstantSlot>(2), static_cast<ConstantSlot>(9)}) {
        pass.constantSlot = slot;
        expectRefused(pass);
    }
    pass = plainPass();
    for (const DrawRange& range :
         {DrawRange{VertexSource::view, Topology::triangleStrip, 111, 4, 0},
          DrawRange{VertexSource::view, Topology::triangleStrip, -1, 4, 0},
          DrawRange{VertexSource::view, Topology::triangleStrip, 0, -4, 0},
          DrawRange{VertexSource::view, Topology::triangleList, 3, 192, 48},
          DrawRange{VertexSource::view, Topology::triangleList, 0, 192, -1},
          DrawRange{VertexSource::overviewMarker, Topology::triangleStrip, 1, 4512, 0}}) {
        pass.range = range;
        expectRefused(pass);
    }
}

TEST_F(Drawing, anExcludeAreaIsThereOnlyWithABox) {
    Pass paste = plainPass();
    paste.textures = {Surface::excludeArea};
    EXPECT_EQ(device->draw(paste), S_OK);
    ASSERT_EQ(device->geometry(vertices, {exclude.constants, {}}), S_OK);
    EXPECT_EQ(device->draw(paste), E_FAIL);
}

TEST_F(Drawing, aReleasedProgramDrawsNothing) {
    ASSERT_EQ(device->draw(viewPass()), S_OK);
    const int before = fake.liveObjects;
    fake.takeCalls();
    device->releaseProgram();
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetShader -", "PSSetConstantBuffers 0 -"));
    EXPECT_EQ(fake.liveObjects, before - 2);
    EXPECT_EQ(device->draw(viewPass()), E_FAIL);
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
    device->releaseProgram();
    EXPECT_THAT(fake.takeCalls(), IsEmpty());
}

TEST_F(Drawing, preparingReplacesTheProgram) {
    VirtualPtzConstants record{};
    record.effectLevel = 1;
    const int before = fake.liveObjects;
    ASSERT_EQ(device->prepare(ShaderProgram::customVirtualPtz, ConstantSlot::custom, recordBytes(record)),
              S_OK);
    EXPECT_EQ(fake.liveObjects, before);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetConstantBuffers 0 -", "PSSetConstantBuffers 4 buffer7"));
    const auto* const description = std::get_if<D3D11_BUFFER_DESC>(&fake.creation("buffer7").description);
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(description->ByteWidth, 96U);
    EXPECT_EQ(std::memcmp(fake.creation("buffer7").bytes.data(), &record, sizeof(record)), 0);
    EXPECT_EQ(device->draw(viewPass()), E_FAIL);
}

TEST_F(Drawing, aShorterCustomRecordIsFilledUp) {
    CustomTransformConstants record{};
    record.numberOfTables = 8;
    ASSERT_EQ(device->prepare(ShaderProgram::customTransform, ConstantSlot::custom, recordBytes(record)),
              S_OK);
    std::vector<std::byte> expected(96);
    std::memcpy(expected.data(), &record, sizeof(record));
    EXPECT_EQ(fake.creation("buffer7").bytes, expected);
}

TEST_F(Drawing, whatIsNoProgramOfAViewIsNotPrepared) {
    EXPECT_EQ(device->prepare(ShaderProgram::plainCopy, ConstantSlot::dewarp, recordBytes(dewarp)),
              E_INVALIDARG);
    EXPECT_EQ(device->prepare(ShaderProgram::vertex, ConstantSlot::dewarp, recordBytes(dewarp)),
              E_INVALIDARG);
    EXPECT_EQ(device->prepare(ShaderProgram::singleView, ConstantSlot::none, {}), E_INVALIDARG);
    EXPECT_EQ(device->prepare(static_cast<ShaderProgram>(99), ConstantSlot::dewarp, recordBytes(dewarp)),
              E_INVALIDARG);
    EXPECT_FALSE(device->hasProgram(static_cast<ShaderProgram>(99)));
    const VirtualPtzConstants tooLong{};
    EXPECT_EQ(device->prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(tooLong)),
              E_INVALIDARG);
    EXPECT_EQ(device->draw(plainPass()), S_OK);
}

TEST_F(Drawing, aRecordGoesIntoTheSlotThatItsProgramReads) {
    const std::size_t made = fake.creations.size();
    for (const ConstantSlot slot :
         {ConstantSlot::none, ConstantSlot::exclude, static_cast<ConstantSlot>(2), ConstantSlot::width,
          ConstantSlot::custom, static_cast<ConstantSlot>(5), static_cast<ConstantSlot>(-2)}) {
        SCOPED_TRACE(static_cast<int>(slot));
        EXPECT_EQ(device->prepare(ShaderProgram::singleView, slot, recordBytes(dewarp)), E_INVALIDARG);
        EXPECT_EQ(device->draw(viewPass()), E_FAIL);
    }
    for (const ConstantSlot slot : {ConstantSlot::none, ConstantSlot::dewarp, ConstantSlot::exclude})
        EXPECT_EQ(device->prepare(ShaderProgram::customTransform, slot, {}), E_INVALIDARG);
    EXPECT_EQ(fake.creations.size(), made);
    // Neither the exclude area's record nor the width's was lost.
    for (const ConstantSlot slot : {ConstantSlot::exclude, ConstantSlot::width}) {
        Pass pass = plainPass();
        pass.constantSlot = slot;
        EXPECT_EQ(device->draw(pass), S_OK);
    }
    EXPECT_EQ(device->prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(dewarp)), S_OK);
    EXPECT_EQ(device->draw(viewPass()), S_OK);
}

TEST_F(Drawing, newGeometryReplacesTheOld) {
    Pass paste = plainPass();
    paste.textures = {Surface::excludeArea};
    ASSERT_EQ(device->draw(paste), S_OK);
    const int before = fake.liveObjects;
    fake.takeCalls();
    vertices[0].x = -1;
    ASSERT_EQ(device->geometry(vertices, exclude), S_OK);
    EXPECT_EQ(fake.liveObjects, before);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("IASetVertexBuffers - slot 0 stride 24 offset 0", "PSSetShaderResources 0 -"));
    EXPECT_EQ(std::memcmp(fake.creation("buffer7").bytes.data(), vertices.data(), sizeof(vertices)), 0);
    ASSERT_EQ(device->draw(paste), S_OK);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("PSSetShaderResources 0 view3",
                            "IASetVertexBuffers buffer7 slot 0 stride 24 offset 0", "Draw 4 from 0"));
}

TEST_F(Drawing, failedGeometryLeavesTheOld) {
    Pass paste = plainPass();
    paste.textures = {Surface::excludeArea};
    ASSERT_EQ(device->draw(paste), S_OK);
    const int before = fake.liveObjects;
    fake.takeCalls();
    for (int step = 0; step < 4; ++step) {
        fake.creationsUntilFailure = step;
        EXPECT_EQ(device->geometry(vertices, {{}, {0, 0, 2, 2}}), E_OUTOFMEMORY);
        EXPECT_EQ(fake.liveObjects, before);
        ASSERT_EQ(device->draw(paste), S_OK);
        EXPECT_THAT(fake.takeCalls(), ElementsAre("Draw 4 from 0"));
    }
}

TEST_F(Drawing, theMarkerIsWrittenInPlace) {
    const std::size_t before = fake.creations.size();
    (*marker)[4511].colour = 0.5F;
    ASSERT_EQ(device->overviewMarker(*marker), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("Map buffer6", "Unmap buffer6"));
    EXPECT_EQ(fake.creations.size(), before);
    EXPECT_EQ(std::memcmp(fake.contents("buffer6").data(), marker->data(), sizeof(*marker)), 0);
    fake.mapsUntilFailure = 0;
    EXPECT_EQ(device->overviewMarker(*marker), E_OUTOFMEMORY);
    EXPECT_EQ(device->draw(markerPass()), S_OK);
}

TEST_F(Drawing, aLookupSurfaceIsKeptWhileItsSizeStays) {
    ASSERT_EQ(device->lookup(16, 24), S_OK);
    const tests::FakeCreation& creation = fake.creation("texture7");
    const auto* const description = std::get_if<D3D11_TEXTURE2D_DESC>(&creation.description);
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(description->Width, 16U);
    EXPECT_EQ(description->Height, 24U);
    EXPECT_EQ(static_cast<UINT>(description->Format), 11U);
    EXPECT_EQ(static_cast<UINT>(description->Usage), 2U);
    EXPECT_EQ(description->BindFlags, 0x8U);
    EXPECT_EQ(description->CPUAccessFlags, 0x10000U);
    const std::size_t made = fake.creations.size();
    ASSERT_EQ(device->lookup(16, 24), S_OK);
    EXPECT_EQ(fake.creations.size(), made);

    const CustomTransformConstants record{};
    ASSERT_EQ(device->prepare(ShaderProgram::customTransform, ConstantSlot::custom, recordBytes(record)),
              S_OK);
    Pass pass = plainPass();
    pass.program = ShaderProgram::customTransform;
    pass.textures[4] = Surface::lookup;
    ASSERT_EQ(device->draw(pass), S_OK);
    const std::vector<std::string> calls = fake.takeCalls();
    EXPECT_EQ(std::ranges::count(calls, "PSSetShaderResources 0 view0"), 1);
    EXPECT_EQ(std::ranges::count(calls, "PSSetShaderResources 4 view3"), 1);
    const int before = fake.liveObjects;
    ASSERT_EQ(device->lookup(16, 48), S_OK);
    EXPECT_EQ(fake.liveObjects, before);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetShaderResources 4 -"));
    device->releaseLookup();
    EXPECT_EQ(fake.liveObjects, before - 2);
    EXPECT_EQ(device->draw(pass), E_FAIL);
    for (const auto& [width, height] : {std::pair{0, 4}, std::pair{4, 0}, std::pair{-1, 4}})
        EXPECT_EQ(device->lookup(width, height), E_INVALIDARG);
    fake.creationsUntilFailure = 0;
    EXPECT_EQ(device->lookup(4, 4), E_OUTOFMEMORY);
    EXPECT_THAT(lines.take(), ElementsAre(CLogLines::trace("CreateTexture2D()", E_OUTOFMEMORY)));
}

using Planes = CD3d11Test;

TEST_F(Planes, areBoundInOneCall) {
    ready(PixelFormat::yv12);
    const Pass conversion{ShaderProgram::yv12ToRgb,
                          Surface::conversionTarget,
                          {Surface::yPlane, Surface::crPlane, Surface::cbPlane},
                          ConstantSlot::none,
                          {},
                          quadRange(44)};
    ASSERT_EQ(device->draw(conversion), S_OK);
    EXPECT_THAT(fake.takeCalls(),
                ElementsAre("OMSetRenderTargets target1", "RSSetViewports 0 0 320 240 depth 0 0",
                            "PSSetShaderResources 0 view2 view3 view4", "PSSetShader pixelShader0",
                            "IASetVertexBuffers buffer3 slot 0 stride 24 offset 0",
                            "IASetPrimitiveTopology strip", "Draw 4 from 44"));
}

TEST_F(Planes, packedInputIsBoundAtItsSlot) {
    ready(PixelFormat::yuy2);
    const Yuy2Constants width{320, {}};
    const Pass conversion{ShaderProgram::yuy2ToRgb,
                          Surface::conversionTarget,
                          {Surface::none, Surface::none, Surface::none, Surface::packedInput},
                          ConstantSlot::width,
                          recordBytes(width),
                          quadRange(44)};
    ASSERT_EQ(device->draw(conversion), S_OK);
    EXPECT_THAT(fake.takeCalls(), ElementsAre("PSSetConstantBuffers 3 buffer3", "OMSetRenderTargets target1",
                                              "RSSetViewports 0 0 320 240 depth 0 0",
                                              "PSSetShaderResources 3 view2", "PSSetShader pixelShader1",
                                              "IASetVertexBuffers buffer4 slot 0 stride 24 offset 0",
                                              "IASetPrimitiveTopology strip", "Draw 4 from 44"));
}

using Unready = CD3d11Test;

TEST_F(Unready, aDeviceWithoutStatesOrGeometryDrawsNothing) {
    const Pass plain{ShaderProgram::plainCopy, Surface::outputTarget, {Surface::inputPicture}};
    Pass pass = plain;
    pass.range = quadRange(0);
    ASSERT_EQ(device->open(inputOf(PixelFormat::rgb32), output), S_OK);
    ASSERT_EQ(device->geometry(vertices, exclude), S_OK);
    fake.takeCalls();
    EXPECT_EQ(device->draw(pass), E_FAIL);
    ASSERT_EQ(device->openStates(), S_OK);
    EXPECT_EQ(device->draw(pass), S_OK);
    // The marker has no vertices yet.
    pass.range = overviewMarkerRange;
    EXPECT_EQ(device->draw(pass), E_FAIL);
}

TEST_F(Unready, aClosedDeviceRefusesEverything) {
    Pass pass{ShaderProgram::plainCopy, Surface::outputTarget, {Surface::inputPicture}};
    pass.range = quadRange(0);
    EXPECT_EQ(device->draw(pass), E_FAIL);
    EXPECT_EQ(device->openStates(), E_FAIL);
    EXPECT_EQ(device->geometry(vertices, exclude), E_FAIL);
    EXPECT_EQ(device->overviewMarker(*marker), E_FAIL);
    EXPECT_EQ(device->prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(dewarp)), E_FAIL);
    EXPECT_EQ(device->lookup(4, 4), E_FAIL);
    EXPECT_EQ(device->upload(Surface::inputPicture, {}), E_FAIL);
    device->releaseProgram();
    device->releaseLookup();
    device->clear(Surface::outputTarget, {0, 0, 0, 1});
    device->copy(Surface::conversionTarget, Surface::inputPicture);
    device->copyBox(Surface::inputPicture, {0, 0, 2, 2}, Surface::excludeArea);
    device->flush();
    EXPECT_THAT(fake.calls, IsEmpty());
    EXPECT_THAT(fake.creations, IsEmpty());
}

} // namespace
} // namespace tarvo::render::d3d11
