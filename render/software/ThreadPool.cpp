#include "render/software/ThreadPool.h"

#include "platform/Processors.h"

#include <algorithm>

namespace tarvo::render::software {

CThreadPool::CThreadPool(int threadCount)
    : m_threadCount(threadCount > 0 ? threadCount : platform::usableProcessors()) {}

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

void CThreadPool::runJob(Job& job) noexcept {
    if (job.count <= 1 || m_threadCount == 1) {
        process(job);
        return;
    }
    {
        const std::lock_guard guard(m_lock);
        startThreads();
        append(job);
    }
    m_workCame.notify_all();
    process(job);
    std::unique_lock guard(m_lock);
    remove(job);
    m_helperLeft.wait(guard, [&job] { return job.helpers == 0; });
}

void CThreadPool::process(Job& job) noexcept {
    for (int index = job.next.fetch_add(1, std::memory_order_relaxed); index < job.count;
         index = job.next.fetch_add(1, std::memory_order_relaxed)) {
        job.call(job.context, index);
    }
}

void CThreadPool::help() noexcept {
    std::unique_lock guard(m_lock);
    for (;;) {
        Job* job = nullptr;
        m_workCame.wait(guard, [&] { return m_isEnding || (job = openJob()) != nullptr; });
        if (m_isEnding)
            return;
        // A job is taken off the list before its owner looks at the helpers, both under the lock, so one that
        // was found here stays until this thread has left it.
        ++job->helpers;
        guard.unlock();
        process(*job);
        guard.lock();
        if (--job->helpers == 0)
            m_helperLeft.notify_all();
    }
}

CThreadPool::Job* CThreadPool::openJob() const {
    for (Job* job = m_first; job != nullptr; job = job->following) {
        if (job->next.load(std::memory_order_relaxed) < job->count)
            return job;
    }
    return nullptr;
}

void CThreadPool::startThreads() noexcept {
    if (m_isStarted)
        return;
    m_isStarted = true;
    try {
        m_threads.reserve(static_cast<std::size_t>(m_threadCount - 1));
        for (int i = 1; i < m_threadCount; ++i)
            m_threads.emplace_back([this] { help(); });
    } catch (...) { // NOLINT(bugprone-empty-catch): the system grants no more threads; fewer do the same work
    }
}

void CThreadPool::append(Job& job) {
    Job** place = &m_first;
    while (*place != nullptr)
        place = &(*place)->following;
    *place = &job;
}

void CThreadPool::remove(const Job& job) {
    Job** place = &m_first;
    while (*place != &job)
        place = &(*place)->following;
    *place = job.following;
}

} // namespace tarvo::render::software
