#include "custom/PropertyChangeNotifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tarvo::custom {
namespace {

using namespace std::chrono_literals;

class CNotifying : public PropertyChangeNotifier {};

/// Notes who was called.
class CCalls {
public:
    PropertyChangeNotifier::Listener note(const std::string& name) {
        return [this, name](PropertyChangeNotifier&) { m_names.push_back(name); };
    }
    std::vector<std::string> taken() { return std::exchange(m_names, {}); }

private:
    std::vector<std::string> m_names;
};

TEST(PropertyChangeNotifier, callsInTheOrderOfTheKeys) {
    CNotifying notifier;
    CCalls calls;
    notifier.notify();
    notifier.addListener(std::numeric_limits<std::uint64_t>::max(), calls.note("last"));
    notifier.addListener(0x100000000, calls.note("beyond 32 bits"));
    notifier.addListener(0, calls.note("first"));
    notifier.addListener(7, calls.note("seven"));
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("first", "seven", "beyond 32 bits", "last"));
}

TEST(PropertyChangeNotifier, handsItselfToTheListener) {
    CNotifying notifier;
    PropertyChangeNotifier* seen = nullptr;
    notifier.addListener(1, [&](PropertyChangeNotifier& changed) { seen = &changed; });
    notifier.notify();
    EXPECT_EQ(seen, &notifier);
}

TEST(PropertyChangeNotifier, replacesAndRemovesByKey) {
    CNotifying notifier;
    CCalls calls;
    notifier.addListener(1, calls.note("a"));
    notifier.addListener(2, calls.note("b"));
    notifier.addListener(1, calls.note("new a"));
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("new a", "b"));
    notifier.removeListener(1);
    notifier.removeListener(1);
    notifier.removeListener(77);
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("b"));
}

TEST(PropertyChangeNotifier, letsGoOfARemovedListener) {
    CNotifying notifier;
    const auto held = std::make_shared<int>(0);
    notifier.addListener(1, [held](PropertyChangeNotifier&) {});
    EXPECT_EQ(held.use_count(), 2);
    notifier.addListener(1, [](PropertyChangeNotifier&) {});
    EXPECT_EQ(held.use_count(), 1);
    notifier.addListener(2, [held](PropertyChangeNotifier&) {});
    notifier.removeListener(2);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(PropertyChangeNotifier, letsListenersRemoveThemselvesAndOthers) {
    CNotifying notifier;
    CCalls calls;
    const auto note2 = calls.note("2");
    notifier.addListener(1, calls.note("1"));
    const auto held = std::make_shared<int>(0);
    notifier.addListener(2, [&, held](PropertyChangeNotifier& changed) {
        changed.removeListener(2);
        changed.removeListener(3);
        changed.removeListener(1);
        // Its own captures are still there.
        EXPECT_EQ(*held, 0);
        note2(changed);
    });
    notifier.addListener(3, calls.note("3"));
    notifier.addListener(4, calls.note("4"));
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("1", "2", "4"));
    EXPECT_EQ(held.use_count(), 1);
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("4"));
}

TEST(PropertyChangeNotifier, letsListenersAddAndReplaceOthers) {
    CNotifying notifier;
    CCalls calls;
    notifier.addListener(5, [&](PropertyChangeNotifier& changed) {
        changed.addListener(4, calls.note("4, too late"));
        changed.addListener(5, calls.note("5, replaced"));
        changed.addListener(6, calls.note("6, replaced"));
        changed.addListener(7, calls.note("7, added"));
    });
    notifier.addListener(6, calls.note("6, never"));
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("6, replaced", "7, added"));
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("4, too late", "5, replaced", "6, replaced", "7, added"));
}

TEST(PropertyChangeNotifier, letsAListenerNotifyOnceMore) {
    CNotifying notifier;
    CCalls calls;
    bool isFirst = true;
    notifier.addListener(1, [&](PropertyChangeNotifier&) {
        if (std::exchange(isFirst, false))
            notifier.notify();
        // Still within the outer notification: this must not wait for itself.
        notifier.removeListener(1);
    });
    notifier.addListener(2, calls.note("2"));
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("2", "2"));
}

TEST(PropertyChangeNotifier, mayEndWhileItNotifies) {
    auto notifier = std::make_unique<CNotifying>();
    CCalls calls;
    notifier->addListener(1, [&](PropertyChangeNotifier&) { notifier.reset(); });
    notifier->addListener(2, calls.note("nobody is left to speak of"));
    notifier->notify();
    EXPECT_EQ(notifier, nullptr);
    EXPECT_THAT(calls.taken(), testing::IsEmpty());
}

