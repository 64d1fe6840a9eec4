#include "platform/windows/FullAccess.h"

#include "platform/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <aclapi.h>
#include <sddl.h>
#include <string>
#include <vector>
#include <windows.h>

namespace tarvo::platform {
namespace {

struct Entry {
    std::string identifier;
    DWORD rights;
    bool isAllowed;
    BYTE flags;
};

std::vector<Entry> entriesOf(PACL list) {
    std::vector<Entry> entries;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        EXPECT_NE(GetAce(list, index, &entry), FALSE);
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        char* text = nullptr;
        EXPECT_NE(ConvertSidToStringSidA(&allowed->SidStart, &text), FALSE);
        entries.push_back({text, allowed->Mask, allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE,
                           allowed->Header.AceFlags});
        LocalFree(text);
    }
    return entries;
}

TEST(FullAccess, isForAdministratorsAndEveryone) {
    const CFullAccessList list;
    ASSERT_NE(list.get(), nullptr);
    EXPECT_NE(IsValidAcl(list.get()), FALSE);
    const std::vector<Entry> entries = entriesOf(list.get());
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].identifier, "S-1-5-32-544");
    EXPECT_EQ(entries[1].identifier, "S-1-1-0");
    for (const Entry& entry : entries) {
        EXPECT_TRUE(entry.isAllowed);
        EXPECT_EQ(entry.rights, 0x10000000U);
        EXPECT_EQ(entry.flags, 0);
    }
}

/// What everyone may do with a file.
DWORD rightsOfEveryone(const std::string& path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    PACL list = nullptr;
    EXPECT_EQ(GetNamedSecurityInfoA(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                    &list, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    DWORD rights = 0;
    if (list != nullptr) {
        for (const Entry& entry : entriesOf(list)) {
            if (entry.identifier == "S-1-1-0" && entry.isAllowed)
                rights |= entry.rights;
        }
    }
    LocalFree(descriptor);
    return rights;
}

TEST(FullAccess, isGivenToAFile) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "a.log";
    tests::writeFile(path, "x");
    constexpr DWORD readAndWrite = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA;
    EXPECT_NE(rightsOfEveryone(path) & readAndWrite, readAndWrite);
    grantAccessToEveryone(path.c_str());
    EXPECT_EQ(rightsOfEveryone(path) & readAndWrite, readAndWrite);
    tests::writeFile(path, "y");
    EXPECT_EQ(tests::readFile(path), "y");
}

} // namespace
} // namespace tarvo::platform
