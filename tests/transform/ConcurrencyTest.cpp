#include "tests/transform/EventSinks.h"
#include "tests/transform/TransformHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace tarvo::transform {
namespace {

class Concurrency : public CTransformTest, public testing::WithParamInterface<CTransformHost::Device> {};

INSTANTIATE_TEST_SUITE_P(Devices, Concurrency,
                         testing::Values(CTransformHost::Device::reference, CTransformHost::Device::own),
                         [](const auto& parameters) {
                             return parameters.param == CTransformHost::Device::own ? "own" : "reference";
                         });

struct Position {
    double pan;
    double tilt;
    double fieldOfView;
};
constexpr std::array<Position, 3> positions{{{-40.0, 20.0, 15.0}, {0.0, -25.0, 40.0}, {35.0, 5.0, 25.0}}};

/// Runs each body on a thread of its own, again and again from before `run` until it has returned.
void whileRunning(const std::vector<std::function<void(int)>>& bodies, const std::function<void()>& run) {
    std::atomic<bool> isOver{false};
    std::atomic<std::size_t> started{0};
    std::vector<std::thread> threads;
    threads.reserve(bodies.size());
    for (const auto& body : bodies)
        threads.emplace_back([&isOver, &started, &body] {
            body(0);
            ++started;
            for (int i = 1; !isOver; ++i)
                body(i);
        });
    while (started != bodies.size())
        std::this_thread::yield();
    run();
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
}

TEST_P(Concurrency, everyFrameShowsOnePositionAsItWasSet) {
    const auto picture = patternRgb(24, 18);
    std::vector<std::vector<std::uint8_t>> expected;
    for (const Position& position : positions) {
        CTransformHost other(GetParam());
        other.negotiateRgb(24, 18, 16, 12);
        other.transform->SetPTZPosition(position.pan, position.tilt, position.fieldOfView, VARIANT_FALSE);
        expected.push_back(other.through(picture).bytes);
    }
    CTransformHost host(GetParam());
    host.negotiateRgb(24, 18, 16, 12);
    const auto setAny = [&](int i) {
        const Position& position = positions[static_cast<std::size_t>(i) % positions.size()];
        host.transform->SetPTZPosition(position.pan, position.tilt, position.fieldOfView, VARIANT_FALSE);
        double pan = 0.0;
        host.transform->get_Pan(&pan);
        EXPECT_TRUE(pan == -40.0 || pan == 0.0 || pan == 35.0) << pan;
    };
    setAny(0);
    whileRunning({setAny, setAny, setAny, setAny}, [&] {
        std::array<int, positions.size()> seen{};
        for (int i = 0; i < 300; ++i) {
            const Delivered frame = host.through(picture, 400'000 * i);
            const auto found = std::find(expected.begin(), expected.end(), frame.bytes);
            ASSERT_NE(found, expected.end()) << "frame " << i << " is of no position that was set";
            ++seen[static_cast<std::size_t>(found - expected.begin())];
        }
        EXPECT_GT(seen[0] + seen[1] + seen[2], 0);
    });
}

TEST_P(Concurrency, everyPropertyMayChangeWhileFramesStream) {
    CTransformHost host(GetParam());
    host.negotiateRgb(24, 18, 16, 12);
    IDewarpingTransform& transform = *host.transform;
    std::atomic<int> images{0};
    ImageSink sink(host, [&](const DISPPARAMS&) {
        ++images;
        return S_OK;
    });
    const auto views = [&](int i) {
        transform.put_ViewType(i % 6);
        transform.put_TiltOrientation(i % 4);
        transform.put_SelectedView(i % 5);
        LONG value = 0;
        transform.get_ViewType(&value);
        double one = 0.0;
        double other = 0.0;
        transform.MapPoint(0.3, 0.4, &one, &other, 0);
        transform.MapPointToOverview(0.3, 0.4, &one, &other, 0);
    };
    const auto numbers = [&](int i) {
        transform.put_Pan(i % 100);
        transform.put_Tilt(-(i % 60));
        transform.put_FieldOfView(5 + i % 50);
        transform.SetPTZPosition(1.0, -1.0, 0.5, VARIANT_TRUE);
        transform.put_EffectLevel((i % 11) * 0.1);
        transform.put_Bypass(i % 7 == 0 ? VARIANT_TRUE : VARIANT_FALSE);
        transform.put_PanoramaFieldOfView(90 + i % 180);
        transform.put_PanoramaPanOffset(i % 180);
        com::CSafeArray profile = com::CSafeArray::vector(VT_R8, 3);
        com::CSafeArrayAccess<double>(profile.get()).elements()[2] = 0.3 + 0.01 * (i % 10);
        transform.put_LensProfile(profile.get());
    };
    const auto objects = [&](int i) {
        ComPtr<IRectangle> rectangle;
        transform.get_ExcludeRect(rectangle.put());
        rectangle->Init(0.0, 0.0, (i % 5) * 0.1, 0.2);
        transform.put_CustomTransformControlType(i % 2);
        ComPtr<IUnknown> control;
        transform.get_CustomTransformControl(control.put());
        if (const auto zoom = control.as<IDigitalZoomControl>()) {
            ComPtr<IRectangle> view;
            zoom->get_ViewRect(view.put());
            view->Init(0.1, 0.1, 0.9, 0.8);
        }
        if (const auto camera = control.as<IVirtualPtzFromPanoramaControl>())
            camera->put_Pan(i % 40);
        com::CSafeArray blob = com::CSafeArray::vector(VT_UI1, 8 + 6 * 4);
        {
            const com::CSafeArrayAccess<std::uint8_t> access(blob.get());
            access.elements()[0] = 1;
            access.elements()[4] = 2;
            access.elements()[6] = 2;
        }
        transform.SetCustomTransformData(blob.get(), 0);
    };
    const auto stream = [&](int i) {
        transform.put_OutputFrameRate((i % 3) * 25.0);
        transform.put_Options((i & 1) + (i & 12));
        LONG value = 0;
        transform.get_Options(&value);
        transform.get_OutputWidth(&value);
        VARIANT_BOOL is = 0;
        transform.get_HardwareAccelerationActive(&is);
        transform.CheckDewarpingCapability(&is);
        const auto quality = host.object.as<IDMOQualityControl>();
        quality->SetStatus(1);
        quality->SetNow(i * 1000);
    };
    const auto snapshots = [&](int) {
        const auto image = currentImage(transform);
        EXPECT_TRUE(image.empty() || image.size() == 40U + 12 * 48);
    };
    whileRunning({views, numbers, objects, stream, snapshots}, [&] {
        const auto picture = patternRgb(24, 18);
        REFERENCE_TIME time = 0;
        for (int i = 0; i < 200; ++i) {
            Delivered frame = host.through(picture, time);
            EXPECT_EQ(frame.result, S_OK);
            while (frame.isIncomplete()) {
                frame = host.frame();
                EXPECT_EQ(frame.result, S_OK);
            }
            time += 400'000;
            if (i % 50 == 49) {
                EXPECT_EQ(host.media->Flush(), S_OK);
            }
        }
    });
    EXPECT_GE(images, 200);
}

TEST_P(Concurrency, drawingSubViewsNeitherShowsNorMovesThePosition) {
    CTransformHost host(GetParam());
    host.negotiateRgb(24, 18, 16, 12);
    ASSERT_EQ(host.transform->put_ViewType(1), S_OK);
    ASSERT_EQ(host.transform->put_Pan(30.0), S_OK);
    double tilt = 0.0;
    ASSERT_EQ(host.transform->get_Tilt(&tilt), S_OK);
    const auto look = [&](int) {
        double seenPan = 0.0;
        double seenTilt = 0.0;
        host.transform->get_Pan(&seenPan);
        host.transform->get_Tilt(&seenTilt);
        EXPECT_EQ(seenPan, 30.0);
        EXPECT_EQ(seenTilt, tilt);
    };
    whileRunning({look, look}, [&] {
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(host.through(patternRgb(24, 18), 400'000 * i).result, S_OK);
    });
    whileRunning({[&](int i) { host.transform->put_Pan(-50 + i % 20); }}, [&] {
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(host.through(patternRgb(24, 18), 400'000 * (100 + i)).result, S_OK);
    });
    double pan = 0.0;
    ASSERT_EQ(host.transform->get_Pan(&pan), S_OK);
    EXPECT_GE(pan, -50.0);
    EXPECT_LE(pan, -31.0) << "no sub-view's, at 45 degrees from it";
}

TEST_P(Concurrency, theHostsLockKeepsTheStreamsWaiting) {
    CTransformHost host(GetParam());
    host.negotiateRgb(24, 18, 16, 12);
    ASSERT_EQ(host.media->Lock(TRUE), S_OK);
    std::atomic<bool> isThrough{false};
    std::thread streaming([&] {
        EXPECT_EQ(host.through(patternRgb(24, 18)).result, S_OK);
        isThrough = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(isThrough);
    EXPECT_EQ(host.transform->put_ViewType(2), S_OK) << "properties need only the lock of rendering";
    EXPECT_EQ(host.media->Lock(FALSE), S_OK);
    streaming.join();
    EXPECT_TRUE(isThrough);
    EXPECT_EQ(host.media->Lock(FALSE), E_FAIL) << "given back once";
}

} // namespace
} // namespace tarvo::transform
