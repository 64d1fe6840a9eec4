#include "transform/streaming/StreamTypes.h"

#include "tests/transform/streaming/StreamFakes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD testOnly = 1;
constexpr DWORD clear = 2;

VideoType rgbOutput(std::int32_t width = 1024, std::int32_t height = 768) {
    VideoType type;
    type.subtype = &MEDIASUBTYPE_RGB32;
    type.width = width;
    type.height = height;
    type.imageBytes = static_cast<std::uint32_t>(width * height * 4);
    type.ticksPerFrame = 333'333;
    return type;
}

class StreamTypes : public testing::Test, protected Negotiator {
protected:
    HRESULT setInput(const VideoType& type, DWORD flags = 0) {
        return types.SetInputType(0, &type.make().get(), flags);
    }
    HRESULT setOutput(const VideoType& type, DWORD flags = 0) {
        return types.SetOutputType(0, &type.make().get(), flags);
    }
    void setBoth() {
        ASSERT_EQ(setInput(yv12Input(2048, 1536)), S_OK);
        ASSERT_EQ(setOutput(rgbOutput()), S_OK);
        owner.takeCalls();
    }
    /// biWidth of the current type; −1 if there is none.
    LONG currentWidth(bool isInput) const {
        DMO_MEDIA_TYPE type{};
        if (FAILED(isInput ? types.GetInputCurrentType(0, &type) : types.GetOutputCurrentType(0, &type)))
            return -1;
        com::CMediaType owned;
        owned.attach(type);
        const auto* header = owned.format<VIDEOINFOHEADER2>(FORMAT_VideoInfo2);
        return header != nullptr ? header->bmiHeader.biWidth : -2;
    }
};

TEST_F(StreamTypes, areOneInAndOneOut) {
    DWORD inputs = 9;
    DWORD outputs = 9;
    EXPECT_EQ(CStreamTypes::GetStreamCount(&inputs, &outputs), S_OK);
    EXPECT_EQ(inputs, 1U);
    EXPECT_EQ(outputs, 1U);
    EXPECT_EQ(CStreamTypes::GetStreamCount(nullptr, &outputs), E_POINTER);
    EXPECT_EQ(CStreamTypes::GetStreamCount(&inputs, nullptr), E_POINTER);
    DWORD flags = 0;
    EXPECT_EQ(CStreamTypes::GetInputStreamInfo(0, &flags), S_OK);
    EXPECT_EQ(flags, 5U);
    flags = 0;
    EXPECT_EQ(CStreamTypes::GetOutputStreamInfo(0, &flags), S_OK);
    EXPECT_EQ(flags, 5U);
    EXPECT_EQ(CStreamTypes::GetInputStreamInfo(1, &flags), streamIsInvalid);
    EXPECT_EQ(CStreamTypes::GetOutputStreamInfo(1, &flags), streamIsInvalid);
    EXPECT_EQ(CStreamTypes::GetInputStreamInfo(0, nullptr), E_POINTER);
    EXPECT_EQ(CStreamTypes::GetOutputStreamInfo(0, nullptr), E_POINTER);
}

TEST_F(StreamTypes, refuseEveryOtherStream) {
    DMO_MEDIA_TYPE type{};
    DWORD word = 0;
    REFERENCE_TIME time = 0;
    for (const DWORD stream : {1U, 0xFFFFFFFFU}) {
        EXPECT_EQ(types.GetInputType(stream, 0, &type), streamIsInvalid);
        EXPECT_EQ(types.GetOutputType(stream, 0, &type), streamIsInvalid);
        EXPECT_EQ(types.SetInputType(stream, nullptr, 99), streamIsInvalid);
        EXPECT_EQ(types.SetOutputType(stream, nullptr, 99), streamIsInvalid);
        EXPECT_EQ(types.GetInputCurrentType(stream, nullptr), streamIsInvalid);
        EXPECT_EQ(types.GetOutputCurrentType(stream, nullptr), streamIsInvalid);
        EXPECT_EQ(types.GetInputSizeInfo(stream, &word, &word, &word), streamIsInvalid);
        EXPECT_EQ(types.GetOutputSizeInfo(stream, &word, &word), streamIsInvalid);
        EXPECT_EQ(CStreamTypes::GetInputMaxLatency(stream, &time), streamIsInvalid);
        EXPECT_EQ(CStreamTypes::SetInputMaxLatency(stream, 5), streamIsInvalid);
        EXPECT_EQ(types.GetInputStatus(stream, false, &word), streamIsInvalid);
        EXPECT_EQ(types.Discontinuity(stream, false), streamIsInvalid);
    }
}

