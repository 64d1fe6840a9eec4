// A hundred lives of a device, some of which come to nothing.

#include "diagnostics/Log.h"
#include "render/DewarpPixelShader.h"
#include "render/reference/ReferenceDevice.h"
#include "tests/render/conformance/DevicesUnderTest.h"
#include "tests/render/conformance/HeapInUse.h"
#include "tests/render/conformance/Rig.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <tuple>

namespace tarvo::render::conformance {
namespace {

constexpr int cycleCount = 100;
constexpr int warmUpCount = 20;

FrameCase frameOf(FrameKind input, Shown shown) {
    FrameCase frameCase;
    frameCase.input = input;
    frameCase.shown = shown;
    frameCase.sizes = {96, 72, 80, 60};
    frameCase.area = {0.3, 0.3, 0.6, 0.6};
    return frameCase;
}

const InputFrame& frameFor(const FrameCase& frameCase) {
    static const Picture& picture = roomPicture(geometry::TiltOrientation::wall, 96, 72);
    static const std::array<InputFrame, 3> frames{inputFrame(FrameKind::rgb32, picture, false),
                                                  inputFrame(FrameKind::yv12, picture, false),
                                                  inputFrame(FrameKind::yuy2, picture, false)};
    return frames[frameCase.input == FrameKind::yv12 ? 1 : frameCase.input == FrameKind::yuy2 ? 2 : 0];
}

/// Draws all that there is: surfaces of every format, the overview, the tables.
void expectLife(CRig& rig, int cycle, std::array<Picture, 4>& firstPictures) {
    const std::array<FrameCase, 4> cases{
        frameOf(FrameKind::yv12, Shown::singleOverview), frameOf(FrameKind::yuy2, Shown::virtualPtz),
        frameOf(FrameKind::rgb32, Shown::quad), frameOf(FrameKind::rgb32, Shown::digitalZoom)};
    const auto index = static_cast<std::size_t>(cycle) % cases.size();
    const Rendered rendered = rig.render(cases[index], frameFor(cases[index]));
    ASSERT_EQ(rendered.result, S_OK);
    EXPECT_EQ(rendered.drawn.failedCount, 0);
    Picture& first = firstPictures[index];
    if (first.pixels.empty()) {
        first = rendered.picture;
    }
    // Nothing of the lives in between shows.
    EXPECT_TRUE(rendered.picture.pixels == first.pixels);
}

/// Sizes that no surface can have, of either side, and a frame without bytes: failures that leave nothing.
void expectRefusal(IRenderDevice& device, int number) {
    constexpr int huge = std::numeric_limits<int>::max();
    constexpr std::array<std::pair<int, int>, 5> sizes{
        std::pair{0, 48}, {48, -1}, {huge, huge}, {1 << 20, 48}, {48, 1 << 20}};
    InputFormat input = inputFormat(FrameKind::yuy2, 48, 48, false);
    OutputFormat output = outputFormat(FrameKind::rgb32, {48, 48, 48, 48}, false);
    const auto kind = static_cast<std::size_t>(number) % (2 * sizes.size() + 1);
    if (kind < sizes.size()) {
        std::tie(input.width, input.height) = sizes[kind];
    } else if (kind < 2 * sizes.size()) {
        std::tie(output.width, output.height) = sizes[kind - sizes.size()];
    } else {
        input.frameBytes = 0;
    }
    SCOPED_TRACE(kind);
    EXPECT_TRUE(FAILED(device.open(input, output)));
    EXPECT_FALSE(device.isOpen());
}

class Life : public testing::TestWithParam<DeviceUnderTest> {};

TEST_P(Life, aHundredTimesOver) {
    CRig rig(GetParam().make());
    const std::unique_ptr<IRenderDevice> refusing = GetParam().make();
    std::array<Picture, 4> firstPictures;
    std::size_t heapBefore = 0;
    for (int cycle = 0; cycle < cycleCount; ++cycle) {
        SCOPED_TRACE(cycle);
        expectLife(rig, cycle, firstPictures);
        ASSERT_FALSE(HasFatalFailure());
        if (cycle % 4 == 3) {
            expectRefusal(*refusing, cycle / 4);
        }
        rig.close();
        if (cycle == warmUpCount - 1) {
            heapBefore = heapInUse();
        }
    }
    if (GetParam().isHeapOurs) {
        // Less than the smallest block that each of the cycles could have left.
        EXPECT_LT(heapInUse(), heapBefore + 16 * (cycleCount - warmUpCount));
    }
}

// A device that fails in the middle of its life draws on with what it had.
TEST_P(Life, goesOnAfterFailures) {
    const std::unique_ptr<IRenderDevice> device = GetParam().make();
    const FrameCase frameCase = frameOf(FrameKind::rgb32, Shown::single);
    const InputFrame& frame = frameFor(frameCase);
    ASSERT_EQ(device->open(frame.format, outputFormat(FrameKind::rgb32, {96, 72, 96, 72}, false)), S_OK);
    geometry::CViewState view = frameCase.view();
    ASSERT_EQ(device->geometry(geometry::buildViewVertices(view.layout()), {}), S_OK);
    ASSERT_EQ(device->openStates(), S_OK);
    const SourceRows rows{frame.bytes.data(), 96 * 4, 96 * 4, 72};
    ASSERT_EQ(device->upload(Surface::inputPicture, rows), S_OK);

    EXPECT_TRUE(FAILED(device->lookup(0, 4)));
    EXPECT_TRUE(FAILED(device->lookup(4, std::numeric_limits<int>::max())));
    EXPECT_TRUE(FAILED(device->upload(Surface::excludeArea, rows)));
    EXPECT_TRUE(FAILED(device->upload(Surface::yPlane, rows)));
    EXPECT_TRUE(FAILED(device->geometry(geometry::buildViewVertices(view.layout()),
                                        {{}, {0, 0, std::numeric_limits<int>::max(), 4}})));
    Pass pass;
    pass.program = ShaderProgram::singleView;
    pass.textures[0] = Surface::inputPicture;
    pass.range = quadRange(geometry::quad::fullTarget);
    EXPECT_TRUE(FAILED(device->draw(pass))) << "nothing was prepared";
    pass.program = ShaderProgram::plainCopy;
    pass.textures[0] = Surface::maskedInput;
    pass.target = Surface::lookup;
    EXPECT_TRUE(FAILED(device->draw(pass))) << "no target";

    pass.textures[0] = Surface::inputPicture;
    pass.target = Surface::outputTarget;
    ASSERT_TRUE(device->isOpen());
    ASSERT_EQ(device->draw(pass), S_OK);
    device->flush();
    struct CSameAsInput final : IMappedRowsVisitor {
        explicit CSameAsInput(const InputFrame& theFrame) : frame(theFrame) {}
        const InputFrame& frame;
        HRESULT visit(const MappedRows& mapped) override {
            for (std::size_t y = 0; y < 72; ++y) {
                if (!std::equal(mapped.data + y * mapped.pitchBytes,
                                mapped.data + y * mapped.pitchBytes + 384, frame.bytes.data() + y * 384)) {
                    return S_FALSE;
                }
            }
            return S_OK;
        }
    } visitor(frame);
    EXPECT_EQ(device->readBack(visitor), S_OK);
}

std::vector<DeviceUnderTest> allDevices() {
    std::vector<DeviceUnderTest> all{{"reference",
                                      []() -> std::unique_ptr<IRenderDevice> {
                                          return std::make_unique<reference::CReferenceDevice>(
                                              diagnostics::ObjectLog{diagnostics::moduleLog, 1});
                                      },
                                      true}};
    const auto others = devicesUnderTest();
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

INSTANTIATE_TEST_SUITE_P(Of, Life, testing::ValuesIn(allDevices()), deviceTestName);

} // namespace
} // namespace tarvo::render::conformance
