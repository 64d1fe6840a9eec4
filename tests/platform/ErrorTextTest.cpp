#include "platform/ErrorText.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

std::optional<std::string> textOf(std::uint32_t code) {
    return systemErrorText(static_cast<std::int32_t>(code));
}

TEST(ErrorText, endsLikeALine) {
    for (const std::uint32_t code :
         {0U, 2U, 5U, 6U, 0x80004001U, 0x80004005U, 0x80070005U, 0x80070006U, 0x8007000EU, 0x80070057U}) {
        const std::optional<std::string> text = textOf(code);
        ASSERT_TRUE(text) << std::hex << code;
        EXPECT_TRUE(text->ends_with("\r\n")) << *text;
        EXPECT_GT(text->size(), 5U);
    }
}

TEST(ErrorText, isTheSameForAWrappedError) {
    EXPECT_EQ(textOf(0x80070005U), textOf(5));
    EXPECT_EQ(textOf(0x80070002U), textOf(2));
}

TEST(ErrorText, isAbsentForUnknownCodes) {
    EXPECT_EQ(textOf(0xA0001234U), std::nullopt);
    EXPECT_EQ(textOf(0x80040F01U), std::nullopt);
    EXPECT_EQ(textOf(0x8007FFFEU), std::nullopt);
}

} // namespace
} // namespace tarvo::platform