TEST_F(StreamTypes, offerThreeInputsWithoutFormat) {
    const GUID* subtypes[]{&MEDIASUBTYPE_YUY2, &MEDIASUBTYPE_YV12, &MEDIASUBTYPE_RGB32};
    for (DWORD i = 0; i < 3; ++i) {
        DMO_MEDIA_TYPE type;
        std::memset(&type, 0xCD, sizeof(type)); // callers give away what they have
        ASSERT_EQ(types.GetInputType(0, i, &type), S_OK);
        EXPECT_TRUE(type.majortype == MEDIATYPE_Video);
        EXPECT_TRUE(type.subtype == *subtypes[i]);
        EXPECT_TRUE(type.formattype == GUID_NULL);
        EXPECT_EQ(type.pbFormat, nullptr);
        EXPECT_EQ(type.cbFormat, 0U);
        EXPECT_EQ(type.pUnk, nullptr);
        EXPECT_EQ(types.GetInputType(0, i, nullptr), S_OK);
    }
    DMO_MEDIA_TYPE type{};
    EXPECT_EQ(types.GetInputType(0, 3, &type), noItemsLeft);
    EXPECT_EQ(types.GetInputType(0, 3, nullptr), noItemsLeft);
    EXPECT_EQ(types.GetInputType(0, 0xFFFFFFFFU, &type), noItemsLeft);
}

TEST_F(StreamTypes, offerOutputsWithoutFormatBeforeTheInputIsSet) {
    ASSERT_EQ(setInput(yv12Input(2048, 1536), testOnly), S_OK); // sets nothing
    owner.takeCalls();
    for (DWORD i = 0; i < 4; ++i) {
        DMO_MEDIA_TYPE type;
        std::memset(&type, 0xCD, sizeof(type));
        ASSERT_EQ(types.GetOutputType(0, i, &type), S_OK);
        EXPECT_TRUE(type.majortype == MEDIATYPE_Video);
        EXPECT_TRUE(type.subtype == (i % 2 == 0 ? MEDIASUBTYPE_YV12 : MEDIASUBTYPE_RGB32));
        EXPECT_EQ(type.pbFormat, nullptr);
        EXPECT_EQ(type.cbFormat, 0U);
    }
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    DMO_MEDIA_TYPE type{};
    EXPECT_EQ(types.GetOutputType(0, 4, &type), noItemsLeft);
    EXPECT_EQ(types.GetOutputType(0, 4, nullptr), noItemsLeft);
}

TEST_F(StreamTypes, needADeviceToOfferOutputs) {
    ASSERT_EQ(setInput(yv12Input(2048, 1536)), S_OK);
    owner.takeCalls();
    EXPECT_EQ(types.GetOutputType(0, 0, nullptr), S_OK);
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    owner.creation = E_OUTOFMEMORY;
    DMO_MEDIA_TYPE type;
    std::memset(&type, 0xCD, sizeof(type));
    EXPECT_EQ(types.GetOutputType(0, 0, &type), E_FAIL);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_THAT(owner.takeCalls(), ElementsAre("create", "release"));
    owner.creation = S_OK;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(types.GetOutputType(0, 0, &type), S_OK);
        com::CMediaType owned;
        owned.attach(type);
        EXPECT_NE(type.pbFormat, nullptr);
    }
    EXPECT_THAT(owner.takeCalls(), ElementsAre("create")); // once
}

TEST_F(StreamTypes, areSetTriedAndCleared) {
    EXPECT_EQ(setInput(yv12Input(2048, 1536), 4), E_INVALIDARG);
    EXPECT_EQ(setInput(yv12Input(2048, 1536), 0x80000001U), E_INVALIDARG);
    EXPECT_EQ(setOutput(rgbOutput(), 4), E_INVALIDARG);
    EXPECT_THAT(owner.takeCalls(), IsEmpty());

    EXPECT_EQ(setInput(yv12Input(2048, 1536), testOnly), S_OK);
    EXPECT_FALSE(types.isInputTypeSet());
    EXPECT_EQ(currentWidth(true), -1);
    EXPECT_EQ(negotiation.formats().inputWidth, 2048U); // the side effects of a check

    EXPECT_EQ(setInput(yv12Input(2048, 1536)), S_OK);
    EXPECT_TRUE(types.isInputTypeSet());
    EXPECT_EQ(currentWidth(true), 2048);
    EXPECT_FALSE(types.areAllTypesSet());
    EXPECT_EQ(setOutput(rgbOutput()), S_OK);
    EXPECT_TRUE(types.areAllTypesSet());
    EXPECT_EQ(currentWidth(false), 1024);

    EXPECT_EQ(types.SetInputType(0, nullptr, clear), S_OK);
    EXPECT_FALSE(types.isInputTypeSet());
    EXPECT_TRUE(types.isOutputTypeSet());
    EXPECT_FALSE(types.areAllTypesSet());
    EXPECT_EQ(currentWidth(true), -1);
    EXPECT_EQ(currentWidth(false), 1024);
    EXPECT_EQ(setInput(yv12Input(640, 480)), S_OK);
    EXPECT_TRUE(types.areAllTypesSet());
    EXPECT_EQ(setOutput(rgbOutput(), clear | testOnly), S_OK);
    EXPECT_FALSE(types.isOutputTypeSet());
    EXPECT_EQ(types.SetOutputType(0, nullptr, clear), S_OK);
}

