#include "tests/render/CustomTables.h"
#include "tests/render/ReferenceDeviceFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>

// Passes of the reference device, their outcome worked out by hand.

namespace tarvo::render::reference {
namespace {

using testing::ElementsAre;

constexpr Bgra green{0, 255, 0, 255};
constexpr Bgra red{0, 0, 255, 255};

TEST_F(ReferenceDevice, plainCopyScales) {
    openFor(rgb32Input(2, 1), rgb32Output(4, 1));
    Picture input(2, 1, {0, 0, 0, 255});
    input.at(1, 0) = {200, 100, 40, 255};
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(input)), S_OK);
    ASSERT_EQ(device.draw(copyPass(Surface::inputPicture)), S_OK);
    // Centres at 1/8, 3/8, 5/8, 7/8 of the way: a quarter and three quarters between the two pixels.
    EXPECT_THAT(output().pixels, ElementsAre(Bgra{0, 0, 0, 255}, Bgra{50, 25, 10, 255},
                                             Bgra{150, 75, 30, 255}, Bgra{200, 100, 40, 255}));
}

TEST_F(ReferenceDevice, aPassDrawsItsRangeOnly) {
    openFor(rgb32Input(1, 1), rgb32Output(4, 1));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(1, 1, red))), S_OK);
    Pass pass = copyPass(Surface::inputPicture);
    pass.range = quadRange(geometry::quad::singleView);
    ASSERT_EQ(device.draw(pass), S_OK);
    EXPECT_THAT(output().pixels, ElementsAre(red, red, grey, grey));
    pass.range.count = 2; // no triangle
    device.clear(Surface::outputTarget, greyClear);
    EXPECT_EQ(device.draw(pass), S_OK);
    EXPECT_EQ(output().pixels, Picture(4, 1, grey).pixels);
}

TEST_F(ReferenceDevice, theDiscIsATriangleListFromItsBaseVertex) {
    openFor(rgb32Input(1, 1), rgb32Output(8, 8));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(1, 1, red))), S_OK);
    geometry::ViewLayout layout;
    layout.inputAspect = 1.0;
    layout.outputAspect = 1.0;
    ASSERT_EQ(device.geometry(geometry::buildViewVertices(layout), {}), S_OK);
    Pass pass = copyPass(Surface::inputPicture);
    pass.range = overviewDiscRange;
    ASSERT_EQ(device.draw(pass), S_OK);
    // A disc of radius 2 around (6, 6): inside are the centres no more than 2 away.
    const Picture drawn = output();
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            const double dx = x + 0.5 - 6.0;
            const double dy = y + 0.5 - 6.0;
            EXPECT_EQ(drawn.at(x, y), dx * dx + dy * dy < 4.0 ? red : grey) << x << ' ' << y;
        }
    }
}

TEST_F(ReferenceDevice, blendingMixesByTheSourceAlpha) {
    openFor(rgb32Input(1, 1), rgb32Output(2, 1));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(1, 1, {100, 200, 60, 10}))), S_OK);
    const auto marker = std::make_unique<geometry::OverviewMarkerVertices>();
    putQuad(std::span(*marker).subspan(0, 4), -1.0F, -1.0F, 0.0F, 1.0F, 0.25F);
    ASSERT_EQ(device.overviewMarker(*marker), S_OK);
    ASSERT_EQ(device.draw(copyPass(Surface::inputPicture)), S_OK);
    Pass pass;
    pass.program = ShaderProgram::overviewRegion;
    pass.range = {VertexSource::overviewMarker, Topology::triangleStrip, 0, 4, 0};
    pass.isBlended = true;
    ASSERT_EQ(device.draw(pass), S_OK);
    // Three quarters of 100, 200 and 60, and a quarter of 255 for red and alpha: 75, 150, 108.75, 63.75.
    EXPECT_THAT(output().pixels, ElementsAre(Bgra{75, 150, 109, 64}, Bgra{100, 200, 60, 10}));
    pass.isBlended = false;
    ASSERT_EQ(device.draw(pass), S_OK);
    EXPECT_THAT(output().pixels, ElementsAre(Bgra{0, 0, 255, 64}, Bgra{100, 200, 60, 10}));
    // The whole marker, nearly all of it without an area.
    pass.range = overviewMarkerRange;
    EXPECT_EQ(device.draw(pass), S_OK);
}

