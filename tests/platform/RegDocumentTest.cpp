#include "platform/registry/RegDocument.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

using namespace std::string_literals;

constexpr const char* tarvo = "SOFTWARE\\Tarvo";

const RegistryValue one{4, "\1\0\0\0"s};

/// Null if there is no such value.
const RegistryValue* find(const CRegistryTree& tree, std::string_view path, std::string_view name) {
    const CRegistryTree::Key* const key = tree.find(path);
    if (key == nullptr)
        return nullptr;
    const auto value = key->values.find(name);
    return value == key->values.end() ? nullptr : &value->second;
}

TEST(RegDocument, isReadFromTopToBottom) {
    const CRegDocument document("REGEDIT4\n"
                                "[HKLM\\a]\n\"x\"=dword:1\n\"y\"=dword:1\n\"X\"=dword:2\n"
                                "[HKLM\\b\\c]\n@=\"gone\"\n"
                                "[-HKLM\\b\\c]\n@=\"not for this key\"\n"
                                "[HKLM\\A]\n\"y\"=-\n\"z\"=\"z\"\n");
    const CRegistryTree tree = document.tree();
    ASSERT_NE(find(tree, "a", "x"), nullptr);
    EXPECT_EQ(*find(tree, "a", "x"), (RegistryValue{4, "\2\0\0\0"s}));
    EXPECT_EQ(find(tree, "a", "y"), nullptr);
    EXPECT_NE(find(tree, "a", "z"), nullptr);
    EXPECT_NE(tree.find("b"), nullptr);
    EXPECT_EQ(tree.find("b\\c"), nullptr);
}

TEST(RegDocument, joinsTheTwoNamesOfTheClasses) {
    const CRegistryTree tree = CRegDocument("[HKEY_CLASSES_ROOT\\CLSID]\n\"a\"=\"1\"\n"
                                            "[HKEY_LOCAL_MACHINE\\Software\\classes\\clsid]\n\"b\"=\"2\"\n")
                                   .tree();
    EXPECT_NE(find(tree, "SOFTWARE\\Classes\\CLSID", "a"), nullptr);
    EXPECT_NE(find(tree, "SOFTWARE\\Classes\\CLSID", "b"), nullptr);
}

TEST(RegDocument, beginsWithAHeader) {
    CRegDocument document;
    document.setValue(tarvo, "DBGView", one);
    EXPECT_EQ(document.bytes(), "Windows Registry Editor Version 5.00\r\n"
                                "\r\n"
                                "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo]\r\n"
                                "\"DBGView\"=dword:00000001\r\n");
}

constexpr const char* lived = "; Ours.\n"
                              "REGEDIT4\n"
                              "\n"
                              "[HKEY_CURRENT_USER\\Other]\n"
                              "\"DBGView\"=dword:9\n"
                              "\n"
                              "; How much is logged.\n"
                              "[HKEY_LOCAL_MACHINE\\Software\\TARVO]\n"
                              "\"dbgview\"=dword:0 ; off\n"
                              "\"odd\"=qword:12\n"
                              "\n"
                              "; End.";

std::string with(const std::string& text, const std::string& what, const std::string& instead) {
    std::string result = text;
    const std::size_t position = result.find(what);
    EXPECT_NE(position, std::string::npos) << what;
    return result.replace(position, what.size(), instead);
}

TEST(RegDocument, changesNothingButTheValue) {
    CRegDocument document(lived);
    EXPECT_EQ(document.bytes(), lived);
    document.setValue(tarvo, "DBGView", one);
    EXPECT_EQ(document.bytes(), with(lived, "\"dbgview\"=dword:0 ; off", "\"DBGView\"=dword:00000001"));
}

TEST(RegDocument, addsAValueBehindTheOthersOfItsKey) {
    CRegDocument document(lived);
    document.setValue(tarvo, "logpath", {1, "/tmp/a\0"s});
    EXPECT_EQ(document.bytes(), with(lived, "qword:12\n", "qword:12\n\"logpath\"=\"/tmp/a\"\n"));
}

TEST(RegDocument, addsAKeyAtTheEnd) {
    CRegDocument document(lived);
    document.makeKey("SOFTWARE\\Classes\\CLSID");
    EXPECT_EQ(document.bytes(), lived + "\n\n[HKEY_CLASSES_ROOT\\CLSID]\n"s);
    const std::string before = document.bytes();
    document.makeKey("software\\classes");
    EXPECT_EQ(document.bytes(), before);
}

TEST(RegDocument, writesTheDialectOfTheFile) {
    CRegDocument document(lived);
    document.setValue(tarvo, "e", {2, "%T\0"s});
    EXPECT_NE(document.bytes().find("\"e\"=hex(2):25,54,00\n"), std::string::npos);
}

TEST(RegDocument, removesEveryStatementOfAValue) {
    CRegDocument document("[HKLM\\a]\n\"x\"=dword:1\n\"y\"=dword:1\n\"X\"=-\n[HKLM\\b]\n\"x\"=\"b\"\n"
                          "[HKLM\\a]\n\"x\"=hex:01,\\\n 02\n");
    document.removeValue("A", "x");
    EXPECT_EQ(document.bytes(), "[HKLM\\a]\n\"y\"=dword:1\n[HKLM\\b]\n\"x\"=\"b\"\n[HKLM\\a]\n");
}

