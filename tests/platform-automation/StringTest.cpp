#include "platform/InterfaceTypes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace tarvo::platform {
namespace {

using Text = std::basic_string<OLECHAR>;

Text contents(BSTR text) {
    return {text, SysStringLen(text)};
}

TEST(SysString, isACopyWithItsLength) {
    const Text source = OLESTR("Pan");
    BSTR text = SysAllocString(source.c_str());
    ASSERT_NE(text, nullptr);
    EXPECT_NE(text, source.c_str());
    EXPECT_EQ(SysStringLen(text), 3U);
    EXPECT_EQ(SysStringByteLen(text), 6U);
    EXPECT_EQ(contents(text), source);
    EXPECT_EQ(text[3], 0);
    SysFreeString(text);
}

TEST(SysString, keepsTheLengthInFrontOfTheText) {
    BSTR text = SysAllocString(OLESTR("Tilt"));
    ASSERT_NE(text, nullptr);
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text) - 4, 4);
    EXPECT_EQ(bytes, 8U);
    SysFreeString(text);
}

TEST(SysString, ofNothingIsNull) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
}

TEST(SysString, ofAnEmptyTextIsNone) {
    BSTR text = SysAllocString(OLESTR(""));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 0U);
    EXPECT_EQ(text[0], 0);
    SysFreeString(text);
}

TEST(SysString, mayHoldZerosAndPartOfAText) {
    BSTR text = SysAllocStringLen(OLESTR("a\0bcd"), 3);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(contents(text), Text(OLESTR("a\0b"), 3));
    EXPECT_EQ(text[3], 0);
    SysFreeString(text);
}

TEST(SysString, withoutASourceIsRoomWithATerminator) {
    BSTR text = SysAllocStringLen(nullptr, 4);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 4U);
    EXPECT_EQ(text[4], 0);
    SysFreeString(text);
}

TEST(SysString, ofBytesMayHaveAnOddLength) {
    BSTR text = SysAllocStringByteLen("abc", 3);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringByteLen(text), 3U);
    EXPECT_EQ(SysStringLen(text), 1U);
    EXPECT_EQ(std::memcmp(text, "abc\0", 5), 0) << "two bytes of terminator";
    SysFreeString(text);
}

TEST(SysString, ofMoreBytesThanCanBeCountedIsNull) {
    EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFU), nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x80000000U), nullptr);
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xFFFFFFFFU), nullptr);
}

TEST(SysString, isReplaced) {
    BSTR text = SysAllocString(OLESTR("old"));
    EXPECT_EQ(SysReAllocString(&text, OLESTR("the new one")), TRUE);
    EXPECT_EQ(contents(text), OLESTR("the new one"));
    EXPECT_EQ(SysReAllocStringLen(&text, OLESTR("short text"), 5), TRUE);
    EXPECT_EQ(contents(text), OLESTR("short"));
    SysFreeString(text);
}

TEST(SysString, isReplacedByAPartOfItself) {
    BSTR text = SysAllocString(OLESTR("pan and tilt"));
    EXPECT_EQ(SysReAllocStringLen(&text, text + 8, 4), TRUE);
    EXPECT_EQ(contents(text), OLESTR("tilt"));
    EXPECT_EQ(text[4], 0);
    SysFreeString(text);
}

TEST(SysString, keepsItsTextWhenOnlyItsLengthChanges) {
    BSTR text = SysAllocString(OLESTR("overview"));
    EXPECT_EQ(SysReAllocStringLen(&text, nullptr, 4), TRUE);
    EXPECT_EQ(contents(text), OLESTR("over"));
    EXPECT_EQ(text[4], 0);
    EXPECT_EQ(SysReAllocStringLen(&text, nullptr, 100), TRUE);
    EXPECT_EQ(contents(text).substr(0, 4), OLESTR("over"));
    EXPECT_EQ(text[100], 0);
    SysFreeString(text);
}

TEST(SysString, isMadeWhereThereWasNone) {
    BSTR text = nullptr;
    EXPECT_EQ(SysReAllocStringLen(&text, OLESTR("new"), 3), TRUE);
    EXPECT_EQ(contents(text), OLESTR("new"));
    SysFreeString(text);
}

} // namespace
} // namespace tarvo::platform
