#include "module/Registrar.h"

#include "platform/registry/MemoryRegistry.h"
#include "tests/module/FailingRegistry.h"
#include "tests/module/Scripts.h"

#include <gtest/gtest.h>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

constexpr const char* path = "C:\\it's %here%\\TarvoVideoTransform.dll";

/// A registry with what others have put there.
constexpr const char* foreign = "REGEDIT4\n"
                                "[HKEY_CLASSES_ROOT\\CLSID\\{OTHER}]\n@=\"other\"\n"
                                "[HKEY_CLASSES_ROOT\\Other.Thing]\n\"x\"=dword:1\n";

TEST(Registrar, writesTheKeysOfAClass) {
    platform::CMemoryRegistry registry;
    CRegistrar registrar(registry);
    ASSERT_EQ(registrar.registerScript(scriptOf("DewarpingTransform"), replacementsFor(dewarpingId, path)),
              S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), classKeys("DewarpingTransform", dewarpingId, path));
    ASSERT_EQ(registrar.registerScript(scriptOf("AcceleratorFilter"), replacementsFor(acceleratorId, path)),
              S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), allClassKeys(path));
}

TEST(Registrar, twiceLeavesOneSetOfKeys) {
    platform::CMemoryRegistry registry;
    CRegistrar registrar(registry);
    const std::string script = scriptOf("DewarpingTransform");
    ASSERT_EQ(registrar.registerScript(script, replacementsFor(dewarpingId, "/old/place")), S_OK);
    // An earlier version may have left more in the class's key; that goes, what lies elsewhere stays.
    platform::RegistryKey key = platform::noRegistryKey;
    for (const std::string& left :
         {"CLSID\\" + dewarpingId + "\\Left\\Over", "CLSID\\" + dewarpingId + "\\Programmable\\Left"}) {
        ASSERT_EQ(registry.createKey(platform::classesRoot, left, key), platform::registryError::success);
        ASSERT_EQ(registry.setDword(key, "left", 1), platform::registryError::success);
        registry.closeKey(key);
    }
    ASSERT_EQ(registrar.registerScript(script, replacementsFor(dewarpingId, path)), S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), classKeys("DewarpingTransform", dewarpingId, path));
}

TEST(Registrar, removesOnlyItsOwn) {
    platform::CMemoryRegistry registry(foreign);
    CRegistrar registrar(registry);
    const Snapshot before = snapshotOf(registry.regFile());
    for (const auto& [name, id] :
         {std::pair{"DewarpingTransform", dewarpingId}, std::pair{"AcceleratorFilter", acceleratorId}})
        ASSERT_EQ(registrar.registerScript(scriptOf(name), replacementsFor(id, path)), S_OK);
    ASSERT_EQ(snapshotOf(registry.regFile()).size(), before.size() + 22);
    ASSERT_EQ(registrar.unregisterScript(scriptOf("DewarpingTransform"), replacementsFor(dewarpingId, path)),
              S_OK);
    Snapshot expected = classKeys("AcceleratorFilter", acceleratorId, path);
    expected.insert(before.begin(), before.end());
    EXPECT_EQ(snapshotOf(registry.regFile()), expected);
    ASSERT_EQ(registrar.unregisterScript(scriptOf("AcceleratorFilter"), replacementsFor(acceleratorId, path)),
              S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), before);
}

TEST(Registrar, neverRemovesTheKeyOfAllClasses) {
    platform::CMemoryRegistry registry;
    CRegistrar registrar(registry);
    const std::string script = scriptOf("DewarpingTransform");
    ASSERT_EQ(registrar.registerScript(script, replacementsFor(dewarpingId, path)), S_OK);
    ASSERT_EQ(registrar.unregisterScript(script, replacementsFor(dewarpingId, path)), S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), (Snapshot{{"CLSID", {}}}));
}

TEST(Registrar, removesWhatIsNotThereWithoutComplaintAndWithoutMakingIt) {
    platform::CMemoryRegistry registry(foreign);
    const std::string before = registry.regFile();
    EXPECT_EQ(CRegistrar(registry).unregisterScript(scriptOf("DewarpingTransform"),
                                                    replacementsFor(dewarpingId, path)),
              S_OK);
    EXPECT_EQ(registry.regFile(), before);
}

