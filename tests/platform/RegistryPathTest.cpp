#include "platform/registry/RegistryPath.h"

#include <gtest/gtest.h>

#include <optional>

namespace tarvo::platform {
namespace {

using namespace std::string_literals;

TEST(RegistryPath, knowsTheTwoHivesByBothOfTheirNames) {
    EXPECT_EQ(pathFromFile("HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo"), "SOFTWARE\\Tarvo");
    EXPECT_EQ(pathFromFile("hklm\\SOFTWARE"), "SOFTWARE");
    EXPECT_EQ(pathFromFile("HKEY_LOCAL_MACHINE"), "");
    EXPECT_EQ(pathFromFile("HKEY_CLASSES_ROOT\\CLSID"), "SOFTWARE\\Classes\\CLSID");
    EXPECT_EQ(pathFromFile("HKCR"), "SOFTWARE\\Classes");
}

TEST(RegistryPath, leavesOtherHivesAlone) {
    EXPECT_EQ(pathFromFile("HKEY_CURRENT_USER\\Software"), std::nullopt);
    EXPECT_EQ(pathFromFile("HKEY_LOCAL_MACHINES\\Software"), std::nullopt);
    EXPECT_EQ(pathFromFile(""), std::nullopt);
}

TEST(RegistryPath, isSpelledByTheHiveItIsKnownBy) {
    EXPECT_EQ(pathForFile(""), "HKEY_LOCAL_MACHINE");
    EXPECT_EQ(pathForFile("SOFTWARE\\Tarvo"), "HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo");
    EXPECT_EQ(pathForFile("Software\\classes\\CLSID\\x"), "HKEY_CLASSES_ROOT\\CLSID\\x");
    EXPECT_EQ(pathForFile("SOFTWARE\\Classes"), "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes");
    EXPECT_EQ(pathForFile("SOFTWARE\\ClassesToo"), "HKEY_LOCAL_MACHINE\\SOFTWARE\\ClassesToo");
}

TEST(RegistryPath, joins) {
    EXPECT_EQ(joinPath("", ""), "");
    EXPECT_EQ(joinPath("", "a"), "a");
    EXPECT_EQ(joinPath("a", "b\\c"), "a\\b\\c");
    EXPECT_EQ(joinPath("a", ""), "a");
    EXPECT_EQ(joinPath("a", "b\\"), "a\\b");
}

TEST(RegistryPath, refusesNamesThatNoKeyCanHave) {
    EXPECT_EQ(joinPath("a", "\\b"), std::nullopt);
    EXPECT_EQ(joinPath("a", "b\\\\c"), std::nullopt);
    EXPECT_EQ(joinPath("a", "b\nc"), std::nullopt);
    EXPECT_EQ(joinPath("a", "b\0c"s), std::nullopt);
    EXPECT_TRUE(joinPath("a", std::string(255, 'x')));
    EXPECT_EQ(joinPath("a", std::string(256, 'x')), std::nullopt);
}

TEST(RegistryPath, refusesMoreThan512Levels) {
    std::string path = "x";
    for (int level = 1; level < 512; ++level)
        path += "\\x";
    EXPECT_TRUE(joinPath("", path));
    EXPECT_EQ(joinPath(path, "x"), std::nullopt);
}

TEST(RegistryPath, namesItsKeys) {
    EXPECT_EQ(pathNames("a\\bc\\d"), (std::vector<std::string_view>{"a", "bc", "d"}));
    EXPECT_TRUE(pathNames("").empty());
    EXPECT_EQ(parentPath("a\\bc\\d"), "a\\bc");
    EXPECT_EQ(parentPath("a"), "");
    EXPECT_EQ(parentPath(""), "");
}

TEST(RegistryPath, knowsWhatLiesBelow) {
    EXPECT_TRUE(isSameOrBelow("A\\B", "a\\b"));
    EXPECT_TRUE(isSameOrBelow("A\\B\\c", "a\\b"));
    EXPECT_TRUE(isSameOrBelow("a", ""));
    EXPECT_FALSE(isSameOrBelow("a\\bc", "a\\b"));
    EXPECT_FALSE(isSameOrBelow("a", "a\\b"));
}

TEST(RegistryPath, comparesNamesWithoutRegardToCase) {
    EXPECT_TRUE(isSameName("LogPath", "logpath"));
    EXPECT_FALSE(isSameName("LogPath", "logpaths"));
    EXPECT_TRUE(NameLess()("a", "B"));
    EXPECT_FALSE(NameLess()("B", "a"));
    EXPECT_FALSE(NameLess()("b", "B"));
    // '[' lies between the two cases of the letters.
    EXPECT_FALSE(isSameName("[", "{"));
}

TEST(RegistryPath, judgesNamesOfValues) {
    EXPECT_TRUE(isValidValueName(""));
    EXPECT_TRUE(isValidValueName("a\\b"));
    EXPECT_FALSE(isValidValueName("a\nb"));
    EXPECT_FALSE(isValidValueName("a\0b"s));
    EXPECT_FALSE(isValidValueName(std::string(16384, 'x')));
}

} // namespace
} // namespace tarvo::platform
