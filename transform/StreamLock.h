#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tarvo::transform {

/// The recursive lock of the streams, which hosts may take and give back too.
///
/// A host's mistakes cost nobody anything: what is given back without having been taken is refused, and a
/// lock that is still held may be destroyed.
class CStreamLock {
public:
    void lock() {
        std::unique_lock guard(m_guard);
        enter(guard);
    }
    void unlock() {
        const std::lock_guard guard(m_guard);
        leave();
    }

    void lockForHost() {
        std::unique_lock guard(m_guard);
        enter(guard);
        ++m_hostDepth;
    }
    /// False if this thread's host has not taken it.
    bool unlockForHost() {
        const std::lock_guard guard(m_guard);
        if (m_hostDepth == 0 || m_owner != std::this_thread::get_id())
            return false;
        --m_hostDepth;
        leave();
        return true;
    }

private:
    void enter(std::unique_lock<std::mutex>& guard) {
        const std::thread::id self = std::this_thread::get_id();
        m_freed.wait(guard, [&] { return m_depth == 0 || m_owner == self; });
        m_owner = self;
        ++m_depth;
    }
    void leave() {
        if (--m_depth == 0) {
            m_owner = {};
            m_freed.notify_one();
        }
    }

    std::mutex m_guard;
    std::condition_variable m_freed;
    std::thread::id m_owner;
    unsigned m_depth = 0;
    unsigned m_hostDepth = 0; ///< how many of these are the host's
};

} // namespace tarvo::transform
