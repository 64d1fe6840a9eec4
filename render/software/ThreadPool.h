#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace tarvo::render::software {

/// Splits work over threads. Any number of threads may hand in work at the same time, also from within work;
/// each takes part in its own, so nobody waits for a thread that never comes. Threads start with the first
/// work that can be split, sleep while there is none and end with the pool. Before they sleep they look out
/// for a few microseconds: the next step of a frame follows sooner than a sleeper wakes.
class CThreadPool {
public:
    /// Starts a thread, or throws std::system_error.
    using ThreadStarter = std::function<std::thread(std::function<void()>)>;

    /// Counts the caller; 0 stands for as many as the process may run at once. Where the system grants no
    /// thread, those that are there do the work, and a second later it is asked again.
    explicit CThreadPool(int threadCount = 0, ThreadStarter start = startThread);
    /// Ends and joins the threads; no work may be under way.
    ~CThreadPool();
    CThreadPool(const CThreadPool&) = delete;
    CThreadPool& operator=(const CThreadPool&) = delete;

    /// The one pool of the process. It lasts as long as somebody holds it: the last holder's release joins
    /// the threads, at a time of the holder's choosing and never while the module is being unloaded.
    static std::shared_ptr<CThreadPool> shared();

    int threadCount() const { return m_threadCount; }

    /// Calls `task(i)` once for every i in 0 … count − 1, in any order and on any threads, and returns when
    /// all have returned. What they wrote is visible afterwards. Allocates nothing once the threads run.
    ///
    /// Each thread begins with a stretch of neighbours of its own, which may look at the same memory, and
    /// takes over from others only when that is done. Threads help while fewer are at work, callers among
    /// them, than the pool counts; where each processor has a caller of its own, nobody is called.
    template<typename Task>
    void run(int count, Task&& task) {
        using Plain = std::remove_reference_t<Task>;
        static_assert(noexcept(task(0)), "no exception could be brought back from another thread");
        Job job;
        job.call = [](void* context, int index) noexcept { (*static_cast<Plain*>(context))(index); };
        job.context = const_cast<std::remove_const_t<Plain>*>(&task);
        runJob(job, count);
    }

private:
    /// Indices from `next` on, up to `end`; in a line of the cache of its own.
    struct alignas(64) Stretch {
        std::atomic<int> next{0};
        int end = 0;
    };
    static constexpr int mostStretches = 16;
    struct Job {
        void (*call)(void*, int) noexcept = nullptr;
        void* context = nullptr;
        std::array<Stretch, mostStretches> stretches;
        int stretchCount = 1;
        int arrivals = 0;            ///< threads that ever came to help; under the lock
        std::atomic<int> helpers{0}; ///< threads of the pool at work on it; changed under the lock
        Job* following = nullptr;

        void divide(int count, int threads);
        bool isOpen() const;
        /// What is left, from a stretch on; `before()` before each.
        template<typename Before>
        void process(int first, Before before) noexcept;
    };

    static std::thread startThread(std::function<void()> work) { return std::thread(std::move(work)); }
    void runJob(Job& job, int count) noexcept;
    void help() noexcept;
    Job* openJob() const;
    /// One that a thread of the pool is welcome at.
    Job* jobToHelp() const;
    void startThreads() noexcept;
    void append(Job& job);
    void remove(const Job& job);

    const int m_threadCount;
    /// Calls of run() under way; one from within another counts as well.
    std::atomic<int> m_callers{0};
    int m_helping = 0; ///< threads of the pool at work; under the lock
    std::mutex m_lock;
    std::condition_variable m_workCame;
    std::condition_variable m_helperLeft;
    Job* m_first = nullptr;
    std::atomic<unsigned> m_jobsAppended{0};
    bool m_isEnding = false;
    const ThreadStarter m_start;
    std::chrono::steady_clock::time_point m_nextStart;
    std::vector<std::thread> m_threads;
};

} // namespace tarvo::render::software
