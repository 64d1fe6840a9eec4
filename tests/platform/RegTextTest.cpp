#include "platform/registry/RegText.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

using namespace std::string_literals;
using Encoding = RegText::Encoding;

TEST(RegText, readsPlainBytesAsTheyStand) {
    // A byte that is no UTF-8 is the user's own business.
    const std::string bytes = "a\r\n\xE4\n";
    const RegText text = decodeRegText(bytes);
    EXPECT_EQ(text.encoding, Encoding::utf8);
    EXPECT_EQ(text.text, bytes);
    EXPECT_EQ(encodeRegText(text), bytes);
}

TEST(RegText, readsUtf8WithAMark) {
    const RegText text = decodeRegText("\xEF\xBB\xBFREGEDIT4");
    EXPECT_EQ(text.encoding, Encoding::utf8WithMark);
    EXPECT_EQ(text.text, "REGEDIT4");
    EXPECT_EQ(encodeRegText(text), "\xEF\xBB\xBFREGEDIT4");
}

TEST(RegText, readsUtf16) {
    const std::string bytes = "\xFF\xFEW\0\r\0\n\0\xAC\x20"s;
    const RegText text = decodeRegText(bytes);
    EXPECT_EQ(text.encoding, Encoding::utf16LittleEndian);
    EXPECT_EQ(text.text, "W\r\n\xE2\x82\xAC");
    EXPECT_EQ(encodeRegText(text), bytes);
}

TEST(RegText, toleratesTheShortest) {
    EXPECT_EQ(decodeRegText("").text, "");
    EXPECT_EQ(decodeRegText("\xFF").text, "\xFF");
    EXPECT_EQ(decodeRegText("\xFF\xFE").text, "");
    EXPECT_EQ(decodeRegText("\xFF\xFE\x41").text, "");
    EXPECT_EQ(decodeRegText("\xEF\xBB\xBF").text, "");
}

} // namespace
} // namespace tarvo::platform
