#include "render/software/ThreadPool.h"

#include "platform/Processors.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

namespace {

/// True as soon as `isThere`; false when it has not come for longer than falling asleep and waking would
/// take.
template<typename IsThere>
bool lookOutFor(IsThere isThere) noexcept {
    constexpr auto longest = std::chrono::microseconds(40);
    const auto end = std::chrono::steady_clock::now() + longest;
    do {
        // Others who have work go first.
        for (int i = 0; i < 8; ++i) {
            if (isThere())
                return true;
            std::this_thread::yield();
        }
    } while (std::chrono::steady_clock::now() < end);
    return false;
}

} // namespace

CThreadPool::CThreadPool(int threadCount, ThreadStarter start)
    : m_threadCount(threadCount > 0 ? threadCount : platform::usableProcessors()), m_start(std::move(start)) {
}

CThreadPool::~CThreadPool() {
    {
        const std::lock_guard guard(m_lock);
        m_isEnding = true;
    }
    m_workCame.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

std::shared_ptr<CThreadPool> CThreadPool::shared() {
    static std::mutex lock;
    // Does not keep the pool: at the end of the process there is nothing left to join.
    static std::weak_ptr<CThreadPool> current;
    const std::lock_guard guard(lock);
    std::shared_ptr<CThreadPool> pool = current.lock();
    if (pool == nullptr) {
        pool = std::make_shared<CThreadPool>();
        current = pool;
    }
    return pool;
}

void CThreadPool::Job::divide(int count, int threads) {
    stretchCount = std::clamp(threads, 1, mostStretches);
    const auto begin = [&](int stretch) {
        return static_cast<int>(static_cast<std::int64_t>(count) * stretch / stretchCount);
    };
    for (int i = 0; i < stretchCount; ++i) {
        Stretch& stretch = stretches[static_cast<std::size_t>(i)];
        stretch.next.store(begin(i), std::memory_order_relaxed);
        stretch.end = begin(i + 1);
    }
}

bool CThreadPool::Job::isOpen() const {
    return std::any_of(stretches.begin(), stretches.begin() + stretchCount, [](const Stretch& stretch) {
        return stretch.next.load(std::memory_order_relaxed) < stretch.end;
    });
}

template<typename Before>
void CThreadPool::Job::process(int first, Before before) noexcept {
    for (int i = 0; i < stretchCount; ++i) {
        Stretch& stretch = stretches[static_cast<std::size_t>((first + i) % stretchCount)];
        // Looked at before, so that what is done does not count up for ever.
        while (stretch.next.load(std::memory_order_relaxed) < stretch.end) {
            before();
            const int index = stretch.next.fetch_add(1, std::memory_order_relaxed);
            if (index < stretch.end)
                call(context, index);
        }
    }
}

void CThreadPool::runJob(Job& job, int count) noexcept {
    if (count <= 1 || m_threadCount == 1) {
        m_callers.fetch_add(1, std::memory_order_relaxed);
        job.divide(count, 1);
        job.process(0, [] {});
        m_callers.fetch_sub(1, std::memory_order_relaxed);
        return;
    }
    job.divide(count, m_threadCount);
    bool isHelpCalled = false;
    {
        const std::lock_guard guard(m_lock);
        isHelpCalled = m_callers.fetch_add(1, std::memory_order_relaxed) + 1 < m_threadCount;
        startThreads();
        append(job);
    }
    if (isHelpCalled)
        m_workCame.notify_all();
    job.process(0, [&] {
        if (isHelpCalled || m_callers.load(std::memory_order_relaxed) >= m_threadCount)
            return;
        // Another caller has gone. Whoever is about to sleep since there was one too many does so first.
        isHelpCalled = true;
        m_lock.lock();
        m_lock.unlock();
        m_workCame.notify_all();
    });
    {
        const std::lock_guard guard(m_lock);
        remove(job);
        m_callers.fetch_sub(1, std::memory_order_relaxed);
    }
    // What the others are still at is as good as done.
    if (lookOutFor([&job] { return job.helpers.load(std::memory_order_acquire) == 0; }))
        return;
    std::unique_lock guard(m_lock);
    m_helperLeft.wait(guard, [&job] { return job.helpers.load(std::memory_order_relaxed) == 0; });
}

void CThreadPool::help() noexcept {
    std::unique_lock guard(m_lock);
    for (;;) {
        Job* job = nullptr;
        m_workCame.wait(guard, [&] { return m_isEnding || (job = jobToHelp()) != nullptr; });
        if (m_isEnding)
            return;
        // A job is taken off the list before its owner looks at the helpers, both under the lock, so one that
        // was found here stays until this thread has left it.
        job->helpers.fetch_add(1, std::memory_order_relaxed);
        ++m_helping;
        const int stretch = ++job->arrivals;
        const unsigned jobsSeen = m_jobsAppended.load(std::memory_order_relaxed);
        guard.unlock();
        job->process(stretch, [] {});
        guard.lock();
        --m_helping;
        // From here on the job may be gone.
        if (job->helpers.fetch_sub(1, std::memory_order_release) == 1)
            m_helperLeft.notify_all();
        if (jobToHelp() != nullptr)
            continue;
        guard.unlock();
        lookOutFor([&] { return m_jobsAppended.load(std::memory_order_relaxed) != jobsSeen; });
        guard.lock();
    }
}

CThreadPool::Job* CThreadPool::jobToHelp() const {
    return m_callers.load(std::memory_order_relaxed) + m_helping < m_threadCount ? openJob() : nullptr;
}

CThreadPool::Job* CThreadPool::openJob() const {
    for (Job* job = m_first; job != nullptr; job = job->following) {
        if (job->isOpen())
            return job;
    }
    return nullptr;
}

void CThreadPool::startThreads() noexcept {
    const auto wanted = static_cast<std::size_t>(m_threadCount) - 1;
    if (m_threads.size() == wanted)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < m_nextStart)
        return;
    m_nextStart = now + std::chrono::seconds(1);
    try {
        m_threads.reserve(wanted);
        while (m_threads.size() < wanted)
            m_threads.push_back(m_start([this] { help(); }));
    } catch (
        ...) { // NOLINT(bugprone-empty-catch): a host runs for months, so a shortage is no lasting verdict
    }
}

void CThreadPool::append(Job& job) {
    Job** place = &m_first;
    while (*place != nullptr)
        place = &(*place)->following;
    *place = &job;
    m_jobsAppended.fetch_add(1, std::memory_order_relaxed);
}

void CThreadPool::remove(const Job& job) {
    Job** place = &m_first;
    while (*place != &job)
        place = &(*place)->following;
    *place = job.following;
}

} // namespace tarvo::render::software
