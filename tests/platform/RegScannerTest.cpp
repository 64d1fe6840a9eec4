#include "platform/registry/RegScanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarvo::platform {
namespace {

using Kind = RegStatement::Kind;
using testing::ElementsAre;

/// The kinds in order; that the statements together are the text is checked along the way.
std::vector<Kind> kindsOf(const std::string& text) {
    std::vector<Kind> kinds;
    CRegScanner scanner(text);
    std::size_t position = 0;
    for (RegStatement statement; scanner.next(statement); position = statement.end) {
        EXPECT_EQ(statement.begin, position);
        EXPECT_GT(statement.end, position);
        kinds.push_back(statement.kind);
    }
    EXPECT_EQ(position, text.size());
    return kinds;
}

TEST(RegScanner, tellsStatementsApart) {
    EXPECT_THAT(kindsOf("Windows Registry Editor Version 5.00\r\n"
                        "\r\n"
                        "; a remark\r\n"
                        "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n"
                        "\"a\"=dword:1\r\n"
                        "\"a\"=word:1\r\n"
                        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\b]\r\n"
                        "\"a\"=dword:1\r\n"
                        "[HKEY_CURRENT_USER\\c]\r\n"
                        "\"a\"=dword:1"),
                ElementsAre(Kind::text, Kind::text, Kind::text, Kind::key, Kind::value, Kind::unknown,
                            Kind::deletedKey, Kind::unknown, Kind::foreignKey, Kind::unknown));
}

TEST(RegScanner, goesOnWithHexadecimalData) {
    EXPECT_THAT(kindsOf("[HKLM\\a]\n\"x\"=hex:01,\\\n  02,\\\n  03\n\"y\"=dword:1\n"),
                ElementsAre(Kind::key, Kind::value, Kind::value));
    EXPECT_THAT(kindsOf("[HKLM\\a]\n\"x\"=\"c:\\\\\"\n\"y\"=dword:1\n"),
                ElementsAre(Kind::key, Kind::value, Kind::value));
}

TEST(RegScanner, doesNotSwallowWhatFollowsABackslashTooMany) {
    EXPECT_THAT(kindsOf("[HKLM\\a]\n\"x\"=hex:01,\\\n\"y\"=dword:1\n"),
                ElementsAre(Kind::key, Kind::value, Kind::value));
    EXPECT_THAT(kindsOf("[HKLM\\a]\n\"x\"=hex:01,\\\n[HKLM\\b]\n\"y\"=hex:01,\\"),
                ElementsAre(Kind::key, Kind::value, Kind::key, Kind::value));
}

TEST(RegScanner, readsPathsOfKeys) {
    CRegScanner scanner("[HKEY_CLASSES_ROOT\\a[1]] ; note\n[HKLM\\x\\\\y]\n[HKLM\\open\n[]\n[-]\n");
    RegStatement statement;
    ASSERT_TRUE(scanner.next(statement));
    EXPECT_EQ(statement.kind, Kind::key);
    EXPECT_EQ(statement.path, "SOFTWARE\\Classes\\a[1]");
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(scanner.next(statement));
        EXPECT_EQ(statement.kind, Kind::foreignKey);
    }
    EXPECT_FALSE(scanner.next(statement));
}

TEST(RegScanner, knowsTheOlderDialect) {
    CRegScanner scanner("REGEDIT4\r\n[HKLM\\a]\n\"x\"=hex(2):41,42,00\n");
    RegStatement statement;
    while (scanner.next(statement)) {
    }
    EXPECT_EQ(scanner.dialect(), RegDialect::regedit4);
    EXPECT_EQ(statement.value.value->data, std::string("AB\0", 3));
}

TEST(RegScanner, toleratesAnything) {
    EXPECT_TRUE(kindsOf("").empty());
    EXPECT_THAT(kindsOf("\n\n"), ElementsAre(Kind::text, Kind::text));
    EXPECT_THAT(kindsOf(std::string("\0\0", 2)), ElementsAre(Kind::unknown));
    EXPECT_THAT(kindsOf("\"x\"=dword:1"), ElementsAre(Kind::unknown));
    EXPECT_THAT(kindsOf(std::string(100000, '[')), ElementsAre(Kind::foreignKey));
    EXPECT_THAT(kindsOf("[HKLM\\" + std::string(100000, '\\') + "]"), ElementsAre(Kind::foreignKey));
}

} // namespace
} // namespace tarvo::platform
