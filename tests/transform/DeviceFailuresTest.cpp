#include "tests/transform/StreamingFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <new>
#include <string>
#include <utility>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;

TEST_F(Streaming, lessDeviceMeansEFailAndAnotherTry) {
    CTransformHost host(CTransformHost::Device::recording);
    host.recording->fail(tests::Verb::open, E_OUTOFMEMORY);
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer buffer(patternRgb(32, 24));
    EXPECT_EQ(host.input(buffer), E_FAIL);
    EXPECT_EQ(buffer.references(), 0);
    DMO_MEDIA_TYPE type{};
    EXPECT_EQ(host.media->GetOutputType(0, 0, &type), E_FAIL);
    VARIANT_BOOL isActive = 5;
    EXPECT_EQ(host.transform->get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, VARIANT_TRUE) << "no device so far";
    host.recording->answer = nullptr;
    EXPECT_EQ(host.input(buffer), S_OK);
    EXPECT_EQ(host.frame().result, S_OK);
    EXPECT_EQ(host.transform->get_HardwareAccelerationActive(&isActive), S_OK);
    EXPECT_EQ(isActive, 0);
}

TEST_F(Streaming, buildsALostDeviceAnew) {
    CTransformHost host(CTransformHost::Device::recording);
    host.negotiateRgb(32, 24, 32, 24);
    EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK);
    host.recording->fail(tests::Verb::readBack, DXGI_ERROR_DEVICE_REMOVED);
    CFakeBuffer buffer(patternRgb(32, 24));
    ASSERT_EQ(host.input(buffer), S_OK);
    host.takeLines();
    EXPECT_EQ(host.frame().result, E_FAIL);
    EXPECT_THAT(
        host.takeLines(),
        ElementsAre("E:[1] - CDewarpingTransform::InternalProcessOutput - Failed to copy output video "
                    "data"));
    EXPECT_EQ(buffer.references(), 0);
    EXPECT_FALSE(host.recording->isOpen());
    host.recording->answer = nullptr;
    const int opened = host.recording->count(tests::Verb::open);
    EXPECT_EQ(host.frame().result, S_FALSE) << "the frame was lost with the device";
    EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK);
    EXPECT_EQ(host.frame().result, S_OK) << "and this one can be shown again";
    EXPECT_EQ(host.recording->count(tests::Verb::open), opened + 1);
}

TEST_F(Streaming, hasNothingToRepeatOnAnotherDevice) {
    CTransformHost host;
    host.negotiateRgb(64, 48, 32, 24);
    const auto picture = patternRgb(64, 48);
    const Delivered first = host.through(picture);
    ASSERT_EQ(host.setInput(rgbType(64, -48)), S_OK); // which releases the device
    EXPECT_EQ(host.frame().result, S_FALSE);
    const Delivered next = host.through(picture, 400'000);
    EXPECT_EQ(next.bytes, first.bytes);
    EXPECT_EQ(host.frame().bytes, first.bytes);
}

TEST_F(Streaming, aFailedReadBackLeavesNoCachedFrame) {
    CTransformHost host(CTransformHost::Device::recording);
    ASSERT_EQ(host.transform->put_OutputFrameRate(50.0), S_OK);
    host.negotiateRgb(32, 24, 32, 24);
    EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK);
    host.recording->fail(tests::Verb::readBack, E_OUTOFMEMORY);
    CFakeBuffer buffer(patternRgb(32, 24));
    ASSERT_EQ(host.input(buffer, 400'000), S_OK);
    EXPECT_EQ(host.frame().result, E_FAIL);
    EXPECT_EQ(host.frame().result, E_FAIL) << "nothing to copy from";
    host.recording->answer = nullptr;
    EXPECT_EQ(host.frame().result, S_OK);
}

TEST_F(Streaming, aStepWithoutMemoryLosesItsFrame) {
    const std::array<std::pair<tests::Verb, const char*>, 3> steps{
        {{tests::Verb::upload, "Failed to update texture"},
         {tests::Verb::draw, "Failed to render output"},
         {tests::Verb::readBack, "Failed to copy output video data"}}};
    CTransformHost host(CTransformHost::Device::recording);
    host.negotiateRgb(32, 24, 32, 24);
    REFERENCE_TIME time = 0;
    for (const auto& [verb, reason] : steps) {
        EXPECT_EQ(host.through(patternRgb(32, 24), time += 400'000).result, S_OK) << "the stream goes on";
        host.recording->answer = [step = verb](const tests::RecordedCall& call) {
            if (call.verb == step)
                throw std::bad_alloc();
            return S_OK;
        };
        CFakeBuffer buffer(patternRgb(32, 24));
        ASSERT_EQ(host.input(buffer, time += 400'000), S_OK);
        host.takeLines();
        const Delivered lost = host.frame();
        EXPECT_EQ(lost.result, E_FAIL);
        EXPECT_EQ(lost.status, 0U);
        EXPECT_EQ(host.takeLine(),
                  std::string("E:[1] - CDewarpingTransform::InternalProcessOutput - ") + reason);
        EXPECT_EQ(buffer.references(), 0);
        host.recording->answer = nullptr;
    }
    EXPECT_EQ(host.through(patternRgb(32, 24), time + 400'000).result, S_OK);
}

// A plane of chroma has half the sides, and so no pixels.
TEST_F(Streaming, yv12OfOneColumnOrRowIsRefusedAndCostsNothingElse) {
    for (const auto device : {CTransformHost::Device::reference, CTransformHost::Device::own}) {
        CTransformHost host(device);
        host.transform->put_OutputWidth(32);
        host.transform->put_OutputHeight(24);
        for (const auto& [width, height] : {std::pair(1, 54), std::pair(54, 1)}) {
            ASSERT_EQ(host.setInput(yv12Input(width, height)), S_OK);
            ASSERT_EQ(host.setOutput(rgbType(32, -24)), S_OK);
            CFakeBuffer buffer(std::size_t{81});
            buffer.length = 81;
            EXPECT_EQ(host.input(buffer), E_FAIL) << "no device takes it";
            EXPECT_EQ(buffer.references(), 0);
        }
        ASSERT_EQ(host.setInput(rgbType(32, -24)), S_OK);
        EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK);

        CTransformHost flat(device);
        flat.transform->put_OutputWidth(4);
        flat.transform->put_ViewType(2);
        ASSERT_EQ(flat.setInput(rgbType(64, -48)), S_OK);
        LONG height = 0; // 4 / (180 / 67.5) = 1.5
        ASSERT_EQ(flat.transform->get_OutputHeight(&height), S_OK);
        ASSERT_EQ(height, 1);
        ASSERT_EQ(flat.setOutput(yv12Input(4, 1)), S_OK);
        EXPECT_EQ(flat.through(patternRgb(64, 48)).result, E_FAIL);
        ASSERT_EQ(flat.setOutput(rgbType(4, -1)), S_OK);
        EXPECT_EQ(flat.through(patternRgb(64, 48), 400'000).result, S_OK);
    }
}

} // namespace
} // namespace tarvo::transform
