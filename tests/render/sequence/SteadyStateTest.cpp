#include "tests/render/sequence/SequenceTest.h"
#include "tests/support/AllocationCount.h"

#include <memory>

namespace tarvo::render {
namespace {

using geometry::ViewType;

using SteadyStateTest = CSequenceTest;

TEST_F(SteadyStateTest, allocationsAreCounted) {
    const int before = tests::allocationCount();
    const auto volatileNumber = std::make_unique<volatile int>(1);
    EXPECT_EQ(tests::allocationCount() - before, *volatileNumber);
}

TEST_F(SteadyStateTest, aFrameAllocatesNothing) {
    fake.use.program = ShaderProgram::customTransform;
    for (const auto viewType : {ViewType::single, ViewType::quad, ViewType::panoramaSingle,
                                ViewType::panoramaDouble, ViewType::singleOverview, ViewType::custom}) {
        for (const auto format : {PixelFormat::rgb32, PixelFormat::yv12, PixelFormat::yuy2}) {
            for (const auto outputFormat : {PixelFormat::rgb32, PixelFormat::yv12}) {
                view.setViewType(viewType);
                view.setExcludeArea({0.1, 0.1, 0.4, 0.4});
                output.format = outputFormat;
                IShader& drawing = viewType == ViewType::custom ? static_cast<IShader&>(fake) : shader;
                device.isRecording = true;
                InputFormat input = inputFormat(format);
                input.isBottomUp = format == PixelFormat::rgb32;
                ASSERT_EQ(renderer.InitDirect3D(input, output, view, drawing), S_OK);
                const auto inputBytes = countingBytes(input.frameBytes);
                std::vector<std::byte> outputBytes(128 * 24 * 3 / 2);

                device.isRecording = false;
                device.drawCount = 0;
                const int before = tests::allocationCount();
                HRESULT worst = S_OK;
                for (int i = 0; i < 3; ++i) {
                    view.setPan(5.0 * i);
                    worst |= renderer.UploadInputFrame(inputBytes);
                    worst |= renderer.RenderFrame(view, drawing, i == 2);
                    worst |= renderer.ReadBackOutputFrame(outputBytes, nullptr);
                }
                const int allocations = tests::allocationCount() - before;
                EXPECT_EQ(worst, S_OK);
                EXPECT_EQ(allocations, 0);
                // Two frames with exclude passes and a view each, and a bypassed one.
                EXPECT_GE(device.drawCount, 7U);
            }
        }
    }
}

TEST_F(SteadyStateTest, framesThatAreShortAllocateOnlyOnce) {
    ASSERT_EQ(init(), S_OK);
    const auto bytes = countingBytes(256 * 47 + 3);
    device.isRecording = false;
    EXPECT_EQ(renderer.UploadInputFrame(bytes), S_OK);
    const int before = tests::allocationCount();
    EXPECT_EQ(renderer.UploadInputFrame(bytes), S_OK);
    EXPECT_EQ(tests::allocationCount() - before, 0);
}

} // namespace
} // namespace tarvo::render
