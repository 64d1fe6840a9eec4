#include "platform/ErrorText.h"

#include <gtest/gtest.h>

namespace tarvo::platform {
namespace {

TEST(PosixErrorText, isWhatTheOtherSystemSays) {
    EXPECT_EQ(systemErrorText(static_cast<std::int32_t>(0x80004005U)), "Unspecified error\r\n");
    EXPECT_EQ(systemErrorText(static_cast<std::int32_t>(0x80070057U)), "The parameter is incorrect.\r\n");
    EXPECT_EQ(systemErrorText(0), "The operation completed successfully.\r\n");
}

TEST(PosixErrorText, knowsTheUsualResults) {
    for (const std::uint32_t code : {0x80004002U, 0x80004003U, 0x80004004U, 0x8000FFFFU, 0x80020003U,
                                     0x80040110U, 0x80040111U, 0x80040154U, 0x800401F0U}) {
        const std::optional<std::string> text = systemErrorText(static_cast<std::int32_t>(code));
        ASSERT_TRUE(text) << std::hex << code;
        EXPECT_TRUE(text->ends_with("\r\n")) << *text;
    }
}

} // namespace
} // namespace tarvo::platform
