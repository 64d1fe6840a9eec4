#include "com/SafeArray.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <new>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Streaming : public CTransformTest {};

std::vector<std::uint8_t> upsideDown(const std::vector<std::uint8_t>& picture, std::size_t rowBytes) {
    std::vector<std::uint8_t> result;
    for (std::size_t end = picture.size(); end != 0; end -= rowBytes)
        result.insert(result.end(), picture.begin() + static_cast<std::ptrdiff_t>(end - rowBytes),
                      picture.begin() + static_cast<std::ptrdiff_t>(end));
    return result;
}

TEST_F(Streaming, bypassGivesTheInputAsItIs) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24);
    const auto picture = patternRgb(32, 24);
    const Delivered frame = host.through(picture, 5'000'000, 400'000);
    EXPECT_EQ(frame.result, S_OK);
    EXPECT_EQ(frame.bytes, picture);
    EXPECT_EQ(frame.time, 5'000'000);
    EXPECT_EQ(frame.duration, 400'000);
    EXPECT_EQ(frame.status, DWORD{DMO_OUTPUT_DATA_BUFFERF_SYNCPOINT | DMO_OUTPUT_DATA_BUFFERF_TIME |
                                  DMO_OUTPUT_DATA_BUFFERF_TIMELENGTH});
}

TEST_F(Streaming, keepsTheDirectionsOfRowsApart) {
    const auto picture = patternRgb(32, 24);
    for (const int inputSign : {1, -1}) {
        for (const int outputSign : {1, -1}) {
            CTransformHost host;
            ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
            host.transform->put_OutputWidth(32);
            host.transform->put_OutputHeight(24);
            ASSERT_EQ(host.setInput(rgbType(32, 24 * inputSign)), S_OK);
            ASSERT_EQ(host.setOutput(rgbType(32, 24 * outputSign)), S_OK);
            const auto expected = inputSign == outputSign ? picture : upsideDown(picture, 32 * 4);
            EXPECT_EQ(host.through(picture).bytes, expected) << inputSign << " " << outputSign;
        }
    }
}

TEST_F(Streaming, aDewarpedFrameIsNotTheInputAndNotBlack) {
    CTransformHost host;
    host.negotiateRgb(64, 48, 32, 24);
    const std::vector<std::uint8_t> grey(64 * 48 * 4, 200);
    const Delivered frame = host.through(grey);
    ASSERT_EQ(frame.result, S_OK);
    // What looks straight ahead sees the picture's middle.
    const std::size_t middle = (12 * 32 + 16) * 4;
    EXPECT_EQ(frame.bytes[middle], 200);
    EXPECT_EQ(frame.bytes[middle + 2], 200);
}

TEST_F(Streaming, aRateOfTwiceTheInputsGivesTwoFrames) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_OutputFrameRate(60.0), S_OK);
    host.negotiateRgb(32, 24, 32, 24, 333'333);
    const Delivered first = host.through(patternRgb(32, 24), 1'000'000, 333'333);
    EXPECT_EQ(first.time, 1'000'000);
    EXPECT_EQ(first.duration, 166'666);
    EXPECT_TRUE(first.isIncomplete());
    const Delivered second = host.frame();
    EXPECT_EQ(second.result, S_OK);
    EXPECT_EQ(second.time, 1'166'666);
    EXPECT_EQ(second.duration, 166'666);
    EXPECT_FALSE(second.isIncomplete());
    EXPECT_EQ(second.bytes, first.bytes) << "a repeat";
}

TEST_F(Streaming, noRateOfItsOwnGivesOneFrame) {
    for (const double rate : {0.0, 10.0}) {
        CTransformHost host;
        ASSERT_EQ(host.transform->put_OutputFrameRate(rate), S_OK);
        host.negotiateRgb(32, 24, 32, 24, 333'333);
        const Delivered frame = host.through(patternRgb(32, 24), 0, 333'333);
        EXPECT_EQ(frame.duration, 333'333);
        EXPECT_FALSE(frame.isIncomplete());
    }
}

TEST_F(Streaming, takesDurationsFromTheRateWhereTheSampleHasNone) {
    CTransformHost host;
    host.negotiateRgb(32, 24, 32, 24, 400'000);
    CFakeBuffer buffer(patternRgb(32, 24));
    ASSERT_EQ(host.input(buffer, 7, 0, DMO_INPUT_DATA_BUFFERF_TIME), S_OK);
    EXPECT_EQ(host.frame().duration, 400'000);
    ASSERT_EQ(host.input(buffer, 7, 5'000, timed), S_OK);
    EXPECT_EQ(host.frame().duration, 400'000) << "1 ms or less is distrusted";
}

TEST_F(Streaming, showsAChangeInTheRepeats) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_OutputFrameRate(100.0), S_OK);
    host.negotiateRgb(64, 48, 32, 24, 400'000);
    const Delivered first = host.through(patternRgb(64, 48), 0, 400'000);
    EXPECT_EQ(host.frame().bytes, first.bytes);
    ASSERT_EQ(host.transform->put_Pan(40.0), S_OK);
    const Delivered turned = host.frame();
    EXPECT_NE(turned.bytes, first.bytes);
    EXPECT_EQ(host.frame().bytes, turned.bytes);

    CTransformHost other;
    other.negotiateRgb(64, 48, 32, 24, 400'000);
    ASSERT_EQ(other.transform->put_Pan(40.0), S_OK);
    EXPECT_EQ(other.through(patternRgb(64, 48)).bytes, turned.bytes);
}

/// What a host may set on a stream that repeats its frames, by name.
struct Setting {
    const char* name;
    std::function<void(IDewarpingTransform&)> set;
};

com::CSafeArray lensProfile(double a, double b, double c) {
    com::CSafeArray profile = com::CSafeArray::vector(VT_R8, 3);
    std::ranges::copy(std::array{a, b, c}, com::CSafeArrayAccess<double>(profile.get()).elements().begin());
    return profile;
}

TEST_F(Streaming, repeatsAreDrawnOnlyWhereSomethingChanged) {
    CTransformHost host(CTransformHost::Device::recording);
    ASSERT_EQ(host.transform->put_OutputFrameRate(50.0), S_OK);
    host.negotiateRgb(64, 48, 32, 24, 400'000);
    ASSERT_EQ(host.through(patternRgb(64, 48)).result, S_OK);
    const auto work = [&] {
        return std::pair(host.recording->count(tests::Verb::flush), // which ends a drawing
                         host.recording->count(tests::Verb::readBack));
    };
    const std::vector<Setting> same{
        {"nothing", [](auto&) {}},
        {"pan", [](auto& t) { t.put_Pan(0.0); }},
        {"move", [](auto& t) { t.SetPTZPosition(0.0, 0.0, 0.0, VARIANT_TRUE); }},
        {"mounting in force", [](auto& t) { t.put_TiltOrientation(1); }},
        {"view type", [](auto& t) { t.put_ViewType(0); }},
        {"no view type", [](auto& t) { t.put_ViewType(6); }},
        {"selected view", [](auto& t) { t.put_SelectedView(3); }},
        {"all views", [](auto& t) { t.put_SelectedView(0); }},
        {"bypass", [](auto& t) { t.put_Bypass(VARIANT_FALSE); }},
        {"limited effect level", [](auto& t) { t.put_EffectLevel(7.0); }},
        {"panorama's angle", [](auto& t) { t.put_PanoramaFieldOfView(180.0); }},
        {"panorama's offset", [](auto& t) { t.put_PanoramaPanOffset(-90.0); }},
        {"lens", [](auto& t) { t.put_LensProfile(lensProfile(-0.022618674, 0.014994084, 0.368175).get()); }},
        {"options of the stream", [](auto& t) { t.put_Options(4 + 8); }},
        {"control type", [](auto& t) { t.put_CustomTransformControlType(0); }},
        {"rate", [](auto& t) { t.put_OutputFrameRate(100.0); }},
    };
    for (const Setting& setting : same) {
        const auto before = work();
        setting.set(*host.transform);
        EXPECT_EQ(host.frame().result, S_OK);
        EXPECT_EQ(work(), before) << setting.name;
    }
    const std::vector<Setting> others{
        {"pan", [](auto& t) { t.put_Pan(5.0); }},
        {"tilt", [](auto& t) { t.put_Tilt(-7.0); }},
        {"field of view", [](auto& t) { t.put_FieldOfView(21.0); }},
        {"move", [](auto& t) { t.SetPTZPosition(1.0, 0.0, 0.0, VARIANT_TRUE); }},
        {"mounting", [](auto& t) { t.put_TiltOrientation(2); }},
        {"effect level", [](auto& t) { t.put_EffectLevel(0.5); }},
        {"bypass", [](auto& t) { t.put_Bypass(VARIANT_TRUE); }},
        {"no bypass", [](auto& t) { t.put_Bypass(VARIANT_FALSE); }},
        {"view type", [](auto& t) { t.put_ViewType(1); }},
        {"sub-view",
         [](auto& t) {
             t.put_SelectedView(2);
             t.put_FieldOfView(30.0);
         }},
        {"panorama's angle", [](auto& t) { t.put_PanoramaFieldOfView(90.0); }},
        {"panorama's offset", [](auto& t) { t.put_PanoramaPanOffset(0.0); }},
        {"lens", [](auto& t) { t.put_LensProfile(lensProfile(0.0, 0.0, 0.5).get()); }},
        {"overview's side", [](auto& t) { t.put_Options(1 + 4 + 8); }},
        {"exclude area",
         [](auto& t) {
             ComPtr<IRectangle> rectangle;
             t.get_ExcludeRect(rectangle.put());
             rectangle->Init(0.0, 0.0, 0.5, 0.5);
         }},
        {"custom view's part",
         [](auto& t) {
             ComPtr<IRectangle> rectangle;
             t.get_CustomTransformViewRect(rectangle.put());
             rectangle->put_Left(0.25);
         }},
        {"tables", [](auto& t) { t.SetCustomTransformData(com::CSafeArray::vector(VT_UI1, 8).get(), 0); }},
        {"control type", [](auto& t) { t.put_CustomTransformControlType(1); }},
        {"control",
         [](auto& t) {
             ComPtr<IUnknown> control;
             t.get_CustomTransformControl(control.put());
             control.template as<IVirtualPtzFromPanoramaControl>()->put_CameraRoll(4.0);
         }},
    };
    for (const Setting& setting : others) {
        const auto [drawn, readBack] = work();
        setting.set(*host.transform);
        EXPECT_EQ(host.frame().result, S_OK);
        EXPECT_EQ(work(), std::pair(drawn + 1, readBack + 1)) << setting.name;
        EXPECT_EQ(host.frame().result, S_OK);
        EXPECT_EQ(work(), std::pair(drawn + 1, readBack + 1)) << setting.name << ", shown again";
    }
    // Without more frames than come in there is no copy to repeat.
    ASSERT_EQ(host.transform->put_OutputFrameRate(25.0), S_OK);
    ASSERT_EQ(host.through(patternRgb(64, 48), 400'000).result, S_OK);
    const auto [drawn, readBack] = work();
    EXPECT_EQ(host.frame().result, S_OK);
    EXPECT_EQ(work(), std::pair(drawn, readBack + 1));
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

TEST_F(Streaming, aCachedFrameGoesWithItsFormat) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_OutputFrameRate(50.0), S_OK);
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24, 400'000);
    const auto picture = patternRgb(32, 24);
    EXPECT_EQ(host.through(picture).bytes, picture);
    ASSERT_EQ(host.setOutput(rgbType(32, 24)), S_OK) << "the bottom row first";
    EXPECT_EQ(host.frame().bytes, upsideDown(picture, 32 * 4));
}

TEST_F(Streaming, aCachedFrameThatGrewOldIsNotShownAgain) {
    // Repeats are copies of the cached frame until somebody wants to see every picture.
    CTransformHost host;
    ASSERT_EQ(host.transform->put_OutputFrameRate(50.0), S_OK);
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24, 400'000);
    const auto first = patternRgb(32, 24, 1);
    const auto second = patternRgb(32, 24, 2);
    EXPECT_EQ(host.through(first, 0).bytes, first);
    EXPECT_EQ(host.frame().bytes, first);
    ASSERT_EQ(host.transform->put_OutputFrameRate(25.0), S_OK);
    EXPECT_EQ(host.through(second, 400'000).bytes, second) << "read back directly";
    EXPECT_EQ(host.frame().bytes, second);
}

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

TEST_F(Streaming, readsNoFurtherThanAFrameGoes) {
    // The rows that are missing are black; the sanitizer sees to the rest.
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.negotiateRgb(32, 24, 32, 24);
    auto picture = patternRgb(32, 24);
    picture.resize(12 * 32 * 4);
    const Delivered frame = host.through(picture);
    ASSERT_EQ(frame.result, S_OK);
    EXPECT_TRUE(std::equal(picture.begin(), picture.end(), frame.bytes.begin()));
    EXPECT_TRUE(std::all_of(frame.bytes.begin() + 12 * 32 * 4, frame.bytes.end(),
                            [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(Streaming, takesFramesOfATypeThatDoesNotSayHowLargeTheyAre) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    VideoType type = rgbType(32, -24);
    type.imageBytes = 0;
    ASSERT_EQ(host.setInput(type), S_OK);
    ASSERT_EQ(host.setOutput(rgbType(32, -24)), S_OK);
    const auto picture = patternRgb(32, 24);
    EXPECT_EQ(host.through(picture).bytes, picture);
}

TEST_F(Streaming, survivesTypesThatLieAboutTheOutput) {
    CTransformHost host;
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    ASSERT_EQ(host.setInput(rgbType(32, -24)), S_OK);
    for (const std::uint32_t bytes : {0U, 1U, 24U, 32U * 24, 4U * 32 * 24 * 3}) {
        VideoType type = rgbType(32, -24);
        type.imageBytes = bytes;
        ASSERT_EQ(host.setOutput(type), S_OK) << bytes;
        EXPECT_EQ(host.through(patternRgb(32, 24)).result, S_OK) << bytes;
        type.subtype = &MEDIASUBTYPE_YV12;
        ASSERT_EQ(host.setOutput(type), S_OK) << bytes;
        const HRESULT expected = bytes / 24 * 8 / 12 >= 2 ? S_OK : E_FAIL;
        EXPECT_EQ(host.through(patternRgb(32, 24)).result, expected) << bytes;
    }
    VideoType flat = rgbType(32, 0);
    EXPECT_EQ(host.setOutput(flat), typeIsNotAccepted);
}

TEST_F(Streaming, deliversYv12) {
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    ASSERT_EQ(host.setInput(rgbType(32, -24)), S_OK);
    VideoType type = yv12Input(32, 24);
    ASSERT_EQ(host.setOutput(type), S_OK);
    const std::vector<std::uint8_t> white(32 * 24 * 4, 255);
    const Delivered frame = host.through(white);
    ASSERT_EQ(frame.result, S_OK);
    ASSERT_EQ(frame.bytes.size(), 32U * 24 * 3 / 2);
    // (16843 + 33030 + 6423) · 255 + 0x108000 in sixteenths of 2^20 is 235; the chroma of grey is 128.
    EXPECT_TRUE(std::all_of(frame.bytes.begin(), frame.bytes.begin() + 32 * 24,
                            [](std::uint8_t byte) { return byte == 235; }));
    EXPECT_TRUE(std::all_of(frame.bytes.begin() + 32 * 24, frame.bytes.end(),
                            [](std::uint8_t byte) { return byte == 128; }));
}

TEST_F(Streaming, takesYv12AndYuy2) {
    // Grey has its luma in both.
    CTransformHost host;
    ASSERT_EQ(host.transform->put_Bypass(VARIANT_TRUE), S_OK);
    host.transform->put_OutputWidth(32);
    host.transform->put_OutputHeight(24);
    std::vector<std::uint8_t> planar(32 * 24 * 3 / 2, 128);
    std::fill_n(planar.begin(), 32 * 24, std::uint8_t{100});
    ASSERT_EQ(host.setInput(yv12Input(32, 24)), S_OK);
    ASSERT_EQ(host.setOutput(rgbType(32, -24)), S_OK);
    EXPECT_NEAR(host.through(planar).bytes[4 * 500], 100, 1);

    VideoType type = rgbType(32, 24);
    type.subtype = &MEDIASUBTYPE_YUY2;
    type.imageBytes = 32 * 24 * 2;
    ASSERT_EQ(host.setInput(type), S_OK) << "while the stream runs";
    std::vector<std::uint8_t> packed;
    for (int i = 0; i < 32 * 24; ++i) {
        packed.push_back(60);
        packed.push_back(128);
    }
    EXPECT_NEAR(host.through(packed).bytes[4 * 500], 60, 1);
}

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
