#include "platform/Utf16.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

using namespace std::string_literals;

TEST(Utf16, convertsTextsOfEveryLength) {
    // One, two and three bytes, and the four of U+1D11E.
    const std::string narrow = "a\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9E";
    const std::u16string wide = {u'a', 0xE4, 0x20AC, 0xD834, 0xDD1E};
    EXPECT_EQ(utf16FromUtf8(narrow), wide);
    EXPECT_EQ(utf8FromUtf16(wide), narrow);
    EXPECT_EQ(utf16FromUtf8(""), u"");
    EXPECT_EQ(utf8FromUtf16(u""), "");
}

TEST(Utf16, keepsTheEndsOfTheRanges) {
    const std::u16string wide = {1, 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF};
    EXPECT_EQ(utf8FromUtf16(wide),
              "\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(utf16FromUtf8(utf8FromUtf16(wide)), wide);
}

TEST(Utf16, keepsUnpairedSurrogates) {
    const std::u16string wide = {u'a', 0xD834, u'b', 0xDD1E, 0xD834};
    EXPECT_EQ(utf16FromUtf8(utf8FromUtf16(wide)), wide);
}

TEST(Utf16, replacesBytesThatAreNoUtf8) {
    EXPECT_EQ(utf16FromUtf8("a\xFF\x62"), u"a\uFFFDb");
    // Cut off, a follower alone, a form longer than needed, beyond the last code point.
    EXPECT_EQ(utf16FromUtf8("\xE2\x82"), u"\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\x82z"), u"\uFFFDz");
    EXPECT_EQ(utf16FromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(Utf16, writesTheLowerByteFirst) {
    EXPECT_EQ(utf16BytesFromUtf8("a\xE2\x82\xAC"), "a\0\xAC\x20"s);
    EXPECT_EQ(utf8FromUtf16Bytes("a\0\xAC\x20"s), "a\xE2\x82\xAC");
    EXPECT_EQ(utf8FromUtf16Bytes("a\0b"s), "a");
}

} // namespace
} // namespace tarvo::platform
