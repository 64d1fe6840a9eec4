#include "transform/CustomProperties.h"

#include "com/SafeArray.h"
#include "tests/transform/TransformHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace tarvo::transform {
namespace {

using com::references;
using testing::ElementsAre;

class CustomProperties : public CTransformTest {
protected:
    CustomProperties() { host.takeLines(); }

    static com::CSafeArray blob(const std::vector<std::uint16_t>& words) {
        com::CSafeArray array = com::CSafeArray::vector(VT_UI1, static_cast<std::uint32_t>(words.size() * 2));
        std::memcpy(com::CSafeArrayAccess<std::uint8_t>(array.get()).elements().data(), words.data(),
                    words.size() * 2);
        return array;
    }
    /// One table whose every cell looks at one place with full weight.
    static com::CSafeArray looksAt(std::uint16_t x, std::uint16_t y) {
        constexpr std::uint16_t width = 4;
        constexpr std::uint16_t height = 3;
        std::vector<std::uint16_t> words{1, 0, width, height};
        for (int i = 0; i < width * height; ++i)
            words.insert(words.end(), {x, y, 65535});
        return blob(words);
    }
    /// A frame of an input whose left half is blue and whose right half is white.
    std::vector<std::uint8_t> frame(REFERENCE_TIME time = 0) {
        std::vector<std::uint8_t> picture;
        for (int i = 0; i < 64 * 48; ++i) {
            const bool isRight = i % 64 >= 32;
            const std::uint8_t other = isRight ? 255 : 0;
            picture.insert(picture.end(), {255, other, other, 255});
        }
        return host.through(picture, time).bytes;
    }
    static std::vector<std::uint8_t> filled(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
        std::vector<std::uint8_t> bytes;
        for (int i = 0; i < 32 * 24; ++i)
            bytes.insert(bytes.end(), {blue, green, red, 255});
        return bytes;
    }