TEST_F(ReferenceDevice, excludeAreaIsBlackenedInTheTargetOfTheConversion) {
    openFor(rgb32Input(4, 2), rgb32Output(4, 2));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(4, 2, red))), S_OK);
    const ExcludeConstants constants{{0.2F, 0.0F, 0.7F, 0.5F}};
    Pass pass = copyPass(Surface::inputPicture, Surface::conversionTarget);
    pass.program = ShaderProgram::excludeRegion;
    pass.constantSlot = ConstantSlot::exclude;
    pass.constants = recordBytes(constants);
    ASSERT_EQ(device.draw(pass), S_OK);
    EXPECT_EQ(output().pixels, Picture(4, 2, grey).pixels);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    // Centres at 1/8, 3/8, 5/8, 7/8 across and at 1/4, 3/4 down.
    EXPECT_THAT(shown(Surface::maskedInput).pixels,
                ElementsAre(red, opaqueBlack, opaqueBlack, red, red, red, red, red));
}

TEST_F(ReferenceDevice, yv12IsConverted) {
    openFor(yv12Input(2, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.upload(Surface::yPlane, rowsOf(std::vector<std::uint8_t>{100, 110, 250, 5}, 2)), S_OK);
    ASSERT_EQ(device.upload(Surface::crPlane, rowsOf(std::vector<std::uint8_t>{148}, 1)), S_OK);
    ASSERT_EQ(device.upload(Surface::cbPlane, rowsOf(std::vector<std::uint8_t>{118}, 1)), S_OK);
    Pass pass = copyPass(Surface::yPlane, Surface::conversionTarget);
    pass.program = ShaderProgram::yv12ToRgb;
    pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
    ASSERT_EQ(device.draw(pass), S_OK);
    device.copy(Surface::conversionTarget, Surface::inputPicture);
    // Cr is 20.5 above and Cb 9.5 below one half: red +28.10, green −14.31 + 3.21 = −11.10, blue −16.46.
    EXPECT_THAT(shown(Surface::inputPicture).pixels,
                ElementsAre(Bgra{84, 89, 128, 255}, Bgra{94, 99, 138, 255}, Bgra{234, 239, 255, 255},
                            Bgra{0, 0, 33, 255}));
}

TEST_F(ReferenceDevice, yv12ChromaIsFiltered) {
    openFor(yv12Input(4, 2), rgb32Output(4, 2));
    ASSERT_EQ(device.upload(Surface::yPlane, rowsOf(std::vector<std::uint8_t>(8, 100), 4)), S_OK);
    ASSERT_EQ(device.upload(Surface::crPlane, rowsOf(std::vector<std::uint8_t>{100, 140}, 2)), S_OK);
    ASSERT_EQ(device.upload(Surface::cbPlane, rowsOf(std::vector<std::uint8_t>{127, 127}, 2)), S_OK);
    Pass pass = copyPass(Surface::yPlane, Surface::conversionTarget);
    pass.program = ShaderProgram::yv12ToRgb;
    pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
    ASSERT_EQ(device.draw(pass), S_OK);
    device.copy(Surface::conversionTarget, Surface::maskedInput);
    const Picture drawn = shown(Surface::maskedInput);
    // Cr 100, 110, 130, 140 across: a quarter and three quarters, and the edge samples going on. Less one
    // half of full scale and times 1.370705: −37.69, −23.99, 3.43, 17.13.
    const int reds[] = {62, 76, 103, 117};
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(drawn.at(x, y).red, reds[x]);
            EXPECT_EQ(drawn.at(x, y).blue, 99); // Cb is half a level below: −0.87
        }
    }
}

TEST_F(ReferenceDevice, yuy2IsConverted) {
    openFor(yuy2Input(2, 3), rgb32Output(2, 3));
    // The third word is missing.
    const std::vector<std::uint8_t> frame{100, 128, 200, 128, 100, 148, 255, 108};
    ASSERT_EQ(device.upload(Surface::packedInput, rowsOf(frame, 8)), S_OK);
    const Yuy2Constants constants{2, {}};
    Pass pass;
    pass.program = ShaderProgram::yuy2ToRgb;
    pass.target = Surface::conversionTarget;
    pass.textures[3] = Surface::packedInput;
    pass.constantSlot = ConstantSlot::width;
    pass.constants = recordBytes(constants);
    pass.range = quadRange(geometry::quad::fullTarget);
    ASSERT_EQ(device.draw(pass), S_OK);
    // Everything times 255 / 256, which turns 100 into 99.6, 200 into 199.2 and alpha's 1 into 0.996. Cb 20
    // above and Cr 20 below the middle: red −28.04, green −6.88 + 14.28, blue +35.44. Zeros: both 128 below,
    // green 44.03 + 91.39 = 135.42, less its 256th part 134.9.
    EXPECT_THAT(shown(Surface::conversionTarget).pixels,
                ElementsAre(Bgra{100, 100, 100, 1}, Bgra{199, 199, 199, 1}, Bgra{135, 107, 72, 1},
                            Bgra{255, 255, 226, 1}, Bgra{0, 135, 0, 1}, Bgra{0, 135, 0, 1}));
}