TEST_F(StreamTypes, keepTheCurrentTypeWhenAnotherIsRefused) {
    setBoth();
    EXPECT_EQ(setInput(yv12Input(0, 1080)), typeIsNotAccepted);
    EXPECT_EQ(types.SetInputType(0, nullptr, 0), typeIsNotAccepted);
    EXPECT_EQ(currentWidth(true), 2048);
    VideoType narrow = rgbOutput();
    narrow.target = {0, 0, 640, 480};
    EXPECT_EQ(setOutput(narrow), typeIsNotAccepted);
    EXPECT_EQ(types.SetOutputType(0, nullptr, 0), typeIsNotAccepted);
    EXPECT_EQ(currentWidth(false), 1024);
    EXPECT_TRUE(types.areAllTypesSet());

    // The input's values are those of the type that was checked last, even if only tried.
    EXPECT_EQ(setInput(yv12Input(640, 480), testOnly), S_OK);
    EXPECT_EQ(currentWidth(true), 2048);
    EXPECT_EQ(negotiation.formats().inputWidth, 640U);
}

TEST_F(StreamTypes, giveAwayCopiesOfTheCurrentTypes) {
    DMO_MEDIA_TYPE type{};
    EXPECT_EQ(types.GetInputCurrentType(0, &type), typeIsNotSet);
    EXPECT_EQ(types.GetOutputCurrentType(0, &type), typeIsNotSet);
    EXPECT_EQ(types.GetInputCurrentType(0, nullptr), E_POINTER);
    EXPECT_EQ(types.GetOutputCurrentType(0, nullptr), E_POINTER);
    com::CMediaType given = yv12Input(2048, 1536).make();
    ASSERT_EQ(types.SetInputType(0, &given.get(), 0), S_OK);
    std::memset(given.fields().pbFormat, 0, given->cbFormat);
    ASSERT_EQ(types.GetInputCurrentType(0, &type), S_OK);
    com::CMediaType first;
    first.attach(type);
    EXPECT_NE(type.pbFormat, given->pbFormat);
    EXPECT_EQ(first.format<VIDEOINFOHEADER2>(FORMAT_VideoInfo2)->bmiHeader.biWidth, 2048);
    std::memset(first.fields().pbFormat, 0, first->cbFormat);
    EXPECT_EQ(currentWidth(true), 2048);
}

TEST_F(StreamTypes, tellSizesOnceTypesAreSet) {
    DWORD bytes = 0;
    DWORD lookahead = 9;
    DWORD alignment = 9;
    EXPECT_EQ(types.GetInputSizeInfo(0, &bytes, &lookahead, &alignment), typeIsNotSet);
    EXPECT_EQ(types.GetInputSizeInfo(0, nullptr, &lookahead, &alignment), E_POINTER);
    EXPECT_EQ(types.GetInputSizeInfo(0, &bytes, nullptr, &alignment), E_POINTER);
    EXPECT_EQ(types.GetInputSizeInfo(0, &bytes, &lookahead, nullptr), E_POINTER);
    EXPECT_EQ(types.GetOutputSizeInfo(0, nullptr, &alignment), E_POINTER);
    EXPECT_EQ(types.GetOutputSizeInfo(0, &bytes, nullptr), E_POINTER);
    ASSERT_EQ(setOutput(rgbOutput()), S_OK);
    EXPECT_EQ(types.GetOutputSizeInfo(0, &bytes, &alignment), typeIsNotSet); // the input is not
    ASSERT_EQ(setInput(yv12Input(2048, 1536)), S_OK);
    ASSERT_EQ(types.GetInputSizeInfo(0, &bytes, &lookahead, &alignment), S_OK);
    EXPECT_EQ(bytes, 2048U * 1536 * 3 / 2);
    EXPECT_EQ(lookahead, 0U);
    EXPECT_EQ(alignment, 1U);
    alignment = 9;
    ASSERT_EQ(types.GetOutputSizeInfo(0, &bytes, &alignment), S_OK);
    EXPECT_EQ(bytes, 1024U * 768 * 4);
    EXPECT_EQ(alignment, 1U);
    REFERENCE_TIME latency = 5;
    EXPECT_EQ(CStreamTypes::SetInputMaxLatency(0, 1'000'000), S_OK);
    EXPECT_EQ(CStreamTypes::GetInputMaxLatency(0, &latency), S_OK);
    EXPECT_EQ(latency, 0);
    EXPECT_EQ(CStreamTypes::GetInputMaxLatency(0, nullptr), E_POINTER);
}

