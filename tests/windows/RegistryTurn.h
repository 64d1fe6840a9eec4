#pragma once

#include <gtest/gtest.h>

#include <windows.h>

namespace tarvo::tests {

/// For a test that registers the product's classes with the system for all to see: while one of these lives,
/// other tests that do so wait. Where a redirected registry will do, that is better.
class CRegistryTurn {
public:
    CRegistryTurn() : m_mutex(CreateMutexA(nullptr, FALSE, "tarvo-test-registry-turn")) {
        const DWORD answer = WaitForSingleObject(m_mutex, 60'000);
        // One that ended while it had the turn gave it up all the same.
        m_isOurs = answer == WAIT_OBJECT_0 || answer == WAIT_ABANDONED;
        EXPECT_TRUE(m_isOurs);
    }
    CRegistryTurn(const CRegistryTurn&) = delete;
    CRegistryTurn& operator=(const CRegistryTurn&) = delete;
    ~CRegistryTurn() {
        if (m_isOurs)
            ReleaseMutex(m_mutex);
        CloseHandle(m_mutex);
    }

private:
    HANDLE m_mutex;
    bool m_isOurs = false;
};

} // namespace tarvo::tests
