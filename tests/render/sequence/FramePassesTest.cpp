#include "tests/render/sequence/SequenceTest.h"

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <optional>

// What a frame asks of its device, against lists that are put together here from the numbers of the vertex
// buffer's layout.

namespace tarvo::render {
namespace {

using geometry::ExcludeArea;
using geometry::PixelBox;
using geometry::TiltOrientation;
using geometry::ViewType;
using tests::RecordedCall;
using tests::Verb;
using Calls = std::vector<RecordedCall>;

// Of 64×48 pixels: columns 16 to 48, rows 12 to 24.
constexpr ExcludeArea area{0.25, 0.25, 0.75, 0.5};
constexpr PixelBox areaBox{16, 12, 48, 24};
constexpr ExcludeConstants areaConstants{{0.25F, 0.25F, 0.75F, 0.5F}};
constexpr Yuy2Constants inputWidth{64, {0, 0, 0}};

DrawRange strip(int first) {
    return {VertexSource::view, Topology::triangleStrip, first, 4, 0};
}

const RecordedCall clearOutput{
    .verb = Verb::clear, .to = Surface::outputTarget, .values = {0.0F, 0.0F, 0.0F, 1.0F}};
const RecordedCall clearConversion{
    .verb = Verb::clear, .to = Surface::conversionTarget, .values = {1.0F, 0.0F, 0.0F, 1.0F}};
const RecordedCall convertYv12{
    .verb = Verb::draw,
    .program = ShaderProgram::yv12ToRgb,
    .to = Surface::conversionTarget,
    .textures = {Surface::yPlane, Surface::crPlane, Surface::cbPlane, Surface::none, Surface::none},
    .range = strip(44)};
const RecordedCall convertYuy2{
    .verb = Verb::draw,
    .program = ShaderProgram::yuy2ToRgb,
    .to = Surface::conversionTarget,
    .textures = {Surface::none, Surface::none, Surface::none, Surface::packedInput, Surface::none},
    .slot = ConstantSlot::width,
    .constants = bytesOf(recordBytes(inputWidth)),
    .range = strip(44)};
const RecordedCall takeConversion{
    .verb = Verb::copy, .from = Surface::conversionTarget, .to = Surface::inputPicture};
const RecordedCall keepExcluded{
    .verb = Verb::copyBox, .from = Surface::inputPicture, .to = Surface::excludeArea, .box = areaBox};
const RecordedCall blackOut{.verb = Verb::draw,
                            .program = ShaderProgram::excludeRegion,
                            .to = Surface::conversionTarget,
                            .textures = {Surface::inputPicture},
                            .slot = ConstantSlot::exclude,
                            .constants = bytesOf(recordBytes(areaConstants)),
                            .range = strip(44)};
const RecordedCall takeMasked{
    .verb = Verb::copy, .from = Surface::conversionTarget, .to = Surface::maskedInput};
const RecordedCall paste{.verb = Verb::draw,
                         .program = ShaderProgram::plainCopy,
                         .to = Surface::outputTarget,
                         .textures = {Surface::excludeArea},
                         .range = strip(40)};
const RecordedCall bypass{.verb = Verb::draw,
                          .program = ShaderProgram::plainCopy,
                          .to = Surface::outputTarget,
                          .textures = {Surface::inputPicture},
                          .range = strip(0)};
const RecordedCall disc{.verb = Verb::draw,
                        .program = ShaderProgram::plainCopy,
                        .to = Surface::outputTarget,
                        .textures = {Surface::inputPicture},
                        .range = {VertexSource::view, Topology::triangleList, 0, 192, 48}};
const RecordedCall marker{.verb = Verb::draw,
                          .program = ShaderProgram::overviewRegion,
                          .to = Surface::outputTarget,
                          .range = {VertexSource::overviewMarker, Topology::triangleStrip, 0, 4512, 0},
                          .isBlended = true};
const RecordedCall flush{.verb = Verb::flush};

RecordedCall dewarp(ShaderProgram program, Surface source, int first,
                    const geometry::CDewarpParameters& parameters) {
    return {.verb = Verb::draw,
            .program = program,
            .to = Surface::outputTarget,
            .textures = {source},
            .slot = ConstantSlot::dewarp,
            .constants = bytesOf(recordBytes(parameters.constants())),
            .range = strip(first)};
}

struct ViewCase {
    ViewType viewType;
    TiltOrientation orientation;
    ShaderProgram program;
    std::vector<int> quads; ///< first vertices
};

const ViewCase viewCases[]{
    {ViewType::single, TiltOrientation::wall, ShaderProgram::singleView, {4}},
    {ViewType::single, TiltOrientation::ceiling, ShaderProgram::singleView, {4}},
    {ViewType::single, TiltOrientation::desk, ShaderProgram::singleView, {4}},
    {ViewType::singleOverview, TiltOrientation::wall, ShaderProgram::singleView, {4}},
    {ViewType::singleOverview, TiltOrientation::ceiling, ShaderProgram::singleView, {4}},
    {ViewType::singleOverview, TiltOrientation::desk, ShaderProgram::singleView, {4}},
    {ViewType::quad, TiltOrientation::wall, ShaderProgram::singleView, {24, 28}},
    {ViewType::quad, TiltOrientation::ceiling, ShaderProgram::singleView, {24, 28, 32, 36}},
    {ViewType::quad, TiltOrientation::desk, ShaderProgram::singleView, {24, 28, 32, 36}},
    {ViewType::panoramaSingle, TiltOrientation::wall, ShaderProgram::panoramaWall, {16}},
    {ViewType::panoramaSingle, TiltOrientation::ceiling, ShaderProgram::panoramaCeiling, {8}},
    {ViewType::panoramaSingle, TiltOrientation::desk, ShaderProgram::panoramaDesk, {8}},
    {ViewType::panoramaDouble, TiltOrientation::wall, ShaderProgram::panoramaWall, {20}},
    {ViewType::panoramaDouble, TiltOrientation::ceiling, ShaderProgram::panoramaCeiling, {12}},
    {ViewType::panoramaDouble, TiltOrientation::desk, ShaderProgram::panoramaDesk, {12}},
};
constexpr std::array formats{PixelFormat::rgb32, PixelFormat::yv12, PixelFormat::yuy2};

class FramePassesTest : public CSequenceTest {
protected:
    /// Everything before the first pass into the output.
    static Calls beginning(PixelFormat format, bool isExcluding) {
        Calls calls{clearOutput, clearConversion};
        if (format == PixelFormat::yv12) {
            calls.insert(calls.end(), {convertYv12, takeConversion});
        }
        if (format == PixelFormat::yuy2) {
            calls.insert(calls.end(), {convertYuy2, takeConversion});
        }
        if (isExcluding) {
            calls.insert(calls.end(), {keepExcluded, blackOut, takeMasked});
        }
        return calls;
    }
    Calls expected(const ViewCase& viewCase, PixelFormat format, bool isExcluding) const {
        Calls calls = beginning(format, isExcluding);
        const Surface source = isExcluding ? Surface::maskedInput : Surface::inputPicture;
        for (std::size_t i = 0; i < viewCase.quads.size(); ++i) {
            const auto parameters = viewCase.viewType == ViewType::quad
                                        ? view.subViewParameters(static_cast<int>(i))
                                        : view.parameters();
            calls.push_back(dewarp(viewCase.program, source, viewCase.quads[i], parameters));
        }
        if (isExcluding) {
            calls.push_back(paste);
        }
        if (viewCase.viewType == ViewType::singleOverview) {
            calls.insert(calls.end(), {disc, marker});
        }
        calls.push_back(flush);
        return calls;
    }
    void set(const ViewCase& viewCase) {
        view.setTiltOrientation(viewCase.orientation);
        view.setViewType(viewCase.viewType);
    }
    HRESULT failPassOf(ShaderProgram program, HRESULT result) {
        device.answer = [=](const RecordedCall& call) {
            return call.verb == Verb::draw && call.program == program ? result : S_OK;
        };
        return result;
    }
};

TEST_F(FramePassesTest, followFromViewMountingFormatAndExcludeArea) {
    for (const ViewCase& viewCase : viewCases) {
        for (const PixelFormat format : formats) {
            for (const bool isExcluding : {false, true}) {
                SCOPED_TRACE(testing::Message()
                             << "view " << static_cast<int>(viewCase.viewType) << " mounting "
                             << static_cast<int>(viewCase.orientation) << " format "
                             << static_cast<unsigned>(format) << (isExcluding ? " excluding" : ""));
                set(viewCase);
                view.setExcludeArea(isExcluding ? area : ExcludeArea{});
                ASSERT_EQ(init(format), S_OK);
                EXPECT_EQ(frame(), expected(viewCase, format, isExcluding));
                // The same again: what is there already is not sent again.
                EXPECT_EQ(frame(), expected(viewCase, format, isExcluding));
            }
        }
    }
    EXPECT_TRUE(lines().empty());
}

TEST_F(FramePassesTest, bypassedTheInputIsOnlyScaled) {
    for (const ViewCase& viewCase : viewCases) {
        for (const PixelFormat format : formats) {
            set(viewCase);
            view.setExcludeArea(area);
            ASSERT_EQ(init(format), S_OK);
            Calls calls = beginning(format, false);
            calls.insert(calls.end(), {bypass, flush});
            EXPECT_EQ(frame(shader, true), calls);
        }
    }
}

TEST_F(FramePassesTest, ofACustomViewAreItsObjectsOwn) {
    const std::array<std::byte, 96> record{std::byte{1}, std::byte{2}};
    fake.use = {ShaderProgram::customVirtualPtz, ConstantSlot::custom, record, true};
    view.setViewType(ViewType::custom);
    for (const PixelFormat format : formats) {
        for (const bool isExcluding : {false, true}) {
            view.setExcludeArea(isExcluding ? area : ExcludeArea{});
            ASSERT_EQ(renderer.InitDirect3D(inputFormat(format), output, view, fake), S_OK);
            Calls calls = beginning(format, isExcluding);
            calls.push_back({.verb = Verb::draw,
                             .program = ShaderProgram::customVirtualPtz,
                             .to = Surface::outputTarget,
                             .textures = {isExcluding ? Surface::maskedInput : Surface::inputPicture,
                                          Surface::none, Surface::none, Surface::none, Surface::lookup},
                             .slot = ConstantSlot::custom,
                             .constants = bytesOf(record),
                             .range = strip(0)});
            if (isExcluding) {
                calls.push_back(paste);
            }
            calls.push_back(flush);
            EXPECT_EQ(frame(fake), calls);
        }
    }
}

TEST_F(FramePassesTest, withoutAProgramOnlyTheViewIsMissing) {
    view.setViewType(ViewType::custom);
    view.setExcludeArea(area);
    ASSERT_EQ(renderer.InitDirect3D(inputFormat(PixelFormat::rgb32), output, view, fake), S_OK);
    Calls calls = beginning(PixelFormat::rgb32, true);
    calls.insert(calls.end(), {paste, flush});
    EXPECT_EQ(frame(fake), calls);
}

TEST_F(FramePassesTest, aShaderThatFailsLeavesTheOverviewWithoutMarker) {
    fake.useResult = E_FAIL;
    view.setViewType(ViewType::singleOverview);
    view.setExcludeArea(area);
    ASSERT_EQ(init(), S_OK);
    Calls calls = beginning(PixelFormat::rgb32, true);
    calls.insert(calls.end(), {disc, flush});
    EXPECT_EQ(frame(fake), calls);
}

TEST_F(FramePassesTest, everySubViewOfAQuadLooksItsOwnWay) {
    const auto rotation = [](const RecordedCall& call) {
        DewarpConstants constants;
        std::memcpy(&constants, call.constants.data(), sizeof constants);
        return std::array{constants.rotateData[0], constants.rotateData[1], constants.rotateData[2]};
    };
    constexpr double degree = std::numbers::pi / 180.0;

    // Ceiling: 45 and 135 degrees to either side; rotated about z by the pan and 90, about y by -(tilt + 90).
    view.setTiltOrientation(TiltOrientation::ceiling);
    view.setViewType(ViewType::quad);
    view.setPtzPosition(10.0, -40.0, 30.0, false);
    ASSERT_EQ(init(), S_OK);
    Calls calls = frame();
    ASSERT_EQ(calls.size(), 7U);
    const double pans[]{-35.0, 55.0, 145.0, -125.0};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(rotation(calls[2 + i])[2], (pans[i] + 90.0) * degree, 1e-6);
        EXPECT_NEAR(rotation(calls[2 + i])[1], -50.0 * degree, 1e-6);
    }

