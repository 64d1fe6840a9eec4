#include "module/Registration.h"
#include "module/RegistryRecords.h"
#include "tests/module/ExpectedKeys.h"
#include "tests/module/ProbeClasses.h"
#include "tests/module/windows/SystemSnapshot.h"
#include "tests/windows/RedirectedRegistry.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

TEST(SystemServices, recordMediaObjectsWhereOurOwnRecordsStand) {
    const CRedirectedRegistry redirected;
    const MediaObject object = dewarpingMediaObject(CLSID_DewarpingTransform);
    ASSERT_EQ(systemRegistrationServices().registerMediaObject(object), S_OK);
    const Snapshot systems = systemSnapshot();
    EXPECT_EQ(systems, inCapitals(mediaObjectKeys()));
    ASSERT_EQ(systemRegistrationServices().unregisterMediaObject(object.id, object.category), S_OK);
    EXPECT_FALSE(systemSnapshot().contains("DIRECTSHOW\\MEDIAOBJECTS\\" + dewarpingId.substr(1, 36)));

    writeMediaObject(platform::systemRegistry(), object);
    EXPECT_EQ(systemSnapshot(), systems);
    removeMediaObject(platform::systemRegistry(), object.id, object.category);
    EXPECT_FALSE(systemSnapshot().contains("DIRECTSHOW\\MEDIAOBJECTS\\" + dewarpingId.substr(1, 36)));
}

TEST(SystemServices, recordCategoriesWhereOurOwnRecordsStand) {
    const std::array<ComponentCategory, 2> categories{
        {{ComponentCategory::Relation::implemented, someCategory},
         {ComponentCategory::Relation::required, otherCategory}}};
    Snapshot ours;
    {
        const CRedirectedRegistry redirected;
        writeCategories(platform::systemRegistry(), CLSID_DewarpingTransform, categories);
        ours = systemSnapshot();
    }
    // The system's own function does not follow a redirection.
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    const std::string path = "CLSID\\" + dewarpingId;
    Snapshot systems{{"CLSID", {}}, {path, {}}};
    {
        const CRegistryTurn turn;
        EXPECT_EQ(systemRegistrationServices().registerCategories(CLSID_DewarpingTransform, categories),
                  S_OK);
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS);
        addSystemKeys(systems, path, key);
        RegCloseKey(key);
        EXPECT_EQ(RegDeleteTreeA(HKEY_CLASSES_ROOT, path.c_str()), ERROR_SUCCESS);
    }
    CoUninitialize();
    EXPECT_EQ(ours.size(), 6U);
    EXPECT_EQ(inCapitals(systems), ours);
}

TEST(SystemServices, haveNoTypeLibraryInAProgramWithoutOne) {
    const CRedirectedRegistry redirected;
    EXPECT_TRUE(FAILED(systemRegistrationServices().registerTypeLibrary()));
    EXPECT_TRUE(FAILED(systemRegistrationServices().unregisterTypeLibrary()));
    EXPECT_EQ(systemSnapshot(), Snapshot());
}

TEST(SystemServices, haveNoScriptsInAProgramWithoutAny) {
    EXPECT_TRUE(systemRegistrationServices().script(100).empty());
}

} // namespace
} // namespace tarvo::module