TEST_F(StreamTypes, acceptInputWhileNoneIsHeld) {
    DWORD flags = 9;
    EXPECT_EQ(types.GetInputStatus(0, false, nullptr), E_POINTER);
    EXPECT_EQ(types.GetInputStatus(0, false, &flags), typeIsNotSet);
    EXPECT_EQ(types.Discontinuity(0, false), typeIsNotSet);
    setBoth();
    EXPECT_EQ(types.GetInputStatus(0, false, &flags), S_OK);
    EXPECT_EQ(flags, 1U);
    EXPECT_EQ(types.GetInputStatus(0, true, &flags), S_OK);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(types.Discontinuity(0, false), S_OK);
    EXPECT_EQ(types.Discontinuity(0, true), notAcceptingNow);
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
}

TEST_F(StreamTypes, allocateAndFreeResources) {
    EXPECT_EQ(types.AllocateStreamingResources(), typeIsNotSet);
    EXPECT_EQ(types.FreeStreamingResources(), S_OK);
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    setBoth();
    owner.creation = E_INVALIDARG;
    EXPECT_EQ(types.AllocateStreamingResources(), E_FAIL);
    EXPECT_THAT(owner.takeCalls(), ElementsAre("create", "release"));
    owner.creation = S_OK;
    EXPECT_EQ(types.AllocateStreamingResources(), S_OK); // the failure is not remembered
    EXPECT_THAT(owner.takeCalls(), ElementsAre("create"));
    owner.deviceExists = false;
    EXPECT_EQ(types.AllocateStreamingResources(), S_OK); // allocated; the next frame builds the device
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    EXPECT_EQ(types.FreeStreamingResources(), S_OK);
    EXPECT_THAT(owner.takeCalls(), ElementsAre("flush", "cache", "image"));
    EXPECT_EQ(types.FreeStreamingResources(), S_OK);
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    owner.deviceExists = true;
    EXPECT_EQ(types.AllocateStreamingResources(), S_OK);
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
}

TEST_F(StreamTypes, flushOnceAfterAnInput) {
    EXPECT_EQ(types.Flush(), S_OK);
    setBoth();
    EXPECT_EQ(types.Flush(), S_OK); // flushed from the beginning
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    types.inputBegun();
    EXPECT_EQ(types.Flush(), S_OK);
    EXPECT_EQ(types.Flush(), S_OK);
    EXPECT_THAT(owner.takeCalls(), ElementsAre("flush"));
}

TEST_F(StreamTypes, flushAgainWhatCameInDuringAFlush) {
    setBoth();
    types.inputBegun();
    owner.whileFlushing = [this] { types.inputBegun(); };
    EXPECT_EQ(types.Flush(), S_OK);
    owner.whileFlushing = nullptr;
    EXPECT_EQ(types.Flush(), S_OK);
    EXPECT_THAT(owner.takeCalls(), ElementsAre("flush", "flush"));
}

TEST_F(StreamTypes, freeResourcesWhenATypeIsCleared) {
    setBoth();
    types.inputBegun();
    EXPECT_EQ(types.SetOutputType(0, nullptr, clear), S_OK);
    // Nothing was allocated, and with a type missing there is nothing to flush.
    EXPECT_THAT(owner.takeCalls(), IsEmpty());
    setBoth();
    ASSERT_EQ(types.AllocateStreamingResources(), S_OK);
    owner.takeCalls();
    EXPECT_EQ(types.SetInputType(0, nullptr, clear), S_OK);
    EXPECT_THAT(owner.takeCalls(), ElementsAre("flush", "cache", "image"));
}

} // namespace
} // namespace tarvo::transform
