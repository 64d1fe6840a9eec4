#include "tests/transform/StreamingFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tarvo::transform {
namespace {

using testing::IsEmpty;

TEST_F(Streaming, hasNothingToShowBeforeTheFirstInput) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer buffer(32 * 24 * 4);
    Delivered delivered;
    EXPECT_EQ(host.output(buffer, delivered), S_FALSE);
    EXPECT_TRUE(buffer.isUntouched());
    EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK);
    ASSERT_EQ(host.media->Flush(), S_OK);
    EXPECT_EQ(host.output(buffer, delivered), S_FALSE);
    EXPECT_TRUE(buffer.isUntouched());
}

TEST_F(Streaming, holdsOneInput) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer one(patternRgb(32, 24));
    CFakeBuffer other(patternRgb(32, 24, 1));
    DWORD status = 9;
    EXPECT_EQ(host.media->GetInputStatus(0, &status), S_OK);
    EXPECT_EQ(status, DWORD{DMO_INPUT_STATUSF_ACCEPT_DATA});
    ASSERT_EQ(host.input(one), S_OK);
    EXPECT_EQ(one.references(), 1);
    EXPECT_EQ(host.media->GetInputStatus(0, &status), S_OK);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(host.input(other), notAcceptingNow);
    EXPECT_EQ(other.references(), 0);
    EXPECT_EQ(host.media->Discontinuity(0), notAcceptingNow);
    EXPECT_EQ(host.media->Flush(), S_OK);
    EXPECT_EQ(one.references(), 0);
    EXPECT_EQ(host.media->Discontinuity(0), S_OK);
}

TEST_F(Streaming, dropsAnEmptyInput) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer empty(std::vector<std::uint8_t>{});
    EXPECT_EQ(host.input(empty), S_OK);
    EXPECT_EQ(empty.references(), 0);
    DWORD status = 9;
    EXPECT_EQ(host.media->GetInputStatus(0, &status), S_OK);
    EXPECT_EQ(status, DWORD{DMO_INPUT_STATUSF_ACCEPT_DATA});
}

TEST_F(Streaming, flushesInEveryState) {
    CTransformHost host;
    EXPECT_EQ(host.media->Flush(), S_OK) << "without types";
    host.negotiateRgb(32, 24, 32, 24);
    EXPECT_EQ(host.media->Flush(), S_OK) << "with types";
    EXPECT_EQ(host.media->AllocateStreamingResources(), S_OK);
    EXPECT_EQ(host.media->Flush(), S_OK) << "with resources";
    CFakeBuffer buffer(patternRgb(32, 24));
    ASSERT_EQ(host.input(buffer, 9'000'000), S_OK);
    EXPECT_EQ(host.media->Flush(), S_OK) << "with an input";
    EXPECT_EQ(buffer.references(), 0);
    EXPECT_EQ(host.media->Flush(), S_OK) << "again";
    EXPECT_EQ(host.through(patternRgb(32, 24), 9'000'000).time, 9'000'000);
    EXPECT_EQ(host.media->Flush(), S_OK) << "after a frame";
    EXPECT_EQ(host.through(patternRgb(32, 24), 1'000).time, 1'000) << "the time line begins anew";
    EXPECT_EQ(host.media->FreeStreamingResources(), S_OK);
    EXPECT_EQ(host.media->Flush(), S_OK) << "without resources";
    EXPECT_EQ(host.setOutput(rgbType(32, -24), DMO_SET_TYPEF_CLEAR), S_OK);
    EXPECT_EQ(host.media->Flush(), S_OK) << "without an output type";
}

TEST_F(Streaming, clearingATypeLetsGoOfTheInput) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer buffer(patternRgb(32, 24));
    ASSERT_EQ(host.input(buffer), S_OK);
    EXPECT_EQ(host.media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR), S_OK);
    EXPECT_EQ(buffer.references(), 0);
    EXPECT_EQ(host.input(buffer), typeIsNotSet);
}

