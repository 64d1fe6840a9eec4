#include "platform/Registry.h"

#include "tests/platform/RegistryConformance.h"
#include "tests/windows/RedirectedRegistry.h"

#include <windows.h>

namespace tarvo::platform {
namespace {

using tests::CRedirectedRegistry;

INSTANTIATE_TYPED_TEST_SUITE_P(System, RegistryConformance, CRedirectedRegistry);

TEST(Registry, isTheSystems) {
    const CRedirectedRegistry redirected;
    ASSERT_EQ(RegSetKeyValueA(redirected.machine(), "SOFTWARE\\Tarvo", "logpath", REG_SZ, "c:\\a", 5),
              ERROR_SUCCESS);
    RegistryKey key = noRegistryKey;
    ASSERT_EQ(systemRegistry().openKey(localMachine, "SOFTWARE\\Tarvo", key), registryError::success);
    char path[260];
    std::uint32_t type = 0;
    std::uint32_t size = sizeof path;
    EXPECT_EQ(systemRegistry().queryValue(key, "logpath", type, path, size), registryError::success);
    EXPECT_EQ(type, registryType::string);
    EXPECT_EQ(size, 5U);
    EXPECT_STREQ(path, "c:\\a");
    systemRegistry().closeKey(key);
}

TEST(Registry, writesTextsThatTheSystemReadsWide) {
    const CRedirectedRegistry redirected;
    RegistryKey key = noRegistryKey;
    ASSERT_EQ(systemRegistry().createKey(localMachine, "\xC3\xA4", key), registryError::success);
    ASSERT_EQ(systemRegistry().setString(key, "\xE2\x82\xAC", "\xE2\x82\xAC!"), registryError::success);
    systemRegistry().closeKey(key);
    WCHAR text[10];
    DWORD type = 0;
    DWORD size = sizeof text;
    ASSERT_EQ(RegGetValueW(redirected.machine(), L"\u00E4", L"\u20AC", RRF_RT_ANY, &type, text, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(size, 6U);
    EXPECT_EQ(std::wstring(text), L"\u20AC!");
}

} // namespace
} // namespace tarvo::platform