TEST_F(ReferenceDevice, viewProgramsWantToBePrepared) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(2, 2, red))), S_OK);
    // Beyond the frame everywhere: the clear colour.
    geometry::DewarpConstants constants{};
    constants.size[0] = constants.size[1] = 2.0F;
    constants.imageCenter[0] = -100.0F;
    constants.clearColor[1] = constants.clearColor[3] = 1.0F;
    const auto bytes = recordBytes(constants);
    Pass pass = copyPass(Surface::inputPicture);
    pass.program = ShaderProgram::singleView;
    pass.constantSlot = ConstantSlot::dewarp;
    pass.constants = bytes;
    EXPECT_EQ(device.draw(pass), E_FAIL);
    EXPECT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::custom, bytes), E_INVALIDARG);
    EXPECT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, bytes.first(79)), E_INVALIDARG);
    EXPECT_EQ(device.prepare(ShaderProgram::plainCopy, ConstantSlot::none, {}), E_INVALIDARG);
    EXPECT_EQ(device.prepare(ShaderProgram::vertex, ConstantSlot::dewarp, bytes), E_INVALIDARG);
    EXPECT_EQ(device.draw(pass), E_FAIL);
    ASSERT_EQ(device.prepare(ShaderProgram::panoramaDesk, ConstantSlot::dewarp, bytes), S_OK);
    EXPECT_EQ(device.draw(pass), E_FAIL); // another one is ready
    EXPECT_EQ(output().pixels, Picture(2, 2, grey).pixels);
    ASSERT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, bytes), S_OK);
    EXPECT_EQ(device.draw(pass), S_OK);
    EXPECT_EQ(output().pixels, Picture(2, 2, green).pixels);
    device.releaseProgram();
    EXPECT_EQ(device.draw(pass), E_FAIL);
}

TEST_F(ReferenceDevice, theRecordOfThePassCountsAtAnyAddress) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    geometry::DewarpConstants constants{};
    constants.size[0] = constants.size[1] = 2.0F;
    constants.imageCenter[0] = -100.0F;
    constants.clearColor[3] = 1.0F;
    ASSERT_EQ(device.prepare(ShaderProgram::singleView, ConstantSlot::dewarp, recordBytes(constants)), S_OK);
    constants.clearColor[0] = 1.0F;
    std::vector<std::byte> shifted(sizeof(constants) + 1);
    std::memcpy(shifted.data() + 1, &constants, sizeof(constants));
    Pass pass = copyPass(Surface::inputPicture);
    pass.program = ShaderProgram::singleView;
    pass.constantSlot = ConstantSlot::dewarp;
    pass.constants = std::span<const std::byte>(shifted).subspan(1);
    EXPECT_EQ(device.draw(pass), S_OK);
    EXPECT_EQ(output().pixels, Picture(2, 2, red).pixels);
}

/// Uploads tables to a surface of their size.
void putTables(CReferenceDevice& device, const LookupTables& tables) {
    ASSERT_EQ(device.lookup(tables.width, tables.height), S_OK);
    ASSERT_EQ(device.upload(Surface::lookup, rowsOf(tables.texels, tables.width)), S_OK);
}

Pass customPass(ShaderProgram program, std::span<const std::byte> constants) {
    Pass pass;
    pass.program = program;
    pass.textures[0] = Surface::inputPicture;
    pass.textures[4] = Surface::lookup;
    pass.constantSlot = ConstantSlot::custom;
    pass.constants = constants;
    pass.range = quadRange(geometry::quad::customView);
    return pass;
}

