#include "module/RegistrationScript.h"

#include <gtest/gtest.h>

namespace tarvo::module {
namespace {

using Rule = ScriptKey::Rule;

std::vector<ScriptRoot> parse(std::string_view script) {
    return parseRegistrationScript(script, {{"PATH", "C:\\it's 100%\\x"}, {"ID", "{1}"}, {"NONE", ""}});
}

/// The only key of a script "HKCR { … }".
ScriptKey parseKey(const std::string& text) {
    const std::vector<ScriptRoot> roots = parse("HKCR { " + text + " }");
    EXPECT_EQ(roots.size(), 1U);
    EXPECT_EQ(roots.at(0).content.keys.size(), 1U);
    return roots.at(0).content.keys.at(0);
}

/// "line N: message", and checks the rest of the error.
std::string errorOf(std::string_view script) {
    try {
        parse(script);
    } catch (const CScriptError& error) {
        EXPECT_EQ(error.result(), HRESULT(0x8007000DU));
        const std::string text = error.what();
        EXPECT_TRUE(text.starts_with("line " + std::to_string(error.line()) + ": ")) << text;
        return text;
    }
    return "none";
}

TEST(RegistrationScript, readsKeysValuesAndRules) {
    const std::vector<ScriptRoot> roots = parse("HKCR\n{\n"
                                                "  A.B = s 'it''s'\n"
                                                "  {\n"
                                                "    val Merit = d 2097152\n"
                                                "    NoRemove c = s word { ForceRemove {G} }\n"
                                                "  }\n"
                                                "  Delete 'old one'\n"
                                                "}\n"
                                                "HKEY_LOCAL_MACHINE { val v = b 0aFF }");
    ScriptKey inner{Rule::forceRemove, "{G}", {}, {}};
    ScriptKey middle{Rule::noRemove, "c", {{"", std::string("word")}}, {inner}};
    ScriptKey outer{Rule::plain, "A.B", {{"", std::string("it's")}, {"Merit", 2097152U}}, {middle}};
    ScriptKey old{Rule::remove, "old one", {}, {}};
    const ScriptRoot classes{platform::classesRoot, {Rule::noRemove, "", {}, {outer, old}}};
    const ScriptRoot machine{
        platform::localMachine,
        {Rule::noRemove, "", {{"v", std::vector<std::byte>{std::byte{0x0A}, std::byte{0xFF}}}}, {}}};
    EXPECT_EQ(roots, (std::vector<ScriptRoot>{classes, machine}));
}

TEST(RegistrationScript, takesItsOwnWordsInEitherCase) {
    EXPECT_EQ(parse("hkcr { FORCEREMOVE a noremove b dElEtE c VAL d = S x }"),
              parse("HKEY_Classes_Root { ForceRemove a NoRemove b Delete c val d = s x }"));
}

TEST(RegistrationScript, takesQuotedWordsAsNames) {
    EXPECT_EQ(parseKey("'Delete'"), (ScriptKey{Rule::plain, "Delete", {}, {}}));
    EXPECT_EQ(parseKey("NoRemove 'val'"), (ScriptKey{Rule::noRemove, "val", {}, {}}));
    EXPECT_EQ(parseKey("'{' { '}' }").keys.at(0).name, "}");
    EXPECT_EQ(parseKey("a = s '='").values.at(0).data, ScriptData("="));
    EXPECT_EQ(parseKey("a = s ''").values.at(0).data, ScriptData(""));
}

TEST(RegistrationScript, replaces) {
    EXPECT_EQ(parseKey("a = s '%PATH%'").values.at(0).data, ScriptData("C:\\it's 100%\\x"));
    EXPECT_EQ(parseKey("a = s <%ID%%%%ID%>").values.at(0).data, ScriptData("<{1}%{1}>"));
    EXPECT_EQ(parseKey("ForceRemove %ID% = s x").name, "{1}");
    EXPECT_EQ(parseKey("a = s %NONE%").values.at(0).data, ScriptData(""));
}

TEST(RegistrationScript, readsNumbers) {
    EXPECT_EQ(parseKey("a = d 0").values.at(0).data, ScriptData(0U));
    EXPECT_EQ(parseKey("a = d '4294967295'").values.at(0).data, ScriptData(4294967295U));
    EXPECT_EQ(parseKey("a = d 0x200000").values.at(0).data, ScriptData(2097152U));
    EXPECT_EQ(parseKey("a = d 0XfFfFfFfF").values.at(0).data, ScriptData(4294967295U));
    for (const char* number : {"4294967296", "0x100000000", "-1", "+1", "1x", "x", "0x", "0x-1", "''", "1.0"})
        EXPECT_EQ(errorOf("HKCR { a = d " + std::string(number) + " }"), "line 1: no number of 32 bits");
}

TEST(RegistrationScript, readsBytes) {
    EXPECT_EQ(parseKey("a = b ''").values.at(0).data, ScriptData(std::vector<std::byte>{}));
    for (const char* bytes : {"0", "0g", "g0", "001", "'0 01'", "-1", "0x00"})
        EXPECT_EQ(errorOf("HKCR { a = b " + std::string(bytes) + " }"),
                  "line 1: bytes are pairs of hexadecimal digits");
}

TEST(RegistrationScript, saysWhatIsWrongAndWhere) {
    EXPECT_EQ(errorOf(""), "line 1: HKCR or HKLM should stand here");
    EXPECT_EQ(errorOf("\n\nHKCU { }"), "line 3: HKCR or HKLM should stand here");
    EXPECT_EQ(errorOf("'HKCR' { }"), "line 1: HKCR or HKLM should stand here");
    EXPECT_EQ(errorOf("HKCR { } more"), "line 1: HKCR or HKLM should stand here");
    EXPECT_EQ(errorOf("HKCR"), "line 1: a root needs its braces");
    EXPECT_EQ(errorOf("HKCR\nx"), "line 2: a root needs its braces");
    EXPECT_EQ(errorOf("HKCR\n{\na\n"), "line 4: the brace of line 2 is not closed");
    EXPECT_EQ(errorOf("HKCR { a = }"), "line 1: the type of the data, s, d or b, should stand here");
    EXPECT_EQ(errorOf("HKCR { a = 's' x }"), "line 1: the type of the data, s, d or b, should stand here");
    EXPECT_EQ(errorOf("HKCR { a = m x }"), "line 1: the type of the data, s, d or b, should stand here");
    EXPECT_EQ(errorOf("HKCR { a = s }"), "line 1: data should stand here");
    EXPECT_EQ(errorOf("HKCR { = s x }"), "line 1: the name of a key should stand here");
    EXPECT_EQ(errorOf("HKCR { NoRemove }"), "line 1: the name of a key should stand here");
    EXPECT_EQ(errorOf("HKCR { a = s x = s y }"), "line 1: the name of a key should stand here");
    EXPECT_EQ(errorOf("HKCR { { } }"), "line 1: the name of a key should stand here");
    EXPECT_EQ(errorOf("HKCR { val }"), "line 1: the name of a value should stand here");
    EXPECT_EQ(errorOf("HKCR { val v s x }"), "line 1: a value needs \"=\", its type and its data");
    EXPECT_EQ(errorOf("HKCR { val '' = s x }"), "line 1: names are 1 to 255 printable ASCII characters");
    EXPECT_EQ(errorOf("HKCR { %NONE% }"), "line 1: names are 1 to 255 printable ASCII characters");
    EXPECT_EQ(errorOf("HKCR { \xC3\xA4 }"), "line 1: names are 1 to 255 printable ASCII characters");
    EXPECT_EQ(errorOf("HKCR { " + std::string(256, 'n') + " }"),
              "line 1: names are 1 to 255 printable ASCII characters");
    EXPECT_EQ(errorOf("HKCR { a\\b }"),
              "line 1: a key's name has no backslash: each level is a key of its own");
    EXPECT_EQ(errorOf("HKCR { 'a\n' }"), "line 1: a quoted text does not end");
    EXPECT_EQ(errorOf("HKCR { 'a"), "line 1: a quoted text does not end");
    EXPECT_EQ(errorOf("HKCR { 'a'b }"), "line 1: no space behind a quoted text");
    EXPECT_EQ(errorOf("HKCR { a'b' }"), "line 1: a quote inside a word");
    EXPECT_EQ(errorOf("HKCR { a = s '%MODULE%' }"), "line 1: nothing known to replace %MODULE% by");
    EXPECT_EQ(errorOf("HKCR { a = s '%PATH' }"), "line 1: a percent sign without its second one");
    EXPECT_EQ(errorOf("HKCR { a = s 100% }"), "line 1: a percent sign without its second one");
    EXPECT_EQ(errorOf(std::string_view("HKCR { a\0b }", 13)), "line 1: a control character");
    EXPECT_EQ(errorOf("HKCR { 'a\tb' }"), "line 1: a control character");
}

TEST(RegistrationScript, nestsToALimit) {
    const auto nested = [](int keys) {
        std::string script = "HKCR { ";
        for (int level = 0; level < keys; ++level)
            script += "k { ";
        for (int level = 0; level <= keys; ++level)
            script += "} ";
        return script;
    };
    EXPECT_EQ(errorOf(nested(63)), "none");
    EXPECT_EQ(errorOf(nested(64)), "line 1: too many levels");
    EXPECT_EQ(errorOf(nested(100000)), "line 1: too many levels");
}

} // namespace
} // namespace tarvo::module