TEST_F(Streaming, refusesWrongUse) {
    CTransformHost host;
    CFakeBuffer buffer(patternRgb(32, 24));
    EXPECT_EQ(host.input(buffer), typeIsNotSet);
    Delivered delivered;
    EXPECT_EQ(host.output(buffer, delivered), typeIsNotSet);
    host.negotiateRgb(32, 24, 32, 24);
    EXPECT_EQ(host.media->ProcessInput(0, nullptr, 0, 0, 0), E_POINTER);
    EXPECT_EQ(host.media->ProcessInput(1, &buffer, 0, 0, 0), streamIsInvalid);
    EXPECT_EQ(host.media->ProcessInput(0, &buffer, 8, 0, 0), E_INVALIDARG);
    DMO_OUTPUT_DATA_BUFFER data{};
    data.pBuffer = &buffer;
    DWORD status = 5;
    EXPECT_EQ(host.media->ProcessOutput(0, 1, &data, nullptr), E_POINTER);
    EXPECT_EQ(host.media->ProcessOutput(0, 1, nullptr, &status), E_POINTER);
    EXPECT_EQ(host.media->ProcessOutput(0, 2, &data, &status), E_INVALIDARG);
    EXPECT_EQ(host.media->ProcessOutput(0, 0, &data, &status), E_INVALIDARG);
    EXPECT_EQ(host.media->ProcessOutput(2, 1, &data, &status), E_INVALIDARG);
    ASSERT_EQ(host.input(buffer), S_OK);
    data.pBuffer = nullptr;
    EXPECT_EQ(host.media->ProcessOutput(1, 1, &data, &status), E_FAIL);
    EXPECT_EQ(buffer.references(), 1) << "the input is still to come";
    EXPECT_EQ(host.media->Flush(), S_OK);
    EXPECT_EQ(buffer.references(), 0);
}

TEST_F(Streaming, passesOnWhatBuffersAnswer) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer buffer(patternRgb(32, 24));
    buffer.bufferResult = E_ACCESSDENIED;
    EXPECT_EQ(host.input(buffer), E_ACCESSDENIED);
    buffer.bufferResult = S_OK;
    buffer.hasData = false;
    EXPECT_EQ(host.input(buffer), E_POINTER) << "a length without data";
    EXPECT_EQ(buffer.references(), 0);
    buffer.hasData = true;
    ASSERT_EQ(host.input(buffer), S_OK);

    CFakeBuffer target(32 * 24 * 4);
    Delivered delivered;
    target.bufferResult = E_ACCESSDENIED;
    EXPECT_EQ(host.output(target, delivered), E_ACCESSDENIED);
    target.bufferResult = S_OK;
    target.capacityResult = E_OUTOFMEMORY;
    EXPECT_EQ(host.output(target, delivered), E_OUTOFMEMORY);
    target.capacityResult = S_OK;
    EXPECT_EQ(buffer.references(), 1) << "so far nothing is lost";
    target.lengthResult = E_INVALIDARG;
    host.takeLines();
    EXPECT_EQ(host.output(target, delivered), S_OK);
    EXPECT_EQ(host.takeLine(),
              "E:[1] - CDewarpingTransform::InternalProcessOutput - Failed to set output length");
}

TEST_F(Streaming, refusesABufferThatIsTooShortBeforeItWrites) {
    for (const double rate : {0.0, 50.0}) { // read back directly and through the cached frame
        CTransformHost host;
        ASSERT_EQ(host.transform->put_OutputFrameRate(rate), S_OK);
        host.negotiateRgb(32, 24, 32, 24);
        CFakeBuffer buffer(patternRgb(32, 24));
        ASSERT_EQ(host.input(buffer), S_OK);
        host.takeLines();
        CFakeBuffer target(32 * 24 * 4 - 1);
        Delivered delivered;
        EXPECT_EQ(host.output(target, delivered), E_FAIL);
        EXPECT_TRUE(target.isUntouched());
        EXPECT_EQ(delivered.status, 0U);
        EXPECT_EQ(host.takeLine(),
                  "E:[1] - CDewarpingTransform::InternalProcessOutput - Failed to copy output video data");
        EXPECT_EQ(buffer.references(), 0) << "the frame is lost";
        EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK) << "the stream goes on";
    }
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    CFakeBuffer buffer(patternRgb(32, 24));
    ASSERT_EQ(host.input(buffer), S_OK);
    CFakeBuffer noData(32 * 24 * 4);
    noData.hasData = false;
    Delivered delivered;
    EXPECT_EQ(host.output(noData, delivered), E_FAIL);
}

