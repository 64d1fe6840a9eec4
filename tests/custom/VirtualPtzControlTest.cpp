#include "custom/VirtualPtzFromPanoramaControl.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace tarvo::custom {
namespace {

using com::answerFor;
using com::ComPtr;
using com::makeObject;
using com::references;
using Control = IVirtualPtzFromPanoramaControl;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// By example, for not every compiler takes the interfaces' calling convention where a type is spelled out.
using Getter = decltype(&Control::get_Pan);
using Putter = decltype(&Control::put_Pan);

struct Property {
    const char* name;
    Getter get;
    Putter put;
    double initial;
};

const std::vector<Property>& properties() {
    static const std::vector<Property> all{
        {"PanoramaHorizontalFieldOfView", &Control::get_PanoramaHorizontalFieldOfView,
         &Control::put_PanoramaHorizontalFieldOfView, 180.0},
        {"PanoramaVerticalFieldOfView", &Control::get_PanoramaVerticalFieldOfView,
         &Control::put_PanoramaVerticalFieldOfView, 90.0},
        {"CameraPitch", &Control::get_CameraPitch, &Control::put_CameraPitch, 0.0},
        {"CameraRoll", &Control::get_CameraRoll, &Control::put_CameraRoll, 0.0},
        {"EffectLevel", &Control::get_EffectLevel, &Control::put_EffectLevel, 1.0},
        {"Pan", &Control::get_Pan, &Control::put_Pan, 0.0},
        {"Tilt", &Control::get_Tilt, &Control::put_Tilt, 0.0},
        {"FieldOfView", &Control::get_FieldOfView, &Control::put_FieldOfView, 90.0}};
    return all;
}

double valueOf(Control& control, Getter get) {
    double value = -77.0;
    EXPECT_EQ((control.*get)(&value), S_OK);
    return value;
}

bool isStrict(Control& control) {
    VARIANT_BOOL value = 7;
    EXPECT_EQ(control.get_UseStrictBorderMode(&value), S_OK);
    EXPECT_TRUE(value == VARIANT_TRUE || value == VARIANT_FALSE) << value;
    return value != VARIANT_FALSE;
}

/// A control and the count of its notifications.
struct Watched {
    ComPtr<CVirtualPtzFromPanoramaControl> control = makeObject<CVirtualPtzFromPanoramaControl>();
    int notifications = 0;

