#include "platform/registry/MemoryRegistry.h"

#include "tests/platform/RegistryConformance.h"

namespace tarvo::platform {
namespace {

struct MemorySubject {
    IRegistry& registry() { return m_registry; }
    CMemoryRegistry m_registry;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, RegistryConformance, MemorySubject);

TEST(MemoryRegistry, beginsWithAFile) {
    CMemoryRegistry registry("REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo]\n\"logpath\"=\"/tmp/x\"\n");
    RegistryKey key = noRegistryKey;
    ASSERT_EQ(registry.openKey(localMachine, "SOFTWARE\\Tarvo", key), registryError::success);
    char path[260];
    std::uint32_t type = 0;
    std::uint32_t size = sizeof path;
    ASSERT_EQ(registry.queryValue(key, "LogPath", type, path, size), registryError::success);
    EXPECT_STREQ(path, "/tmp/x");
    EXPECT_EQ(size, 7U);
}

TEST(MemoryRegistry, endsWithAFile) {
    CMemoryRegistry registry;
    RegistryKey key = noRegistryKey;
    ASSERT_EQ(registry.createKey(classesRoot, "CLSID", key), registryError::success);
    ASSERT_EQ(registry.setString(key, "", "x", registryType::string), registryError::success);
    EXPECT_EQ(registry.regFile(),
              "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CLASSES_ROOT\\CLSID]\r\n@=\"x\"\r\n");
}

TEST(MemoryRegistry, holdsTheClassesBelowLocalMachine) {
    CMemoryRegistry registry;
    RegistryKey key = noRegistryKey;
    ASSERT_EQ(registry.createKey(classesRoot, "CLSID", key), registryError::success);
    EXPECT_EQ(registry.openKey(localMachine, "Software\\Classes\\CLSID", key), registryError::success);
}

TEST(MemoryRegistry, hasItsRootsWithoutAFile) {
    CMemoryRegistry registry;
    RegistryKey key = noRegistryKey;
    std::vector<std::string> names;
    EXPECT_EQ(registry.subkeys(classesRoot, names), registryError::success);
    EXPECT_EQ(registry.openKey(classesRoot, "", key), registryError::success);
    EXPECT_EQ(registry.subkeys(key, names), registryError::success);
    EXPECT_EQ(registry.openKey(key, "CLSID", key), registryError::fileNotFound);
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    EXPECT_EQ(registry.queryValue(classesRoot, "x", type, nullptr, size), registryError::fileNotFound);
    EXPECT_EQ(registry.setDword(classesRoot, "x", 1), registryError::success);
    EXPECT_EQ(registry.queryValue(classesRoot, "x", type, nullptr, size), registryError::success);
}

TEST(MemoryRegistry, refusesPathsThatNoKeyHas) {
    CMemoryRegistry registry;
    RegistryKey key = noRegistryKey;
    EXPECT_EQ(registry.openKey(localMachine, "\\a", key), registryError::badPathname);
    EXPECT_EQ(registry.createKey(localMachine, "a\nb", key), registryError::badPathname);
    EXPECT_EQ(registry.deleteKey(localMachine, "a\\\\b"), registryError::badPathname);
    EXPECT_EQ(registry.deleteKey(localMachine, "\\"), registryError::badPathname);
    EXPECT_EQ(registry.openKey(0x80000001U, "Software", key), registryError::invalidHandle);
}

} // namespace
} // namespace tarvo::platform
