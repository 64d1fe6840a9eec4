#pragma once

#include "platform/InterfaceTypes.h"

#include <atomic>

namespace tarvo::com {

/// Counts what must keep the module loaded: live objects, class factories among them, and server locks. Any
/// thread.
class CModuleCount {
public:
    void lock() noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }
    void unlock() noexcept { m_count.fetch_sub(1, std::memory_order_release); }
    LONG count() const noexcept { return m_count.load(std::memory_order_acquire); }
    /// The answer of DllCanUnloadNow: S_OK if nothing is left, else S_FALSE.
    HRESULT canUnload() const noexcept { return count() == 0 ? S_OK : S_FALSE; }

private:
    std::atomic<LONG> m_count{0};
};

/// The one count of the program or library that this code is linked into.
CModuleCount& moduleCount() noexcept;

/// Counts for as long as it lives; a member of whatever keeps the module loaded.
class CModuleLock {
public:
    CModuleLock() noexcept { moduleCount().lock(); }
    ~CModuleLock() { moduleCount().unlock(); }
    CModuleLock(const CModuleLock&) = delete;
    CModuleLock& operator=(const CModuleLock&) = delete;
};

} // namespace tarvo::com
