#include "diagnostics/ErrorText.h"

#include "platform/ErrorText.h"

#include <gtest/gtest.h>

namespace tarvo::diagnostics {
namespace {

constexpr std::int32_t code(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}

TEST(ErrorText, systemMessageLosesItsLineEnd) {
    const auto message = platform::systemErrorText(code(0x80070057U)); // E_INVALIDARG
    ASSERT_TRUE(message);
    ASSERT_GT(message->size(), 2U);
    EXPECT_EQ(errorText(code(0x80070057U)) + "\r\n", *message);
}

TEST(ErrorText, codesOfDispatchInterfacesAreCountedFrom0x200) {
    for (const std::uint32_t bits : {0x80040F01U, 0x8004FFFFU}) {
        ASSERT_FALSE(platform::systemErrorText(code(bits)));
        EXPECT_EQ(errorText(code(bits)), "IDispatch error #" + std::to_string((bits & 0xFFFFU) - 0x200U));
    }
}

TEST(ErrorText, otherCodesAreNamedInHexadecimal) {
    for (const auto& [bits, text] : {std::pair(0x8004FFFFU + 1U, "Unknown error 0x80050000"),
                                     std::pair(0xA0001234U, "Unknown error 0xA0001234"),
                                     std::pair(0x0ABCDEF1U, "Unknown error 0xABCDEF1")}) {
        ASSERT_FALSE(platform::systemErrorText(code(bits)));
        EXPECT_EQ(errorText(code(bits)), text);
    }
}

TEST(ErrorText, firstDispatchCodeIsAnUnknownError) {
    if (platform::systemErrorText(code(0x80040200U))) {
        GTEST_SKIP() << "this system has a text for it";
    }
    EXPECT_EQ(errorText(code(0x80040200U)), "Unknown error 0x80040200");
}

} // namespace
} // namespace tarvo::diagnostics
