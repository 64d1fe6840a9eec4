#include "platform/registry/RegValue.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

using namespace std::string_literals;

/// Types by number: 1 text, 2 expandable text, 3 bytes, 4 number, 7 several texts.
RegistryValue valueOf(std::string_view statement, RegDialect dialect = RegDialect::version5) {
    const std::optional<RegValueLine> line = parseRegValue(statement, dialect);
    if (!line || !line->value) {
        ADD_FAILURE() << statement;
        return {99, ""};
    }
    return *line->value;
}

TEST(RegValue, readsNames) {
    EXPECT_EQ(parseRegValue("\"DBGView\"=dword:1", RegDialect::version5)->name, "DBGView");
    EXPECT_EQ(parseRegValue("@=\"x\"", RegDialect::version5)->name, "");
    EXPECT_EQ(parseRegValue(R"("a\\b\"c"="x")", RegDialect::version5)->name, "a\\b\"c");
    EXPECT_EQ(parseRegValue("  \"a=b\" = \"x\"", RegDialect::version5)->name, "a=b");
}

TEST(RegValue, readsTexts) {
    EXPECT_EQ(valueOf(R"("p"="c:\\log.log")"), (RegistryValue{1, "c:\\log.log\0"s}));
    EXPECT_EQ(valueOf(R"("p"="say \"a;b\" " ; a remark)"), (RegistryValue{1, "say \"a;b\" \0"s}));
    EXPECT_EQ(valueOf(R"(@="")"), (RegistryValue{1, "\0"s}));
    // A backslash before anything else is one.
    EXPECT_EQ(valueOf(R"("p"="c:\log")"), (RegistryValue{1, "c:\\log\0"s}));
}

TEST(RegValue, readsNumbers) {
    EXPECT_EQ(valueOf("\"n\"=dword:000027e8"), (RegistryValue{4, "\xE8\x27\0\0"s}));
    EXPECT_EQ(valueOf("\"n\"=DWORD:FFFFFFFE ; -2"), (RegistryValue{4, "\xFE\xFF\xFF\xFF"}));
    EXPECT_EQ(valueOf("\"n\"=dword:2"), (RegistryValue{4, "\2\0\0\0"s}));
}

TEST(RegValue, readsBytes) {
    EXPECT_EQ(valueOf("\"b\"=hex:00,fF,a"), (RegistryValue{3, "\0\xFF\x0A"s}));
    EXPECT_EQ(valueOf("\"b\"=hex:"), (RegistryValue{3, ""}));
    EXPECT_EQ(valueOf("\"b\"=hex:01,\\\r\n  02,\\ \n 03 ; end"), (RegistryValue{3, "\1\2\3"}));
    EXPECT_EQ(valueOf("\"b\"=hex:01,"), (RegistryValue{3, "\1"}));
}

TEST(RegValue, readsBytesOfEveryType) {
    EXPECT_EQ(valueOf("\"b\"=hex(0):01"), (RegistryValue{0, "\1"}));
    EXPECT_EQ(valueOf("\"b\"=hex(b):01,00"), (RegistryValue{11, "\1\0"s}));
    EXPECT_EQ(valueOf("\"b\"=hex(4):01,02,03,04"), (RegistryValue{4, "\1\2\3\4"}));
    EXPECT_EQ(valueOf("\"b\"=hex(ffff0007):01"), (RegistryValue{0xFFFF0007U, "\1"}));
}

TEST(RegValue, readsTextsWrittenAsBytes) {
    EXPECT_EQ(valueOf("\"t\"=hex(2):25,00,ac,20,00,00"), (RegistryValue{2, "%\xE2\x82\xAC\0"s}));
    EXPECT_EQ(valueOf("\"t\"=hex(2):25,54,00", RegDialect::regedit4), (RegistryValue{2, "%T\0"s}));
    EXPECT_EQ(valueOf("\"t\"=hex(7):61,00,00,00,62,00,00,00,00,00"), (RegistryValue{7, "a\0b\0\0"s}));
    // Readers rely on the terminator, so it is there even where the file has none.
    EXPECT_EQ(valueOf("\"t\"=hex(1):61,00"), (RegistryValue{1, "a\0"s}));
    EXPECT_EQ(valueOf("\"t\"=hex(1):"), (RegistryValue{1, "\0"s}));
    EXPECT_EQ(valueOf("\"t\"=hex(1):61,00,62"), (RegistryValue{1, "a\0"s}));
}