TEST_F(Streaming, lowersTheRateForALateRenderer) {
    for (const bool mayDecimate : {true, false}) {
        CTransformHost host;
        ASSERT_EQ(host.transform->put_Options(mayDecimate ? 0 : 8), S_OK);
        ASSERT_EQ(host.transform->put_OutputFrameRate(60.0), S_OK);
        host.negotiateRgb(32, 24, 32, 24, 333'333);
        const auto quality = host.object.as<IDMOQualityControl>();
        DWORD flags = 9;
        ASSERT_EQ(quality->SetStatus(DMO_QUALITY_STATUS_ENABLED), S_OK);
        ASSERT_EQ(quality->GetStatus(&flags), S_OK);
        EXPECT_EQ(flags, 1U);
        const Delivered frame = host.through(patternRgb(32, 24), 10'000'000, 333'333);
        for (int i = 0; i < 200; ++i)
            ASSERT_EQ(quality->SetNow(frame.time + 3'000'000), S_OK);
        double rate = 0.0;
        ASSERT_EQ(host.transform->get_OutputFrameRate(&rate), S_OK);
        if (mayDecimate)
            EXPECT_NEAR(rate, 30.0, 0.01);
        else
            EXPECT_EQ(rate, 60.0);
        EXPECT_EQ(host.frame().result, S_OK);
    }
}

TEST_F(Streaming, aFlushForgetsTheLateness) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24);
    const auto quality = host.object.as<IDMOQualityControl>();
    ASSERT_EQ(quality->SetStatus(DMO_QUALITY_STATUS_ENABLED), S_OK);
    const auto picture = patternRgb(32, 24);
    EXPECT_EQ(host.through(picture, 20'000'000).result, S_OK);
    host.takeLines();
    quality->SetNow(20'500'000); // 2.05 s after the beginning of all reports; one frame in them
    // 500,000 ÷ 25
    const std::string line =
        "_:[1] - Quality Control - Timestamp deviation: 2 (50) ms, Output FPS (target): ";
    EXPECT_EQ(host.takeLine(), line + "0.5 (25.0)");
    quality->SetNow(20'500'000);
    EXPECT_THAT(host.takeLines(), IsEmpty()) << "once a second";
    ASSERT_EQ(host.media->Flush(), S_OK);
    EXPECT_EQ(host.through(picture, 20'000'000).result, S_OK);
    host.takeLines();
    quality->SetNow(20'500'000);
    EXPECT_EQ(host.takeLine(), line + "0.0 (25.0)") << "no frame more than at the last report";
}

TEST_F(Streaming, takesAndGivesBackTheLockOfItsStreams) {
    CTransformHost host;
    EXPECT_EQ(host.media->Lock(FALSE), E_FAIL) << "nobody has it";
    EXPECT_EQ(host.media->Lock(TRUE), S_OK);
    EXPECT_EQ(host.media->Lock(TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24);
    EXPECT_EQ(host.media->Lock(FALSE), S_OK);
    EXPECT_EQ(host.media->Lock(FALSE), S_OK);
    EXPECT_EQ(host.media->Lock(FALSE), E_FAIL);
    EXPECT_EQ(host.media->Lock(TRUE), S_OK) << "and ends with it";
}

} // namespace
} // namespace tarvo::transform
