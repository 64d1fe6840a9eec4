#include "custom/Rectangle.h"

#include "tests/com/TestObjects.h"
#include "tests/custom/RectangleModel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <random>
#include <stdexcept>
#include <thread>

namespace tarvo::custom {
namespace {

using com::answerFor;
using com::ComPtr;
using com::makeObject;
using com::references;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

void expectEdges(IRectangle& rectangle, double left, double top, double right, double bottom) {
    double value = -77.0;
    EXPECT_EQ(rectangle.get_Left(&value), S_OK);
    EXPECT_DOUBLE_EQ(value, left);
    EXPECT_EQ(rectangle.get_Top(&value), S_OK);
    EXPECT_DOUBLE_EQ(value, top);
    EXPECT_EQ(rectangle.get_Right(&value), S_OK);
    EXPECT_DOUBLE_EQ(value, right);
    EXPECT_EQ(rectangle.get_Bottom(&value), S_OK);
    EXPECT_DOUBLE_EQ(value, bottom);
    EXPECT_EQ(rectangle.get_Width(&value), S_OK);
    EXPECT_DOUBLE_EQ(value, right - left);
    EXPECT_EQ(rectangle.get_Height(&value), S_OK);
    EXPECT_DOUBLE_EQ(value, bottom - top);
}

/// A rectangle and the count of its notifications.
struct Watched {
    ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    int notifications = 0;