TEST_F(ReferenceDevice, customTablesAreLookedUp) {
    openFor(rgb32Input(4, 2), rgb32Output(8, 2));
    Picture input(4, 2);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x) {
            input.at(x, y) = {static_cast<std::uint8_t>(10 * x), static_cast<std::uint8_t>(100 * y), 7, 200};
        }
    }
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(input)), S_OK);
    putTables(device, identityTable());
    // The longer record serves both programs; a table half as wide as the output leaves two columns of bars.
    auto constants = constantsOf<VirtualPtzConstants>(2, 2, 1);
    constants.projectionRect[0] = -0.5F;
    constants.projectionRect[2] = 2.0F;
    const Pass pass = customPass(ShaderProgram::customTransform, recordBytes(constants));
    ASSERT_EQ(device.prepare(pass.program, ConstantSlot::custom, pass.constants), S_OK);
    ASSERT_EQ(device.draw(pass), S_OK);
    const Picture drawn = output();
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool isBar = x < 2 || x >= 6;
            Bgra expected = isBar ? opaqueBlack : input.at(x - 2, y);
            expected.alpha = 255; // black's and the sample's, saturated
            EXPECT_EQ(drawn.at(x, y), expected) << x << ' ' << y;
        }
    }
    ASSERT_EQ(device.lookup(2, 2), S_OK); // the same size: kept
    device.clear(Surface::outputTarget, greyClear);
    ASSERT_EQ(device.draw(pass), S_OK);
    EXPECT_EQ(output().pixels, drawn.pixels);
    ASSERT_EQ(device.lookup(2, 4), S_OK); // another one: nothing has any weight yet
    ASSERT_EQ(device.draw(pass), S_OK);
    EXPECT_EQ(output().pixels, Picture(8, 2, opaqueBlack).pixels);
    device.releaseLookup();
    EXPECT_EQ(device.draw(pass), E_FAIL);
}

TEST_F(ReferenceDevice, virtualPtzLooksIntoThePanorama) {
    openFor(rgb32Input(36, 18), rgb32Output(1, 1));
    Picture input(36, 18); // a pixel is ten degrees
    input.at(21, 13) = green;
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(input)), S_OK);
    putTables(device, identityTable());
    auto constants = constantsOf<VirtualPtzConstants>(2, 2, 1);
    constexpr float degree = 0.017453293F;
    constants.inputFov[0] = 360.0F * degree;
    constants.inputFov[1] = 180.0F * degree;
    constants.outputAR = 1.0F;
    constants.panTiltFov[0] = 35.0F * degree; // pixels 18 and 9 are the first to the right and below
    constants.panTiltFov[1] = -45.0F * degree;
    constants.panTiltFov[2] = 30.0F * degree;
    constants.effectLevel = 1.0F;
    const auto bytes = recordBytes(constants);
    EXPECT_EQ(device.prepare(ShaderProgram::customVirtualPtz, ConstantSlot::custom, bytes.first(64)),
              E_INVALIDARG);
    ASSERT_EQ(device.prepare(ShaderProgram::customVirtualPtz, ConstantSlot::custom, bytes), S_OK);
    EXPECT_EQ(device.draw(customPass(ShaderProgram::customVirtualPtz, bytes.first(95))), E_INVALIDARG);
    ASSERT_EQ(device.draw(customPass(ShaderProgram::customVirtualPtz, bytes)), S_OK);
    EXPECT_THAT(output().pixels, ElementsAre(green));
}

/// A pass that draws nothing, and why.
struct WrongPass {
    const char* reason;
    HRESULT result;
    Pass pass;
};