    CTransformHost host;
    IDewarpingTransform& transform = *host.transform.get();
};

TEST_F(CustomProperties, controlTypesHaveNames) {
    LONG type = -1;
    EXPECT_EQ(transform.get_CustomTransformControlType(&type), S_OK);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(transform.put_CustomTransformControlType(1), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - CustomTransformControlType - Set: <virtualPtzFromPanorama>");
    EXPECT_EQ(transform.put_CustomTransformControlType(0), S_OK);
    EXPECT_EQ(host.takeLine(), "_:[1] - CustomTransformControlType - Set: <digitalZoom>");
    for (const LONG value : {-1, 2}) {
        EXPECT_EQ(transform.put_CustomTransformControlType(value), E_INVALIDARG);
        EXPECT_EQ(host.takeLine(),
                  "E:[1] - CustomTransformControlType - Unknown view type: " + std::to_string(value));
    }
    EXPECT_EQ(transform.get_CustomTransformControlType(&type), S_OK);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(transform.get_CustomTransformControlType(nullptr), E_POINTER);
}

TEST_F(CustomProperties, handOutOneControlOfEachType) {
    ComPtr<IUnknown> zoom;
    ComPtr<IUnknown> camera;
    EXPECT_EQ(transform.get_CustomTransformControl(nullptr), E_POINTER);
    ASSERT_EQ(transform.get_CustomTransformControl(zoom.put()), S_OK);
    EXPECT_NE(com::answerFor<IDigitalZoomControl>(zoom.get()), nullptr);
    EXPECT_EQ(com::answerFor<IVirtualPtzFromPanoramaControl>(zoom.get()), nullptr);
    ASSERT_EQ(transform.put_CustomTransformControlType(1), S_OK);
    ASSERT_EQ(transform.get_CustomTransformControl(camera.put()), S_OK);
    EXPECT_NE(com::answerFor<IVirtualPtzFromPanoramaControl>(camera.get()), nullptr);
    EXPECT_EQ(com::answerFor<IDigitalZoomControl>(camera.get()), nullptr);
    EXPECT_EQ(references(zoom.get()), 2U) << "ours and the transform's";

    camera.as<IVirtualPtzFromPanoramaControl>()->put_CameraRoll(3.5);
    ASSERT_EQ(transform.put_CustomTransformControlType(0), S_OK);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    ASSERT_EQ(transform.put_ViewType(0), S_OK);
    ASSERT_EQ(transform.put_CustomTransformControlType(1), S_OK);
    ComPtr<IUnknown> again;
    ASSERT_EQ(transform.get_CustomTransformControl(again.put()), S_OK);
    EXPECT_EQ(again.get(), camera.get());
    double roll = 0.0;
    EXPECT_EQ(again.as<IVirtualPtzFromPanoramaControl>()->get_CameraRoll(&roll), S_OK);
    EXPECT_EQ(roll, 3.5);
}

TEST_F(CustomProperties, viewRectangleIsTheDigitalZooms) {
    ComPtr<IRectangle> rectangle;
    EXPECT_EQ(transform.get_CustomTransformViewRect(nullptr), E_POINTER);
    ASSERT_EQ(transform.get_CustomTransformViewRect(rectangle.put()), S_OK);
    ComPtr<IUnknown> control;
    ASSERT_EQ(transform.get_CustomTransformControl(control.put()), S_OK);
    ComPtr<IRectangle> itsOwn;
    ASSERT_EQ(control.as<IDigitalZoomControl>()->get_ViewRect(itsOwn.put()), S_OK);
    EXPECT_EQ(itsOwn.get(), rectangle.get());
    ASSERT_EQ(transform.put_CustomTransformControlType(1), S_OK);
    auto* none = rectangle.get();
    EXPECT_EQ(transform.get_CustomTransformViewRect(&none), E_FAIL);
    EXPECT_EQ(none, nullptr);
}

TEST_F(CustomProperties, refuseWrongData) {
    EXPECT_EQ(transform.SetCustomTransformData(looksAt(0, 0).get(), 1), E_INVALIDARG);
    EXPECT_EQ(host.takeLine(), "E:reserved argument must be zero!");
    EXPECT_EQ(transform.SetCustomTransformData(nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(transform.SetCustomTransformData(com::CSafeArray::vector(VT_I2, 40).get(), 0), E_INVALIDARG);
    com::CSafeArray five = com::CSafeArray::vector(VT_UI1, 5);
    EXPECT_EQ(transform.SetCustomTransformData(five.get(), 0), E_INVALIDARG);
    EXPECT_EQ(host.takeLine(), "E:Not enough data");
    EXPECT_EQ(transform.SetCustomTransformData(blob({1, 0, 2, 2}).get(), 0), E_INVALIDARG);
    EXPECT_THAT(host.takeLines(),
                ElementsAre("_:tables: 1, block size: 0 width: 2, height 2 (0 kB)", "E:Invalid data size"));
}

TEST_F(CustomProperties, tablesDecideWhatIsSeen) {
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    EXPECT_EQ(frame(), filled(0, 0, 0)) << "black without tables";
    ASSERT_EQ(transform.SetCustomTransformData(looksAt(10'000, 30'000).get(), 0), S_OK);
    EXPECT_EQ(frame(400'000), filled(255, 0, 0));
    ASSERT_EQ(transform.SetCustomTransformData(looksAt(50'000, 30'000).get(), 0), S_OK);
    EXPECT_EQ(frame(800'000), filled(255, 255, 255));
    EXPECT_EQ(transform.SetCustomTransformData(blob({1, 0, 2, 2}).get(), 0), E_INVALIDARG);
    EXPECT_EQ(frame(1'200'000), filled(255, 255, 255)) << "refused tables leave those in force";
    ASSERT_EQ(transform.put_CustomTransformControlType(1), S_OK);
    EXPECT_EQ(frame(1'600'000), filled(255, 255, 255)) << "the virtual camera sees the same panorama";
    ASSERT_EQ(transform.put_ViewType(0), S_OK);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    EXPECT_EQ(frame(2'000'000), filled(255, 255, 255)) << "tables stay across view types";
}

TEST_F(CustomProperties, effectLevelZeroShowsTheInputAsItIs) {
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    ASSERT_EQ(transform.SetCustomTransformData(looksAt(50'000, 30'000).get(), 0), S_FALSE)
        << "kept for the device to come";
    ASSERT_EQ(transform.put_EffectLevel(0.0), S_OK);
    const auto bytes = frame();
    EXPECT_EQ(bytes[4 * (12 * 32 + 2) + 1], 0) << "the left half is blue again";
    EXPECT_EQ(bytes[4 * (12 * 32 + 29) + 1], 255);
}

TEST_F(CustomProperties, aChangeOfAControlIsSeenWithoutNewInput) {
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(transform.put_OutputFrameRate(100.0), S_OK);
    ASSERT_EQ(transform.put_ViewType(5), S_OK);
    ASSERT_EQ(transform.SetCustomTransformData(looksAt(50'000, 30'000).get(), 0), S_FALSE)
        << "kept for the device to come";
    ASSERT_EQ(transform.put_EffectLevel(0.0), S_OK);
    const auto whole = frame();
    ComPtr<IRectangle> rectangle;
    ASSERT_EQ(transform.get_CustomTransformViewRect(rectangle.put()), S_OK);
    ASSERT_EQ(rectangle->Init(0.0, 0.0, 0.25, 0.25), S_OK);
    EXPECT_EQ(host.frame().bytes, filled(255, 0, 0)) << "the upper left quarter is all blue";
    ASSERT_EQ(rectangle->Init(0.0, 0.0, 1.0, 1.0), S_OK);
    EXPECT_EQ(host.frame().bytes, whole);
}

TEST_F(CustomProperties, reachTheDeviceAtOnce) {
    CTransformHost other(CTransformHost::Device::recording);
    other.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(other.transform->put_ViewType(5), S_OK);
    ASSERT_EQ(other.media->AllocateStreamingResources(), S_OK);
    ASSERT_EQ(other.transform->SetCustomTransformData(looksAt(1, 2).get(), 0), S_OK);
    const auto uploads = [&] { return other.recording->count(tests::Verb::upload); };
    const int before = uploads();
    ASSERT_EQ(other.transform->put_EffectLevel(0.5), S_OK);
    EXPECT_EQ(uploads(), before + 1);
    ASSERT_EQ(other.transform->put_EffectLevel(0.5), S_OK);
    EXPECT_EQ(uploads(), before + 1);
    EXPECT_EQ(other.recording->prepared, render::ShaderProgram::customTransform);
    ASSERT_EQ(other.transform->put_CustomTransformControlType(1), S_OK);
    EXPECT_EQ(other.recording->prepared, render::ShaderProgram::customVirtualPtz);
}

TEST_F(CustomProperties, theVirtualCamerasViewHasTheOutputsShape) {
    // The lower edge of a view is the further down the higher the picture is.
    const auto lowerEdge = [](LONG height) {
        CTransformHost other;
        EXPECT_EQ(other.transform->put_CustomTransformControlType(1), S_OK);
        other.negotiateRgb(64, 48, 32, height);
        ComPtr<IUnknown> control;
        EXPECT_EQ(other.transform->get_CustomTransformControl(control.put()), S_OK);
        double pan = 0.0;
        double tilt = 0.0;
        EXPECT_EQ(control.as<IVirtualPtzFromPanoramaControl>()->MapPoint(0.5, 1.0, &pan, &tilt, 0), S_OK);
        return tilt;
    };
    EXPECT_LT(lowerEdge(32), lowerEdge(16) - 1.0);
}

TEST_F(CustomProperties, excludeRectangleIsOneObject) {
    ComPtr<IRectangle> one;
    ComPtr<IRectangle> other;
    EXPECT_EQ(transform.get_ExcludeRect(nullptr), E_POINTER);
    ASSERT_EQ(transform.get_ExcludeRect(one.put()), S_OK);
    ASSERT_EQ(transform.get_ExcludeRect(other.put()), S_OK);
    EXPECT_EQ(one.get(), other.get());
    EXPECT_EQ(references(one.get()), 3U);
    double right = 5.0;
    EXPECT_EQ(one->get_Right(&right), S_OK);
    EXPECT_EQ(right, 0.0);
}

TEST_F(CustomProperties, excludeRectangleIsLoggedInPixels) {
    ComPtr<IRectangle> rectangle;
    ASSERT_EQ(transform.get_ExcludeRect(rectangle.put()), S_OK);
    host.negotiateRgb(64, 48, 32, 24);
    host.takeLines();
    // 64 · 0.3 = 19.2 → (19 + 1) / 2 · 2 = 20; 48 · 0.25 = 12 → 12; 64 · 0.5 = 32; 48 · 0.7 = 33.6 → 34
    ASSERT_EQ(rectangle->Init(0.3, 0.25, 0.5, 0.7), S_OK);
    EXPECT_EQ(host.takeLine(),
              "_:[1] - Exclude area updated: [0.300000,0.250000,0.500000,0.700000] ([20,12,32,34])");
}

TEST_F(CustomProperties, excludeRectangleIsSeenWithoutNewInput) {
    ComPtr<IRectangle> rectangle;
    ASSERT_EQ(transform.get_ExcludeRect(rectangle.put()), S_OK);
    ASSERT_EQ(transform.put_OutputFrameRate(100.0), S_OK);
    host.negotiateRgb(64, 48, 32, 24);
    const auto before = frame();
    ASSERT_EQ(rectangle->Init(0.0, 0.0, 1.0, 1.0), S_OK);
    const auto excluded = host.frame().bytes;
    EXPECT_NE(excluded, before);
    EXPECT_EQ(excluded[4 * (12 * 32 + 2) + 1], 0) << "the input itself, unwarped";
    EXPECT_EQ(excluded[4 * (12 * 32 + 29) + 1], 255);
    ASSERT_EQ(rectangle->Init(0.5, 0.0, 0.5, 1.0), S_OK);
    EXPECT_EQ(host.frame().bytes, before) << "inactive without width";
}

TEST_F(CustomProperties, objectsMayOutliveTheTransform) {
    ComPtr<IRectangle> exclude;
    ComPtr<IRectangle> view;
    ComPtr<IUnknown> camera;
    {
        CTransformHost other;
        ASSERT_EQ(other.transform->get_ExcludeRect(exclude.put()), S_OK);
        ASSERT_EQ(other.transform->get_CustomTransformViewRect(view.put()), S_OK);
        ASSERT_EQ(other.transform->put_CustomTransformControlType(1), S_OK);
        ASSERT_EQ(other.transform->get_CustomTransformControl(camera.put()), S_OK);
    }
    EXPECT_EQ(exclude->put_Right(0.5), S_OK);
    EXPECT_EQ(view->put_Left(0.5), S_OK);
    EXPECT_EQ(camera.as<IVirtualPtzFromPanoramaControl>()->put_Pan(5.0), S_OK);
    EXPECT_EQ(references(exclude.get()), 1U);
}

} // namespace
} // namespace tarvo::transform