TEST(PropertyChangeNotifier, callsEveryListenerAlthoughOneThrows) {
    CNotifying notifier;
    CCalls calls;
    notifier.addListener(1, [](PropertyChangeNotifier&) { throw std::runtime_error("one"); });
    notifier.addListener(2, [](PropertyChangeNotifier&) { throw std::runtime_error("two"); });
    notifier.addListener(3, calls.note("3"));
    try {
        notifier.notify();
        FAIL() << "the exception is lost";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "one");
    }
    EXPECT_THAT(calls.taken(), testing::ElementsAre("3"));
    // A removal would wait for ever if a call counted as running still.
    notifier.removeListener(1);
    notifier.removeListener(2);
    notifier.notify();
    EXPECT_THAT(calls.taken(), testing::ElementsAre("3"));
}

/// A listener that stays in its call until it is let go.
class CSlowListener {
public:
    PropertyChangeNotifier::Listener listener() {
        return [this](PropertyChangeNotifier&) {
            m_entered.set_value();
            m_mayLeave.get_future().wait();
            hasLeft = true;
        };
    }
    void waitUntilEntered() { m_entered.get_future().wait(); }
    void letLeave() { m_mayLeave.set_value(); }

    std::atomic<bool> hasLeft{false};

private:
    std::promise<void> m_entered;
    std::promise<void> m_mayLeave;
};

TEST(PropertyChangeNotifier, waitsForARemovedListenerThatRunsOnAnotherThread) {
    for (const bool isReplaced : {false, true}) {
        CNotifying notifier;
        CSlowListener slow;
        notifier.addListener(1, slow.listener());
        std::thread notifying([&] { notifier.notify(); });
        slow.waitUntilEntered();
        auto removal = std::async(std::launch::async, [&] {
            if (isReplaced)
                notifier.addListener(1, [](PropertyChangeNotifier&) {});
            else
                notifier.removeListener(1);
            return slow.hasLeft.load();
        });
        EXPECT_EQ(removal.wait_for(50ms), std::future_status::timeout) << isReplaced;
        slow.letLeave();
        EXPECT_TRUE(removal.get()) << isReplaced;
        notifying.join();
    }
}

TEST(PropertyChangeNotifier, doesNotWaitForOtherListeners) {
    CNotifying notifier;
    CSlowListener slow;
    CCalls calls;
    notifier.addListener(1, slow.listener());
    notifier.addListener(2, calls.note("2"));
    std::thread notifying([&] { notifier.notify(); });
    slow.waitUntilEntered();
    notifier.removeListener(2);
    EXPECT_FALSE(slow.hasLeft);
    slow.letLeave();
    notifying.join();
    EXPECT_THAT(calls.taken(), testing::IsEmpty());
}

TEST(PropertyChangeNotifier, neverCallsAListenerWhoseUserIsGone) {
    CNotifying notifier;
    std::atomic<bool> isDone{false};
    std::vector<std::thread> notifying;
    notifying.reserve(2);
    for (int i = 0; i < 2; ++i) {
        notifying.emplace_back([&] {
            while (!isDone)
                notifier.notify();
        });
    }
    std::atomic<int> wrongCalls{0};
    std::atomic<int> rightCalls{0};
    for (int round = 0; round < 300; ++round) {
        // The sanitizers would see a call of a listener whose variable has ended.
        auto isAlive = std::make_unique<std::atomic<bool>>(true);
        notifier.addListener(
            1, [&, alive = isAlive.get()](PropertyChangeNotifier&) { ++(*alive ? rightCalls : wrongCalls); });
        if (round % 10 == 0)
            std::this_thread::yield();
        notifier.removeListener(1);
        *isAlive = false;
    }
    // The last one stays until it was called, however the threads are scheduled.
    const int before = rightCalls;
    notifier.addListener(1, [&](PropertyChangeNotifier&) { ++rightCalls; });
    while (rightCalls == before)
        std::this_thread::yield();
    isDone = true;
    for (std::thread& thread : notifying)
        thread.join();
    EXPECT_EQ(wrongCalls, 0);
    EXPECT_GT(rightCalls, 0);
}

} // namespace
} // namespace tarvo::custom