TEST(Registrar, leavesAKeyThatOthersUse) {
    platform::CMemoryRegistry registry;
    CRegistrar registrar(registry);
    constexpr const char* script = "HKCR { a = s text { val v = d 1 b } NoRemove c { val v = d 2 } }";
    ASSERT_EQ(registrar.registerScript(script, {}), S_OK);
    platform::RegistryKey key = platform::noRegistryKey;
    ASSERT_EQ(registry.createKey(platform::classesRoot, "a\\others", key), platform::registryError::success);
    ASSERT_EQ(registrar.unregisterScript(script, {}), S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), (Snapshot{{"a", {}}, {"a\\others", {}}, {"c", {}}}));
}

TEST(Registrar, deletesOnRegistrationOnly) {
    platform::CMemoryRegistry registry(foreign);
    CRegistrar registrar(registry);
    constexpr const char* script = "HKCR { Delete Other.Thing Delete Absent }";
    ASSERT_EQ(registrar.unregisterScript(script, {}), S_OK);
    EXPECT_TRUE(snapshotOf(registry.regFile()).contains("Other.Thing"));
    ASSERT_EQ(registrar.registerScript(script, {}), S_OK);
    EXPECT_FALSE(snapshotOf(registry.regFile()).contains("Other.Thing"));
}

TEST(Registrar, writesNothingOfAMalformedScript) {
    platform::CMemoryRegistry registry(foreign);
    CRegistrar registrar(registry);
    const std::string before = registry.regFile();
    const std::string script = scriptOf("DewarpingTransform");
    const Replacements replacements = replacementsFor(dewarpingId, path);
    // The last brace is missing; nothing before it may have been carried out.
    const std::string broken = script.substr(0, script.rfind('}'));
    EXPECT_EQ(registrar.registerScript(broken, replacements), HRESULT(0x8007000DU));
    EXPECT_EQ(registrar.registerScript(script, {}), HRESULT(0x8007000DU));
    EXPECT_EQ(registry.regFile(), before);
    ASSERT_EQ(registrar.registerScript(script, replacements), S_OK);
    const std::string registered = registry.regFile();
    EXPECT_EQ(registrar.unregisterScript(broken, replacements), HRESULT(0x8007000DU));
    EXPECT_EQ(registry.regFile(), registered);
}

TEST(Registrar, takesBackWhatAFailingRegistryLeftHalfDone) {
    const std::string script = scriptOf("DewarpingTransform");
    const Replacements replacements = replacementsFor(dewarpingId, path);
    int failures = 0;
    for (int calls = 0; calls < 1000; ++calls) {
        CFailingRegistry registry(foreign);
        const Snapshot before = snapshotOf(registry.regFile());
        registry.failOnceAfter(calls, platform::registryError::diskFull);
        const HRESULT result = CRegistrar(registry).registerScript(script, replacements);
        EXPECT_EQ(registry.openKeys(), 0) << calls;
        if (result == S_OK)
            break;
        ++failures;
        EXPECT_EQ(result, HRESULT(0x80070070U)) << calls;
        EXPECT_EQ(snapshotOf(registry.regFile()), before) << calls;
    }
    // Every write of the script: 12 keys (CLSID among them), 12 values and 2 removals.
    EXPECT_EQ(failures, 26);
}

TEST(Registrar, reportsARegistryThatCannotRemove) {
    const std::string script = scriptOf("DewarpingTransform");
    const Replacements replacements = replacementsFor(dewarpingId, path);
    CFailingRegistry registry;
    ASSERT_EQ(CRegistrar(registry).registerScript(script, replacements), S_OK);
    registry.failOnceAfter(0, platform::registryError::accessDenied);
    EXPECT_EQ(CRegistrar(registry).unregisterScript(script, replacements), E_ACCESSDENIED);
    EXPECT_EQ(registry.openKeys(), 0);
    EXPECT_EQ(CRegistrar(registry).unregisterScript(script, replacements), S_OK);
    EXPECT_EQ(snapshotOf(registry.regFile()), (Snapshot{{"CLSID", {}}}));
}

} // namespace
} // namespace tarvo::module
