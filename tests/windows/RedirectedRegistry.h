#pragma once

#include "platform/Registry.h"

#include <gtest/gtest.h>

#include <string>
#include <windows.h>

namespace tarvo::tests {

/// The system's registry, whose two roots are keys of this test's own while it lives.
class CRedirectedRegistry {
public:
    CRedirectedRegistry() : m_name("Software\\tarvo-test-" + std::to_string(GetCurrentProcessId())) {
        // What a run that ended halfway left behind, should its number come again.
        RegDeleteTreeA(HKEY_CURRENT_USER, m_name.c_str());
        m_machine = create(m_name + "\\machine");
        m_classes = create(m_name + "\\classes");
        EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_machine), ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CLASSES_ROOT, m_classes), ERROR_SUCCESS);
    }
    CRedirectedRegistry(const CRedirectedRegistry&) = delete;
    CRedirectedRegistry& operator=(const CRedirectedRegistry&) = delete;
    ~CRedirectedRegistry() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        RegCloseKey(m_machine);
        RegCloseKey(m_classes);
        EXPECT_EQ(RegDeleteTreeA(HKEY_CURRENT_USER, m_name.c_str()), ERROR_SUCCESS);
    }

    platform::IRegistry& registry() { return platform::systemRegistry(); }
    HKEY machine() const { return m_machine; }

private:
    static HKEY create(const std::string& path) {
        HKEY key = nullptr;
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &key, nullptr),
                  ERROR_SUCCESS);
        return key;
    }

    std::string m_name;
    HKEY m_machine = nullptr;
    HKEY m_classes = nullptr;
};

} // namespace tarvo::tests