TEST(RegDocument, removesAKeyAndLeavesItsNeighboursRemarks) {
    CRegDocument document("[HKLM\\a\\b]\n\"x\"=dword:1\n\"y\"=what:1\n\n; About c.\n[HKLM\\c]\n"
                          "[HKLM\\a\\b\\d]\n[-HKLM\\A\\B]\n[HKCU\\a\\b]\n\"z\"=dword:1\n[HKLM\\a\\bb]\n");
    document.removeKey("a\\B");
    EXPECT_EQ(document.bytes(), "\n; About c.\n[HKLM\\c]\n[HKCU\\a\\b]\n\"z\"=dword:1\n[HKLM\\a\\bb]\n");
}

TEST(RegDocument, keepsTheKeyAboveARemovedOne) {
    CRegDocument document("[HKLM\\a\\b]\n");
    document.removeKey("a\\b");
    EXPECT_NE(document.tree().find("a"), nullptr);
    EXPECT_EQ(document.tree().find("a\\b"), nullptr);
}

TEST(RegDocument, makesADeletedKeyAnew) {
    CRegDocument document("[HKLM\\a\\b]\n\"x\"=dword:2\n[-HKLM\\a]\n");
    document.setValue("a\\b", "x", one);
    EXPECT_EQ(document.bytes(), "[HKLM\\a\\b]\n\"x\"=dword:2\n[-HKLM\\a]\n"
                                "\n[HKEY_LOCAL_MACHINE\\a\\b]\n\"x\"=dword:00000001\n");
    ASSERT_NE(find(document.tree(), "a\\b", "x"), nullptr);
}

TEST(RegDocument, setsTheValueThatIsInForce) {
    CRegDocument document("[HKLM\\a]\n\"x\"=dword:2\n[HKLM\\a]\n\"x\"=dword:3\n\"x\"=dword:4\n[HKLM\\b]\n");
    document.setValue("a", "x", one);
    EXPECT_EQ(document.bytes(), "[HKLM\\a]\n\"x\"=dword:2\n[HKLM\\a]\n\"x\"=dword:3\n"
                                "\"x\"=dword:00000001\n[HKLM\\b]\n");
}

TEST(RegDocument, survivesABackslashTooManyAtTheEnd) {
    CRegDocument document("[HKLM\\a]\n\"x\"=hex:01,\\");
    document.setValue("a", "y", one);
    ASSERT_NE(find(document.tree(), "a", "x"), nullptr);
    ASSERT_NE(find(document.tree(), "a", "y"), nullptr);
    EXPECT_EQ(find(document.tree(), "a", "x")->data, "\1");
}

TEST(RegDocument, keepsItsEncoding) {
    CRegDocument document("\xFF\xFE[\0H\0K\0L\0M\0\\\0a\0]\0\n\0"s);
    document.setValue("a", "\xE2\x82\xAC", {1, "\0"s});
    EXPECT_EQ(document.bytes(), "\xFF\xFE[\0H\0K\0L\0M\0\\\0a\0]\0\n\0\"\0\xAC\x20\"\0=\0\"\0\"\0\n\0"s);
    EXPECT_NE(find(document.tree(), "a", "\xE2\x82\xAC"), nullptr);
}

TEST(RegDocument, readsAnyBytes) {
    // A fixed linear congruential sequence, over an alphabet that favours what means something.
    const std::string alphabet = "[]-\\\"=@;:,\n\r0fHKLMhexdword()\0\xFF\xFE "s;
    std::uint32_t state = 1;
    for (int round = 0; round < 2000; ++round) {
        std::string text = round % 3 == 0 ? "[HKLM\\a]\n\"x\"=hex:" : "";
        for (int i = 0; i < 60; ++i) {
            state = state * 1664525U + 1013904223U;
            text += alphabet[(state >> 16) % alphabet.size()];
        }
        CRegDocument document(text);
        document.setValue(tarvo, "x", one);
        ASSERT_NE(find(document.tree(), tarvo, "x"), nullptr) << text;
        EXPECT_EQ(*find(document.tree(), tarvo, "x"), one) << text;
        document.removeKey(tarvo);
        EXPECT_EQ(document.tree().find(tarvo), nullptr) << text;
    }
}

TEST(RegDocument, readsLargeFilesInReasonableTime) {
    std::string text = "[HKLM\\a]\n\"long\"=hex:00";
    for (int i = 0; i < 300000; ++i)
        text += ",\\\n  01";
    text += '\n';
    for (int i = 0; i < 50000; ++i)
        text += "\"" + std::to_string(i) + "\"=dword:1\n";
    const CRegistryTree tree = CRegDocument(text).tree();
    EXPECT_EQ(tree.find("a")->values.size(), 50001U);
    EXPECT_EQ(find(tree, "a", "long")->data.size(), 300001U);
}

} // namespace
} // namespace tarvo::platform