    Watched() {
        control->addListener(1, [this](PropertyChangeNotifier&) { ++notifications; });
    }
    ~Watched() { control->removeListener(1); }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
};

TEST(VirtualPtzControl, answersForItsInterfacesAndNoOthers) {
    const auto before = com::moduleCount().count();
    ComPtr<CVirtualPtzFromPanoramaControl> control = makeObject<CVirtualPtzFromPanoramaControl>();
    EXPECT_EQ(com::moduleCount().count(), before + 1);
    IUnknown* unknown = control->controllingUnknown();
    EXPECT_EQ(answerFor<Control>(unknown), control.get());
    EXPECT_EQ(answerFor<IDispatch>(unknown), static_cast<IDispatch*>(control.get()));
    EXPECT_EQ(answerFor<IUnknown>(control.get()), unknown);
    EXPECT_EQ(answerFor<IDigitalZoomControl>(unknown), nullptr);
    EXPECT_EQ(answerFor<IRectangle>(unknown), nullptr);
    EXPECT_EQ(references(unknown), 1U);
    ComPtr<Control> other = ComPtr<IUnknown>(unknown).as<Control>();
    EXPECT_EQ(references(unknown), 2U);
    control.reset();
    EXPECT_EQ(references(other.get()), 1U);
    other.reset();
    EXPECT_EQ(com::moduleCount().count(), before);
}

TEST(VirtualPtzControl, looksAtTheMiddleOfALevelPanoramaAtFirst) {
    const auto control = makeObject<CVirtualPtzFromPanoramaControl>();
    for (const Property& property : properties())
        EXPECT_EQ(valueOf(*control, property.get), property.initial) << property.name;
    EXPECT_FALSE(isStrict(*control));
    EXPECT_FALSE(control->snapshot().isFieldOfViewSet);
    EXPECT_EQ(control->snapshot().outputAspect, 1.0F);
}

TEST(VirtualPtzControl, keepsEachPropertyOnItsOwnAndNotifies) {
    for (const Property& property : properties()) {
        Watched watched;
        // Within every limit, and a view of it inside the panorama.
        const double value = property.initial == 1.0 ? 0.75 : property.initial - 10.0;
        EXPECT_EQ((watched.control.get()->*property.put)(value), S_OK) << property.name;
        EXPECT_EQ(watched.notifications, 1) << property.name;
        EXPECT_EQ((watched.control.get()->*property.put)(value), S_OK) << property.name;
        EXPECT_EQ(watched.notifications, 1) << property.name << ": nothing new";
        for (const Property& other : properties()) {
            EXPECT_EQ(valueOf(*watched.control, other.get),
                      other.name == property.name ? value : other.initial)
                << property.name << " and " << other.name;
        }
    }
}

TEST(VirtualPtzControl, limitsFieldOfViewAndEffectLevel) {
    Watched watched;
    Control& control = *watched.control;
    control.put_PanoramaVerticalFieldOfView(180.0);
    control.put_PanoramaHorizontalFieldOfView(360.0);
    watched.notifications = 0;
    EXPECT_EQ(control.put_FieldOfView(200.0), S_OK);
    EXPECT_EQ(valueOf(control, &Control::get_FieldOfView), 120.0);
    EXPECT_EQ(control.put_FieldOfView(infinity), S_OK);
    EXPECT_EQ(watched.notifications, 1) << "the limit again";
    EXPECT_EQ(control.put_FieldOfView(1.0), S_OK);
    EXPECT_EQ(valueOf(control, &Control::get_FieldOfView), 5.0);
    EXPECT_EQ(control.put_EffectLevel(-1.0), S_OK);
    EXPECT_EQ(valueOf(control, &Control::get_EffectLevel), 0.0);
    EXPECT_EQ(control.put_EffectLevel(1.7), S_OK);
    EXPECT_EQ(valueOf(control, &Control::get_EffectLevel), 1.0);
    EXPECT_EQ(watched.notifications, 4);
}

TEST(VirtualPtzControl, knowsThatTheFieldOfViewWasSet) {
    Watched watched;
    watched.control->put_FieldOfView(nan);
    EXPECT_FALSE(watched.control->snapshot().isFieldOfViewSet);
    watched.control->put_FieldOfView(90.0);
    EXPECT_TRUE(watched.control->snapshot().isFieldOfViewSet) << "though it was that already";
    EXPECT_EQ(watched.notifications, 0);
}

TEST(VirtualPtzControl, ignoresWhatIsNoNumber) {
    Watched watched;
    for (const Property& property : properties()) {
        EXPECT_EQ((watched.control.get()->*property.put)(nan), S_OK) << property.name;
        EXPECT_EQ(valueOf(*watched.control, property.get), property.initial) << property.name;
    }
    for (const Property& property : properties()) {
        if (property.initial == 1.0 || property.put == &Control::put_FieldOfView)
            continue; // An infinity is brought to their limits.
        for (const double bad : {infinity, -infinity, 3.5e38, -1e300}) {
            EXPECT_EQ((watched.control.get()->*property.put)(bad), S_OK) << property.name;
            EXPECT_EQ(valueOf(*watched.control, property.get), property.initial) << property.name;
        }
    }
    EXPECT_EQ(watched.notifications, 0);
}

TEST(VirtualPtzControl, drawsTheViewBackForPanFieldOfViewAndBorderMode) {
    Watched watched;
    Control& control = *watched.control;
    EXPECT_EQ(control.put_Pan(80.0), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 45.0, 1e-4);
    EXPECT_EQ(watched.notifications, 1) << "the adjustment is part of the change";
    EXPECT_EQ(control.put_FieldOfView(40.0), S_OK);
    EXPECT_EQ(control.put_Pan(70.0), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 70.0, 1e-4);
    EXPECT_EQ(control.put_FieldOfView(60.0), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 60.0, 1e-4);
    EXPECT_EQ(control.put_FieldOfView(90.0), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 45.0, 1e-4);
    // The others let the view look past the border until then.
    EXPECT_EQ(control.put_Tilt(-45.0), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 45.0, 1e-4);
    EXPECT_EQ(control.put_PanoramaHorizontalFieldOfView(179.0), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 45.0, 1e-4);
    EXPECT_EQ(control.put_PanoramaHorizontalFieldOfView(180.0), S_OK);
    // The lower corners see straight down, 90 degrees to either side.
    watched.notifications = 0;
    EXPECT_EQ(control.put_UseStrictBorderMode(VARIANT_TRUE), S_OK);
    EXPECT_NEAR(valueOf(control, &Control::get_Pan), 0.0, 1e-3);
    EXPECT_EQ(watched.notifications, 1);
}

TEST(VirtualPtzControl, keepsTheBorderMode) {
    Watched watched;
    Control& control = *watched.control;
    EXPECT_EQ(control.put_UseStrictBorderMode(1), S_OK) << "any value but 0 is true";
    EXPECT_TRUE(isStrict(control));
    EXPECT_EQ(watched.notifications, 1);
    EXPECT_EQ(control.put_UseStrictBorderMode(VARIANT_TRUE), S_OK);
    EXPECT_EQ(watched.notifications, 1);
    EXPECT_EQ(control.put_UseStrictBorderMode(VARIANT_FALSE), S_OK);
    EXPECT_FALSE(isStrict(control));
    EXPECT_EQ(watched.notifications, 2);
}

TEST(VirtualPtzControl, mapsPointsInTheTermsOfPanAndTilt) {
    const auto control = makeObject<CVirtualPtzFromPanoramaControl>();
    control->setOutputAspect(2.0F);
    control->put_CameraRoll(90.0);
    control->put_Tilt(-20.0);
    double pan = -77.0;
    double tilt = -77.0;
    // No straightening: the roll plays no part. The middle of the upper border is atan(1/2) above the view's.
    EXPECT_EQ(control->MapPoint(0.5, 0.0, &pan, &tilt, 0), S_OK);
    EXPECT_NEAR(pan, 0.0, 1e-4);
    EXPECT_NEAR(tilt, 6.5651, 1e-4);
    for (const int flags : {1, -1}) {
        double again = -77.0;
        EXPECT_EQ(control->MapPoint(0.5, 0.0, &pan, &again, flags), S_OK);
        EXPECT_EQ(again, tilt) << "flags mean nothing here";
    }
    EXPECT_EQ(control->MapPoint(0.5, 0.5, &pan, &tilt, 0), S_OK);
    EXPECT_EQ(tilt, 0.0) << "the centre has none";
    EXPECT_EQ(control->MapPoint(nan, 0.25, &pan, &tilt, 0), S_OK);
    EXPECT_EQ(pan, 0.0);
    EXPECT_EQ(control->MapPoint(1e300, -infinity, &pan, &tilt, 0), S_OK);
    EXPECT_EQ(control->MapPoint(0.25, 0.25, nullptr, &tilt, 0), E_POINTER);
    EXPECT_EQ(control->MapPoint(0.25, 0.25, &pan, nullptr, 0), E_POINTER);
}

TEST(VirtualPtzControl, takesTheAspectOfTheView) {
    Watched watched;
    watched.control->setOutputAspect(1.5F);
    for (const float bad : {0.0F, -1.0F, static_cast<float>(nan), static_cast<float>(infinity)})
        watched.control->setOutputAspect(bad);
    EXPECT_EQ(watched.control->snapshot().outputAspect, 1.5F);
    EXPECT_EQ(watched.notifications, 0);
}

TEST(VirtualPtzControl, needsOutPointers) {
    const auto control = makeObject<CVirtualPtzFromPanoramaControl>();
    for (const Property& property : properties())
        EXPECT_EQ((control.get()->*property.get)(nullptr), E_POINTER) << property.name;
    EXPECT_EQ(control->get_UseStrictBorderMode(nullptr), E_POINTER);
}

TEST(VirtualPtzControl, isNeverSeenBeforeItsAdjustment) {
    const auto control = makeObject<CVirtualPtzFromPanoramaControl>();
    std::atomic<bool> isDone{false};
    std::thread writing([&] {
        for (int i = 0; i < 3000; ++i) {
            control->put_Pan(80.0);
            control->put_Pan(-80.0);
        }
        isDone = true;
    });
    int outside = 0;
    do {
        const VirtualPtzSettings seen = control->snapshot();
        outside += seen.pan > 45.01 || seen.pan < -45.01;
    } while (!isDone);
    writing.join();
    EXPECT_EQ(outside, 0);
    EXPECT_NEAR(control->snapshot().pan, -45.0, 1e-3);
}

} // namespace
} // namespace tarvo::custom