    Watched() {
        rectangle->addListener(1, [this](PropertyChangeNotifier& changed) {
            EXPECT_EQ(&changed, static_cast<PropertyChangeNotifier*>(rectangle.get()));
            ++notifications;
        });
    }
    ~Watched() { rectangle->removeListener(1); }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
};

TEST(Rectangle, answersForItsInterfacesAndNoOthers) {
    const ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    IUnknown* unknown = rectangle->controllingUnknown();
    EXPECT_EQ(answerFor<IRectangle>(unknown), rectangle.get());
    EXPECT_EQ(answerFor<IDispatch>(unknown), static_cast<IDispatch*>(rectangle.get()));
    EXPECT_EQ(answerFor<IUnknown>(rectangle.get()), unknown);
    EXPECT_EQ(answerFor<IDigitalZoomControl>(unknown), nullptr);
    EXPECT_EQ(answerFor<IConnectionPointContainer>(unknown), nullptr);
    EXPECT_EQ(rectangle->QueryInterface(__uuidof(IRectangle), nullptr), E_POINTER);
    EXPECT_EQ(references(unknown), 1U);
    const ComPtr<IRectangle> other = ComPtr<IUnknown>(unknown).as<IRectangle>();
    EXPECT_EQ(references(unknown), 2U);
}

TEST(Rectangle, countsForTheModule) {
    const auto before = com::moduleCount().count();
    ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    EXPECT_EQ(com::moduleCount().count(), before + 1);
    rectangle.reset();
    EXPECT_EQ(com::moduleCount().count(), before);
}

TEST(Rectangle, isTheWholePictureAtFirst) {
    expectEdges(*makeObject<CRectangle>(), 0, 0, 1, 1);
}

TEST(Rectangle, takesEdgesAndNotifies) {
    Watched watched;
    EXPECT_EQ(watched.rectangle->put_Left(0.25), S_OK);
    EXPECT_EQ(watched.rectangle->put_Top(0.125), S_OK);
    EXPECT_EQ(watched.rectangle->put_Right(0.75), S_OK);
    EXPECT_EQ(watched.rectangle->put_Bottom(0.5), S_OK);
    expectEdges(*watched.rectangle, 0.25, 0.125, 0.75, 0.5);
    EXPECT_EQ(watched.notifications, 4);
    EXPECT_EQ(watched.rectangle->put_Left(0.25), S_OK);
    EXPECT_EQ(watched.rectangle->put_Bottom(0.5), S_OK);
    EXPECT_EQ(watched.notifications, 4) << "nothing new";
    EXPECT_EQ(watched.rectangle->put_Left(-3.0), S_OK);
    expectEdges(*watched.rectangle, 0, 0.125, 0.75, 0.5);
    EXPECT_EQ(watched.notifications, 5);
}

TEST(Rectangle, inflatesDeflatesAndMoves) {
    Watched watched;
    EXPECT_EQ(watched.rectangle->DeflateRect(0.25, 0.125), S_OK);
    expectEdges(*watched.rectangle, 0.25, 0.125, 0.75, 0.875);
    EXPECT_EQ(watched.rectangle->OffsetRect(0.125, -0.0625), S_OK);
    expectEdges(*watched.rectangle, 0.375, 0.0625, 0.875, 0.8125);
    EXPECT_EQ(watched.rectangle->OffsetRect(-2.0, 2.0), S_OK);
    expectEdges(*watched.rectangle, 0, 0.25, 0.5, 1);
    EXPECT_EQ(watched.rectangle->InflateRect(0.125, 0.0), S_OK);
    expectEdges(*watched.rectangle, 0, 0.25, 0.75, 1);
    EXPECT_EQ(watched.notifications, 4);
    EXPECT_EQ(watched.rectangle->OffsetRect(0.0, 0.0), S_OK);
    EXPECT_EQ(watched.rectangle->InflateRect(0.0, 0.0), S_OK);
    EXPECT_EQ(watched.notifications, 6) << "methods always do";
}

TEST(Rectangle, initStoresWhatTheNextPutNormalises) {
    Watched watched;
    EXPECT_EQ(watched.rectangle->Init(-1.0, -2.0, 3.0, 4.0), S_OK);
    expectEdges(*watched.rectangle, -1, -2, 3, 4);
    EXPECT_EQ(watched.notifications, 1);
    EXPECT_EQ(watched.rectangle->put_Left(-1.0), S_OK);
    expectEdges(*watched.rectangle, -1, -2, 3, 4);
    EXPECT_EQ(watched.notifications, 1);
    EXPECT_EQ(watched.rectangle->put_Left(0.5), S_OK);
    expectEdges(*watched.rectangle, 0.5, 0, 1, 1);
    EXPECT_EQ(watched.notifications, 2);
}

TEST(Rectangle, keepsBoundsAndMinimumSize) {
    const ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    rectangle->setBounds(0.125, 0.25, 0.875, 0.75);
    rectangle->setMinimumSize(0.25, 0.125);
    expectEdges(*rectangle, 0, 0, 1, 1);
    rectangle->put_Left(0.0625);
    expectEdges(*rectangle, 0.125, 0.25, 0.875, 0.75);
    rectangle->DeflateRect(1.0, 1.0);
    expectEdges(*rectangle, 0.375, 0.4375, 0.625, 0.5625);
    rectangle->setBounds(nan, 0.0, 1.0, 1.0);
    rectangle->setBounds(0.0, 0.0, 1.0, infinity);
    rectangle->setMinimumSize(-0.5, 0.125);
    rectangle->setMinimumSize(0.25, nan);
    const BoundedRectangle kept = rectangle->snapshot();
    EXPECT_EQ(kept.leftBound, 0.125);
    EXPECT_EQ(kept.bottomBound, 0.75);
    EXPECT_EQ(kept.minimumWidth, 0.25);
    EXPECT_EQ(kept.minimumHeight, 0.125);
}

TEST(Rectangle, ignoresWhatIsNoNumber) {
    Watched watched;
    watched.rectangle->Init(0.25, 0.25, 0.5, 0.5);
    watched.notifications = 0;
    IRectangle& r = *watched.rectangle;
    for (const double bad : {nan, infinity, -infinity}) {
        EXPECT_EQ(r.put_Left(bad), S_OK);
        EXPECT_EQ(r.put_Top(bad), S_OK);
        EXPECT_EQ(r.put_Right(bad), S_OK);
        EXPECT_EQ(r.put_Bottom(bad), S_OK);
        EXPECT_EQ(r.InflateRect(bad, 0.0), S_OK);
        EXPECT_EQ(r.InflateRect(0.0, bad), S_OK);
        EXPECT_EQ(r.DeflateRect(bad, 0.0), S_OK);
        EXPECT_EQ(r.OffsetRect(0.0, bad), S_OK);
        EXPECT_EQ(r.OffsetRect(bad, 0.0), S_OK);
        EXPECT_EQ(r.Init(bad, 0.0, 1.0, 1.0), S_OK);
        EXPECT_EQ(r.Init(0.0, 0.0, 1.0, bad), S_OK);
    }
    // Finite in, infinite out.
    EXPECT_EQ(r.DeflateRect(1.7e308, 0.0), S_OK);
    EXPECT_EQ(r.Init(-1.7e308, 0.0, 1.7e308, 1.0), S_OK);
    expectEdges(r, 0.25, 0.25, 0.5, 0.5);
    EXPECT_EQ(watched.notifications, 0);
    EXPECT_EQ(r.InflateRect(1.7e308, 1.7e308), S_OK);
    expectEdges(r, 0, 0, 1, 1);
}

TEST(Rectangle, needsOutPointers) {
    const ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    EXPECT_EQ(rectangle->get_Left(nullptr), E_POINTER);
    EXPECT_EQ(rectangle->get_Top(nullptr), E_POINTER);
    EXPECT_EQ(rectangle->get_Right(nullptr), E_POINTER);
    EXPECT_EQ(rectangle->get_Bottom(nullptr), E_POINTER);
    EXPECT_EQ(rectangle->get_Width(nullptr), E_POINTER);
    EXPECT_EQ(rectangle->get_Height(nullptr), E_POINTER);
}

TEST(Rectangle, lastsThroughAListenerThatChangesItOrFails) {
    const ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    rectangle->addListener(1, [&](PropertyChangeNotifier&) { rectangle->put_Right(0.5); });
    EXPECT_EQ(rectangle->put_Left(0.25), S_OK);
    expectEdges(*rectangle, 0.25, 0, 0.5, 1);
    rectangle->addListener(1, [](PropertyChangeNotifier&) { throw std::runtime_error("no"); });
    EXPECT_EQ(rectangle->put_Left(0.125), E_FAIL) << "no exception crosses the interface";
    expectEdges(*rectangle, 0.125, 0, 0.5, 1);
    rectangle->removeListener(1);
}

/// Whole rectangle and the model of it, through one random operation after the other.
TEST(Rectangle, doesWhatTheModelDoesInAnySequence) {
    using Number = AxisModel::Number;
    std::mt19937 random(4711);
    const auto pick = [&](Number from, Number to) {
        // Coarse steps, so that equal values and edges right at their bounds occur; every halving of them is
        // still exact.
        return std::uniform_int_distribution<Number>(from, to)(random) * (AxisModel::unit / 64);
    };
    int changes = 0;
    for (int sequence = 0; sequence < 2000; ++sequence) {
        Watched watched;
        IRectangle& r = *watched.rectangle;
        AxisModel x;
        AxisModel y;
        if (sequence % 2 != 0) {
            for (AxisModel* axis : {&x, &y}) {
                axis->lowBound = pick(-16, 16);
                axis->highBound = pick(24, 80);
                axis->least = pick(0, 12);
            }
            watched.rectangle->setBounds(AxisModel::fraction(x.lowBound), AxisModel::fraction(y.lowBound),
                                         AxisModel::fraction(x.highBound), AxisModel::fraction(y.highBound));
            watched.rectangle->setMinimumSize(AxisModel::fraction(x.least), AxisModel::fraction(y.least));
        }
        for (int step = 0; step < 25; ++step) {
            const AxisModel oldX = x;
            const AxisModel oldY = y;
            const int expected = watched.notifications + 1;
            const Number a = pick(-80, 80);
            const Number b = pick(-80, 80);
            const double fractionA = AxisModel::fraction(a);
            const double fractionB = AxisModel::fraction(b);
            const int operation = std::uniform_int_distribution<int>(0, 7)(random);
            HRESULT result = E_UNEXPECTED;
            bool isPut = true;
            bool isSame = false;
            switch (operation) {
            case 0:
                result = r.put_Left(fractionA);
                isSame = a == x.low;
                x.low = a;
                break;
            case 1:
                result = r.put_Right(fractionA);
                isSame = a == x.high;
                x.high = a;
                break;
            case 2:
                result = r.put_Top(fractionA);
                isSame = a == y.low;
                y.low = a;
                break;
            case 3:
                result = r.put_Bottom(fractionA);
                isSame = a == y.high;
                y.high = a;
                break;
            case 4:
                result = r.InflateRect(fractionA, fractionB);
                x.inflate(a);
                y.inflate(b);
                break;
            case 5:
                result = r.DeflateRect(fractionA, fractionB);
                x.inflate(-a);
                y.inflate(-b);
                break;
            case 6:
                result = r.OffsetRect(fractionA, fractionB);
                isPut = false;
                x.move(a);
                y.move(b);
                EXPECT_EQ(x.high - x.low, oldX.high - oldX.low);
                break;
            default: {
                const Number c = pick(-80, 80);
                const Number d = pick(-80, 80);
                result = r.Init(fractionA, fractionB, AxisModel::fraction(c), AxisModel::fraction(d));
                isPut = false;
                x.init(a, c);
                y.init(b, d);
                break;
            }
            }
            // A put normalises the other direction too.
            if (isPut && !isSame && operation < 4) {
                x.normalise();
                y.normalise();
            }
            ASSERT_EQ(result, S_OK);
            const BoundedRectangle now = watched.rectangle->snapshot();
            ASSERT_EQ(now.left, AxisModel::fraction(x.low)) << "operation " << operation;
            ASSERT_EQ(now.right, AxisModel::fraction(x.high)) << "operation " << operation;
            ASSERT_EQ(now.top, AxisModel::fraction(y.low)) << "operation " << operation;
            ASSERT_EQ(now.bottom, AxisModel::fraction(y.high)) << "operation " << operation;
            ASSERT_EQ(watched.notifications, isSame ? expected - 1 : expected);
            if (isPut && !isSame) {
                ASSERT_GE(now.width(), now.minimumWidth);
                ASSERT_GE(now.height(), now.minimumHeight);
            }
            changes += x.low != oldX.low || x.high != oldX.high || y.low != oldY.low || y.high != oldY.high;
        }
    }
    EXPECT_GT(changes, 25000) << "the sequences must not be idle";
}

TEST(Rectangle, isNeverSeenHalfChanged) {
    const ComPtr<CRectangle> rectangle = makeObject<CRectangle>();
    rectangle->Init(0.0, 0.0, 0.0, 0.0);
    std::atomic<bool> isDone{false};
    std::thread writing([&] {
        for (int i = 1; i <= 20000; ++i) {
            const double value = i;
            rectangle->Init(value, value, value, value);
        }
        isDone = true;
    });
    int torn = 0;
    do {
        const BoundedRectangle seen = rectangle->snapshot();
        torn += seen.left != seen.top || seen.left != seen.right || seen.left != seen.bottom;
    } while (!isDone);
    writing.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(rectangle->snapshot().bottom, 20000.0);
}

} // namespace
} // namespace tarvo::custom