std::vector<WrongPass> wrongPasses(std::span<const std::byte> bytes) {
    Pass good;
    good.textures[0] = Surface::inputPicture;
    good.range = quadRange(geometry::quad::customView);
    std::vector<WrongPass> wrong;
    const auto add = [&](const char* reason, HRESULT result, auto change) {
        wrong.push_back({reason, result, good});
        change(wrong.back().pass);
    };
    add("no target", E_FAIL, [](Pass& p) { p.target = Surface::none; });
    add("not a target", E_FAIL, [](Pass& p) { p.target = Surface::maskedInput; });
    add("no texture", E_INVALIDARG, [](Pass& p) { p.textures[0] = Surface::none; });
    add("absent texture", E_FAIL, [](Pass& p) { p.textures[0] = Surface::excludeArea; });
    add("absent texture that is not read", E_FAIL, [](Pass& p) { p.textures[2] = Surface::crPlane; });
    add("texture that is no surface", E_FAIL, [](Pass& p) { p.textures[1] = static_cast<Surface>(77); });
    add("texture that is drawn into", E_INVALIDARG, [](Pass& p) { p.textures[0] = Surface::outputTarget; });
    add("texture of another kind", E_INVALIDARG, [](Pass& p) { p.textures[0] = Surface::lookup; });
    add("vertex program", E_INVALIDARG, [](Pass& p) { p.program = ShaderProgram::vertex; });
    add("no program", E_INVALIDARG, [](Pass& p) { p.program = static_cast<ShaderProgram>(12); });
    add("no marker", E_FAIL, [](Pass& p) { p.range = overviewMarkerRange; });
    add("first before the vertices", E_INVALIDARG, [](Pass& p) { p.range.first = -1; });
    add("first behind the vertices", E_INVALIDARG, [](Pass& p) { p.range.first = 115; });
    add("end behind the vertices", E_INVALIDARG, [](Pass& p) { p.range.first = 111; });
    add("negative count", E_INVALIDARG, [](Pass& p) { p.range.count = -1; });
    add("too many", E_INVALIDARG, [](Pass& p) { p.range.count = std::numeric_limits<int>::max(); });
    add("end behind the indices", E_INVALIDARG, [](Pass& p) {
        p.range = overviewDiscRange;
        p.range.first = 1;
    });
    add("vertices behind the vertices", E_INVALIDARG, [](Pass& p) {
        p.range = overviewDiscRange;
        p.range.baseVertex = 49;
    });
    add("base behind the vertices", E_INVALIDARG, [](Pass& p) {
        p.range = overviewDiscRange;
        p.range.baseVertex = 1000;
    });
    add("base before the vertices", E_INVALIDARG, [](Pass& p) {
        p.range = overviewDiscRange;
        p.range.baseVertex = -1;
    });
    add("no record", E_INVALIDARG, [](Pass& p) {
        p.program = ShaderProgram::excludeRegion;
        p.constantSlot = ConstantSlot::exclude;
    });
    add("short record", E_INVALIDARG, [=](Pass& p) {
        p.program = ShaderProgram::excludeRegion;
        p.constantSlot = ConstantSlot::exclude;
        p.constants = bytes.first(15);
    });
    add("record elsewhere", E_INVALIDARG, [=](Pass& p) {
        p.program = ShaderProgram::excludeRegion;
        p.constantSlot = ConstantSlot::dewarp;
        p.constants = bytes;
    });
    add("view without its tables", E_INVALIDARG, [=](Pass& p) {
        p.program = ShaderProgram::customTransform;
        p.constantSlot = ConstantSlot::custom;
        p.constants = bytes;
    });
    add("planes that are pictures", E_INVALIDARG, [](Pass& p) {
        p.program = ShaderProgram::yv12ToRgb;
        p.target = Surface::conversionTarget;
        p.textures = {Surface::inputPicture, Surface::inputPicture, Surface::inputPicture};
    });
    add("packed input that is not there", E_FAIL, [=](Pass& p) {
        p.program = ShaderProgram::yuy2ToRgb;
        p.target = Surface::conversionTarget;
        p.textures[3] = Surface::packedInput;
        p.constantSlot = ConstantSlot::width;
        p.constants = bytes;
    });
    return wrong;
}

TEST_F(ReferenceDevice, whatLacksAnythingFailsWithoutDrawing) {
    openFor(rgb32Input(2, 2), rgb32Output(2, 2));
    ASSERT_EQ(device.lookup(2, 2), S_OK);
    const std::vector<std::byte> bytes(96);
    ASSERT_EQ(device.prepare(ShaderProgram::customTransform, ConstantSlot::custom, bytes), S_OK);
    ASSERT_EQ(device.upload(Surface::inputPicture, rowsOf(Picture(2, 2, red))), S_OK);
    device.copy(Surface::inputPicture, Surface::maskedInput);
    for (const WrongPass& wrong : wrongPasses(bytes)) {
        EXPECT_EQ(device.draw(wrong.pass), wrong.result) << wrong.reason;
    }
    EXPECT_EQ(output().pixels, Picture(2, 2, grey).pixels);
    EXPECT_EQ(shown(Surface::conversionTarget).pixels, Picture(2, 2, grey).pixels);
    EXPECT_EQ(shown(Surface::maskedInput).pixels, Picture(2, 2, red).pixels);
}

TEST_F(ReferenceDevice, conversionsAreOfTheWholeInput) {
    // Into a larger target the places that they take from the pixel's number would not exist.
    openFor(yv12Input(2, 2), rgb32Output(4, 4));
    Pass pass = copyPass(Surface::yPlane);
    pass.program = ShaderProgram::yv12ToRgb;
    pass.textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane};
    EXPECT_EQ(device.draw(pass), E_INVALIDARG);
    pass.target = Surface::conversionTarget;
    EXPECT_EQ(device.draw(pass), S_OK);
    pass.textures[0] = Surface::crPlane; // luma of one pixel
    EXPECT_EQ(device.draw(pass), E_INVALIDARG);
    EXPECT_EQ(output().pixels, Picture(4, 4, grey).pixels);
}

} // namespace
} // namespace tarvo::render::reference
