#pragma once

#include "platform/InterfaceTypes.h"

#include <atomic>

namespace tarvo::com {

/// Counts what must keep the module loaded: live objects, class factories among them, and server locks. Any
/// thread.
class CModuleCount {
public:
    void addObject() noexcept { m_objects.fetch_add(1, std::memory_order_relaxed); }
    void removeObject() noexcept { m_objects.fetch_sub(1, std::memory_order_release); }

    void lockServer() noexcept { m_serverLocks.fetch_add(1, std::memory_order_relaxed); }
    /// False where there is no lock to take back: a host's unbalanced call must not unload code in use.
    bool unlockServer() noexcept {
        LONG locks = m_serverLocks.load(std::memory_order_relaxed);
        while (locks > 0) {
            if (m_serverLocks.compare_exchange_weak(locks, locks - 1, std::memory_order_release,
                                                    std::memory_order_relaxed))
                return true;
        }
        return false;
    }

    LONG count() const noexcept {
        return m_objects.load(std::memory_order_acquire) + m_serverLocks.load(std::memory_order_acquire);
    }
    /// The answer of DllCanUnloadNow: S_OK if nothing is left, else S_FALSE.
    HRESULT canUnload() const noexcept { return count() == 0 ? S_OK : S_FALSE; }

private:
    std::atomic<LONG> m_objects{0};
    std::atomic<LONG> m_serverLocks{0};
};

/// The one count of the program or library that this code is linked into.
CModuleCount& moduleCount() noexcept;

/// Counts for as long as it lives; a member of whatever keeps the module loaded.
class CModuleLock {
public:
    CModuleLock() noexcept { moduleCount().addObject(); }
    ~CModuleLock() { moduleCount().removeObject(); }
    CModuleLock(const CModuleLock&) = delete;
    CModuleLock& operator=(const CModuleLock&) = delete;
};

} // namespace tarvo::com
