#include "render/software/ThreadPool.h"

#include "platform/Processors.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <numeric>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tarvo::render::software {
namespace {

TEST(ThreadPool, CallsEveryIndexOnce) {
    for (const int threads : {1, 2, 3, 7}) {
        CThreadPool pool(threads);
        EXPECT_EQ(pool.threadCount(), threads);
        for (const int count : {0, 1, 2, 5, 1000}) {
            std::vector<int> calls(static_cast<std::size_t>(count), 0);
            pool.run(count, [&](int i) noexcept { ++calls[static_cast<std::size_t>(i)]; });
            EXPECT_EQ(calls, std::vector<int>(static_cast<std::size_t>(count), 1)) << threads << " threads";
        }
    }
}

TEST(ThreadPool, HelpersReallyHelp) {
    CThreadPool pool(2);
    // Two calls that wait for one another can only end on two threads.
    std::atomic<int> arrived{0};
    pool.run(2, [&](int) noexcept {
        ++arrived;
        while (arrived.load() < 2)
            std::this_thread::yield();
    });
    EXPECT_EQ(arrived.load(), 2);
}

TEST(ThreadPool, WorkFromWithinWorkEnds) {
    CThreadPool pool(2);
    std::atomic<int> calls{0};
    pool.run(8, [&](int) noexcept { pool.run(8, [&](int) noexcept { ++calls; }); });
    EXPECT_EQ(calls.load(), 64);
}

TEST(ThreadPool, HelpsWhereAProcessorIsLeft) {
    using namespace std::chrono_literals;
    CThreadPool pool(2);
    std::atomic<bool> isBusy{false};
    std::atomic<bool> isEnough{false};
    std::thread other([&] {
        pool.run(1, [&](int) noexcept {
            isBusy = true;
            while (!isEnough)
                std::this_thread::sleep_for(1ms);
        });
    });
    while (!isBusy)
        std::this_thread::sleep_for(1ms);
    const auto self = std::this_thread::get_id();
    std::atomic<int> calls{0};
    std::atomic<int> elsewhere{0};
    // Two callers keep two processors busy, long enough for a helper to come if one was called. Then the
    // other caller goes, and help comes in the middle of the work.
    pool.run(200, [&](int) noexcept {
        if (++calls == 20) {
            EXPECT_EQ(elsewhere.load(), 0);
            isEnough = true;
            other.join();
        }
        elsewhere += std::this_thread::get_id() != self ? 1 : 0;
        std::this_thread::sleep_for(2ms);
    });
    EXPECT_EQ(calls.load(), 200);
    EXPECT_GT(elsewhere.load(), 0);
}

class ThreadPoolOf : public testing::TestWithParam<int> {};

// With fewer threads than callers nobody is called for help, with more some are.
TEST_P(ThreadPoolOf, ServesManyCallersAtOnce) {
    CThreadPool pool(GetParam());
    constexpr int rounds = 200;
    std::vector<std::thread> callers;
    std::vector<long> sums(4, 0);
    for (std::size_t caller = 0; caller < sums.size(); ++caller) {
        callers.emplace_back([&, caller] {
            for (int round = 0; round < rounds; ++round) {
                std::vector<long> squares(37);
                pool.run(37, [&](int i) noexcept {
                    squares[static_cast<std::size_t>(i)] = static_cast<long>(i) * i;
                });
                sums[caller] += std::accumulate(squares.begin(), squares.end(), 0L);
            }
        });
    }
    for (std::thread& caller : callers)
        caller.join();
    // 0² + … + 36² = 36 · 37 · 73 / 6
    EXPECT_EQ(sums, std::vector<long>(4, 16206L * rounds));
}

INSTANTIATE_TEST_SUITE_P(threads, ThreadPoolOf, testing::Values(3, 6));

TEST(ThreadPool, DoesWithoutThreadsThatAreNotGranted) {
    int granted = 0;
    int asked = 0;
    CThreadPool pool(4, [&](std::function<void()> work) {
        ++asked;
        if (granted == 1)
            throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
        ++granted;
        return std::thread(std::move(work));
    });
    const auto indicesDone = [&pool] {
        std::atomic<int> sum{0};
        pool.run(100, [&](int i) noexcept { sum += i; });
        return sum.load();
    };
    const auto begin = std::chrono::steady_clock::now();
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(indicesDone(), 4950);
        EXPECT_EQ(granted, 1);
        // Not with every job, which would cost more than the thread gains: once a second.
        const auto seconds =
            std::chrono::floor<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
        EXPECT_LE(asked, 2 + seconds.count());
    }
}

TEST(ThreadPool, AsksForThreadsAgain) {
    std::atomic<int> started{0};
    bool isRefused = true;
    CThreadPool pool(2, [&](std::function<void()> work) {
        if (isRefused)
            throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
        ++started;
        return std::thread(std::move(work));
    });
    pool.run(2, [](int) noexcept {});
    EXPECT_EQ(started.load(), 0);
    isRefused = false;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (started.load() == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        pool.run(2, [](int) noexcept {});
    }
    EXPECT_EQ(started.load(), 1);
}

TEST(ThreadPool, IsSharedWhileSomebodyHoldsIt) {
    std::weak_ptr<CThreadPool> seen;
    {
        const std::shared_ptr<CThreadPool> first = CThreadPool::shared();
        const std::shared_ptr<CThreadPool> second = CThreadPool::shared();
        EXPECT_EQ(first, second);
        EXPECT_EQ(first->threadCount(), platform::usableProcessors());
        seen = first;
    }
    EXPECT_TRUE(seen.expired());
}

} // namespace
} // namespace tarvo::render::software