    // Wall: two halves, 45 degrees to either side, rotated about y by the pan.
    view.setTiltOrientation(TiltOrientation::wall);
    view.setPtzPosition(10.0, 0.0, 30.0, false);
    ASSERT_EQ(init(), S_OK);
    calls = frame();
    ASSERT_EQ(calls.size(), 5U);
    EXPECT_NEAR(rotation(calls[2])[1], -35.0 * degree, 1e-6);
    EXPECT_NEAR(rotation(calls[3])[1], 55.0 * degree, 1e-6);
    EXPECT_FLOAT_EQ(static_cast<float>(view.pan()), 10.0F);
}

TEST_F(FramePassesTest, followAMoveOfTheViewWithoutMore) {
    ASSERT_EQ(init(), S_OK);
    const Calls before = frame();
    view.setPan(20.0);
    const Calls after = frame();
    EXPECT_NE(after, before);
    EXPECT_EQ(after, expected(viewCases[0], PixelFormat::rgb32, false));
}

TEST_F(FramePassesTest, ofAViewTypeThatIsNoneAreMissing) {
    ASSERT_EQ(init(), S_OK);
    view.setViewType(static_cast<ViewType>(17));
    EXPECT_EQ(frame(), (Calls{clearOutput, clearConversion, flush}));
}

TEST_F(FramePassesTest, anExcludeAreaChangesWithoutANewInputFrame) {
    ASSERT_EQ(init(PixelFormat::yuy2), S_OK);
    view.setExcludeArea(area);
    // Until the device has its place, the old state is drawn.
    EXPECT_EQ(frame(), expected(viewCases[0], PixelFormat::yuy2, false));
    ASSERT_EQ(renderer.updateGeometry(view), S_OK);
    EXPECT_EQ(frame(), expected(viewCases[0], PixelFormat::yuy2, true));
    device.fail(Verb::geometry, E_FAIL);
    view.setExcludeArea({});
    EXPECT_EQ(renderer.updateGeometry(view), E_FAIL);
    EXPECT_EQ(frame(), expected(viewCases[0], PixelFormat::yuy2, true));
    device.answer = nullptr;
    ASSERT_EQ(renderer.updateGeometry(view), S_OK);
    EXPECT_EQ(frame(), expected(viewCases[0], PixelFormat::yuy2, false));
}

TEST_F(FramePassesTest, anAreaWithoutPixelsExcludesNothing) {
    const double nan = std::nan("");
    const ExcludeArea areas[]{{0.5, 0.25, 0.5, 0.75},  // no width
                              {0.25, 0.5, 0.75, 0.5},  // no height
                              {0.75, 0.25, 0.25, 0.5}, // turned round
                              {0.25, 0.25, 0.26, 0.5}, // columns 16 to 16.6: both edges at 16
                              {-0.5, 0.0, 0.0, 1.0},   // left of the frame
                              {1.0, 0.0, 2.0, 1.0},    // right of it
                              {nan, 0.0, 0.5, 0.5},    {0.0, 0.0, nan, nan}};
    for (const ExcludeArea& none : areas) {
        SCOPED_TRACE(testing::Message() << none.left << " " << none.top << " " << none.right);
        view.setExcludeArea(none);
        ASSERT_EQ(init(), S_OK);
        EXPECT_EQ(frame(), expected(viewCases[0], PixelFormat::rgb32, false));
    }
}

TEST_F(FramePassesTest, aConversionThatFailsShowsRed) {
    const std::pair<PixelFormat, ShaderProgram> cases[]{{PixelFormat::yuy2, ShaderProgram::yuy2ToRgb},
                                                        {PixelFormat::yv12, ShaderProgram::yv12ToRgb}};
    for (const auto& [format, program] : cases) {
        ASSERT_EQ(init(format), S_OK);
        services.debuggerLines.clear();
        failPassOf(program, static_cast<HRESULT>(0x8004FFFF));
        // The cleared target still becomes the input picture, and the view shows that.
        EXPECT_EQ(frame(), expected(viewCases[0], format, false));
        ASSERT_EQ(lines().size(), 1U);
        EXPECT_EQ(lines()[0],
                  "T:E:CDewarpingTransform::ConvertYUVToRGB32() [id: 7]  [line: 2652] Erroneous HRESULT on "
                  "line 2652 error: IDispatch error #65023\n");
        device.answer = nullptr;
    }
}

TEST_F(FramePassesTest, aPassThatFailsIsMissingAndTheOthersAreDrawn) {
    view.setViewType(ViewType::singleOverview);
    view.setExcludeArea(area);
    ASSERT_EQ(init(), S_OK);
    const ViewCase& viewCase = viewCases[3];
    for (const ShaderProgram program :
         {ShaderProgram::excludeRegion, ShaderProgram::singleView, ShaderProgram::overviewRegion}) {
        services.debuggerLines.clear();
        failPassOf(program, E_OUTOFMEMORY);
        EXPECT_EQ(frame(), expected(viewCase, PixelFormat::rgb32, true));
        // A camera that delivers for months must not write a line a frame.
        EXPECT_TRUE(lines().empty());
    }
}

} // namespace
} // namespace tarvo::render
