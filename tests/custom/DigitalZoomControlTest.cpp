#include "custom/DigitalZoomControl.h"

#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tarvo::custom {
namespace {

using com::answerFor;
using com::ComPtr;
using com::makeObject;
using com::references;

ComPtr<IRectangle> viewRectOf(IDigitalZoomControl& control) {
    ComPtr<IRectangle> rectangle;
    EXPECT_EQ(control.get_ViewRect(rectangle.put()), S_OK);
    return rectangle;
}

TEST(DigitalZoomControl, answersForItsInterfacesAndNoOthers) {
    const ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
    IUnknown* unknown = control->controllingUnknown();
    EXPECT_EQ(answerFor<IDigitalZoomControl>(unknown), control.get());
    EXPECT_EQ(answerFor<IDispatch>(unknown), static_cast<IDispatch*>(control.get()));
    EXPECT_EQ(answerFor<IUnknown>(control.get()), unknown);
    EXPECT_EQ(answerFor<IRectangle>(unknown), nullptr);
    EXPECT_EQ(answerFor<IVirtualPtzFromPanoramaControl>(unknown), nullptr);
    EXPECT_EQ(references(unknown), 1U);
}

TEST(DigitalZoomControl, givesOutTheSameRectangleAlways) {
    const ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
    const ComPtr<IRectangle> one = viewRectOf(*control);
    EXPECT_EQ(references(one.get()), 2U) << "the control's and this one";
    const ComPtr<IRectangle> two = viewRectOf(*control);
    EXPECT_EQ(one.get(), two.get());
    EXPECT_EQ(references(one.get()), 3U);
    EXPECT_EQ(one.get(), static_cast<IRectangle*>(&control->viewRect()));
    EXPECT_EQ(references(control->controllingUnknown()), 1U) << "the rectangle does not keep the control";
    EXPECT_EQ(control->get_ViewRect(nullptr), E_POINTER);
    EXPECT_EQ(control->viewRect().snapshot().right, 1.0);
}

TEST(DigitalZoomControl, tellsItsListenersOfTheRectanglesChanges) {
    const ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
    int notifications = 0;
    control->addListener(1, [&](PropertyChangeNotifier& changed) {
        EXPECT_EQ(&changed, static_cast<PropertyChangeNotifier*>(control.get()));
        EXPECT_EQ(control->viewRect().snapshot().left, 0.25);
        ++notifications;
    });
    viewRectOf(*control)->put_Left(0.25);
    EXPECT_EQ(notifications, 1);
    viewRectOf(*control)->put_Left(0.25);
    EXPECT_EQ(notifications, 1);
    control->removeListener(1);
}

TEST(DigitalZoomControl, leavesARectangleThatIsStillInUse) {
    const auto before = com::moduleCount().count();
    ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
    ComPtr<IRectangle> rectangle = viewRectOf(*control);
    EXPECT_EQ(com::moduleCount().count(), before + 2);
    int notifications = 0;
    control->addListener(1, [&](PropertyChangeNotifier&) { ++notifications; });
    control.reset();
    EXPECT_EQ(com::moduleCount().count(), before + 1);
    EXPECT_EQ(references(rectangle.get()), 1U);
    EXPECT_EQ(rectangle->put_Left(0.5), S_OK);
    EXPECT_EQ(notifications, 0);
    rectangle.reset();
    EXPECT_EQ(com::moduleCount().count(), before);
}

TEST(DigitalZoomControl, mayEndWhileItsRectangleNotifies) {
    ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
    const ComPtr<IRectangle> rectangle = viewRectOf(*control);
    int notifications = 0;
    control->addListener(1, [&](PropertyChangeNotifier&) { control.reset(); });
    control->addListener(2, [&](PropertyChangeNotifier&) { ++notifications; });
    EXPECT_EQ(rectangle->put_Left(0.5), S_OK);
    EXPECT_FALSE(control);
    EXPECT_EQ(notifications, 0);
    EXPECT_EQ(rectangle->put_Left(0.25), S_OK);
}

TEST(DigitalZoomControl, mayEndWhileAnotherThreadChangesItsRectangle) {
    for (int round = 0; round < 50; ++round) {
        ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
        const ComPtr<IRectangle> rectangle = viewRectOf(*control);
        std::atomic<int> seen{0};
        control->addListener(1, [&](PropertyChangeNotifier&) { ++seen; });
        std::atomic<bool> isDone{false};
        std::thread changing([&, other = rectangle] {
            for (int i = 0; !isDone; ++i)
                other->put_Left(i % 2 == 0 ? 0.25 : 0.5);
        });
        while (seen == 0)
            std::this_thread::yield();
        control.reset();
        const int last = seen;
        std::this_thread::yield();
        EXPECT_EQ(seen, last) << "nobody is told on behalf of a control that is gone";
        isDone = true;
        changing.join();
    }
}

} // namespace
} // namespace tarvo::custom
