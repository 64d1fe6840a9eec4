#include "com/SafeArray.h"
#include "tests/transform/StreamingFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace tarvo::transform {
namespace {

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

} // namespace
} // namespace tarvo::transform
