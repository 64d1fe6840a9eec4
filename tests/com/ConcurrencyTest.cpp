#include "tests/com/EventObjects.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace tarvo::com {
namespace {

constexpr int threads = 4;
constexpr int rounds = 2000;

/// Runs `work(thread)` on several threads at once. They meet by spinning: the standard library's barrier can lose a
/// wake-up where it has no futex to build on, as with mingw-w64, and then sleeps for ever.
template<class Work>
void together(Work&& work) {
    std::atomic<int> arrived{0};
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&, i] {
            ++arrived;
            while (arrived < threads) {
                std::this_thread::yield();
            }
            work(i);
        });
    }
}

TEST(Concurrency, referencesAreCountedExactly) {
    ComPtr<COuter> outer = makeObject<COuter>();
    std::atomic<int> answers{0};
    together([&](int) {
        const ComPtr<IUnknown> unknown(outer->controllingUnknown());
        for (int i = 0; i < rounds; ++i) {
            const ComPtr<IPersist> persist = unknown.as<IPersist>();
            const ComPtr<ISupportErrorInfo> info = persist.as<ISupportErrorInfo>();
            answers += info ? 1 : 0;
        }
    });
    EXPECT_EQ(answers, threads * rounds);
    EXPECT_EQ(references(outer->controllingUnknown()), 1U);
    EXPECT_EQ(CLiving::count(), 2);
}

TEST(Concurrency, theLastOfManyHoldersDestroys) {
    for (int i = 0; i < 200; ++i) {
        ComPtr<COuter> outer = makeObject<COuter>();
        std::vector<ComPtr<IUnknown>> holders(threads, ComPtr<IUnknown>(outer->controllingUnknown()));
        outer.reset();
        together([&](int thread) { holders[static_cast<std::size_t>(thread)].reset(); });
        ASSERT_EQ(CLiving::count(), 0);
    }
    EXPECT_EQ(moduleCount().count(), 0);
}

TEST(Concurrency, sinksComeAndGoWhileEventsAreFired) {
    ComPtr<CSource> source = makeObject<CSource>();
    std::atomic<int> constant{0};
    std::atomic<int> passing{0};
    connect(*source, makeSink([&](DISPID, const DISPPARAMS&) {
        ++constant;
        return S_OK;
    }));
    together([&](int thread) {
        const VARIANT arguments[1] = {};
        for (int i = 0; i < rounds; ++i) {
            if (thread < 2) {
                fireEvent(source->dispatchEvents(), 1, arguments);
            } else {
                const DWORD cookie = connect(*source, makeSink([&](DISPID, const DISPPARAMS&) {
                    ++passing;
                    return S_OK;
                }));
                fireEvent(source->dispatchEvents(), 2, arguments);
                ComPtr<IEnumConnections> enumerator;
                EXPECT_EQ(source->dispatchEvents().EnumConnections(enumerator.put()), S_OK);
                EXPECT_EQ(source->dispatchEvents().Unadvise(cookie), S_OK);
            }
        }
    });
    EXPECT_EQ(constant, threads * rounds) << "no event passes by who is connected all the time";
    EXPECT_GE(passing, 2 * rounds) << "each at least by the event of its own thread";
    source.reset();
    EXPECT_EQ(CLiving::count(), 0);
}

} // namespace
} // namespace tarvo::com