TEST(RegValue, readsDeletions) {
    for (const char* statement : {"\"a\"=-", "\"a\" = - ; gone"}) {
        const std::optional<RegValueLine> line = parseRegValue(statement, RegDialect::version5);
        ASSERT_TRUE(line);
        EXPECT_EQ(line->name, "a");
        EXPECT_FALSE(line->value);
    }
}

TEST(RegValue, refusesWhatItDoesNotUnderstand) {
    for (const char* statement : {"",
                                  "a=1",
                                  "\"a\"",
                                  "\"a",
                                  "\"a\"=",
                                  "\"a\"=x",
                                  R"("a"="b)",
                                  R"("a"="b" c)",
                                  "\"a\"=\"b\nc\"",
                                  "\"a\"=dword:",
                                  "\"a\"=dword:0x2",
                                  "\"a\"=dword:123456789",
                                  "\"a\"=dword:-1",
                                  "\"a\"=dword:1 2",
                                  "\"a\"=hex",
                                  "\"a\"=hex(",
                                  "\"a\"=hex():01",
                                  "\"a\"=hex(2:01",
                                  "\"a\"=hex:123",
                                  "\"a\"=hex:1,,2",
                                  "\"a\"=hex:1 2",
                                  "\"a\"=hex:zz",
                                  "\"a\"=hex(123456789):1",
                                  "\"a\"=-1",
                                  "@",
                                  "=\"x\"",
                                  R"("a\"="b")"})
        EXPECT_FALSE(parseRegValue(statement, RegDialect::version5)) << statement;
}

TEST(RegValue, tellsWhereTheDataBegins) {
    EXPECT_EQ(regDataStart("\"a\"=hex"), 4U);
    EXPECT_EQ(regDataStart(" @ = x"), 5U);
    EXPECT_EQ(regDataStart("; \"a\"=hex"), std::string_view::npos);
}

std::string written(std::string_view name, const RegistryValue& value,
                    RegDialect dialect = RegDialect::version5) {
    return formatRegValue(name, value, dialect, "\r\n");
}

TEST(RegValue, writesEachType) {
    EXPECT_EQ(written("p", {1, "c:\\a \"b\"\0"s}), R"("p"="c:\\a \"b\"")");
    EXPECT_EQ(written("", {1, "\0"s}), "@=\"\"");
    EXPECT_EQ(written("a\\\"", {4, "\xE8\x27\0\0"s}), R"("a\\\""=dword:000027e8)");
    EXPECT_EQ(written("b", {3, "\0\xFF"s}), "\"b\"=hex:00,ff");
    EXPECT_EQ(written("b", {3, ""}), "\"b\"=hex:");
    EXPECT_EQ(written("e", {2, "%T\0"s}), "\"e\"=hex(2):25,00,54,00,00,00");
    EXPECT_EQ(written("e", {2, "%T\0"s}, RegDialect::regedit4), "\"e\"=hex(2):25,54,00");
    EXPECT_EQ(written("q", {11, "\1\2"}), "\"q\"=hex(b):01,02");
    EXPECT_EQ(written("d", {4, "\1\2"}), "\"d\"=hex(4):01,02");
}

TEST(RegValue, writesTextsThatQuotesCannotHoldAsBytes) {
    EXPECT_EQ(written("t", {1, "a\n\0"s}), "\"t\"=hex(1):61,00,0a,00,00,00");
    EXPECT_EQ(written("t", {1, "a\0b\0"s}), "\"t\"=hex(1):61,00,00,00,62,00,00,00");
}

TEST(RegValue, readsWhatItWrites) {
    std::string every;
    for (int i = 0; i < 256; ++i)
        every += static_cast<char>(i);
    for (const RegDialect dialect : {RegDialect::version5, RegDialect::regedit4}) {
        for (const RegistryValue& value :
             {RegistryValue{3, every}, RegistryValue{0x12345678, every},
              RegistryValue{1, std::string(300, 'x') + '\0'}, RegistryValue{2, "\xE2\x82\xAC%A%\0"s},
              RegistryValue{1, "\r\n\0"s}, RegistryValue{7, "a\0\0"s}}) {
            const std::string line = written("name", value, dialect);
            EXPECT_EQ(valueOf(line, dialect), value) << line;
        }
    }
    EXPECT_NE(written("name", {3, every}).find(",\\\r\n  "), std::string::npos);
}

} // namespace
} // namespace tarvo::platform
