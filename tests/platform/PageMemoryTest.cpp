#include "platform/PageMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>

namespace tarvo::platform {
namespace {

TEST(PageMemory, isZeroedWritableAndBeginsWithAPage) {
    for (const std::size_t bytes : {std::size_t{1}, std::size_t{4096}, std::size_t{3'000'001}}) {
        void* const pages = allocatePages(bytes);
        ASSERT_NE(pages, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pages) % 4096, 0U);
        const std::span<std::uint8_t> memory(static_cast<std::uint8_t*>(pages), bytes);
        EXPECT_EQ(std::count(memory.begin(), memory.end(), 0), static_cast<std::ptrdiff_t>(bytes));
        std::fill(memory.begin(), memory.end(), std::uint8_t{7});
        EXPECT_EQ(memory.back(), 7);
        releasePages(pages, bytes);
    }
}

TEST(PageMemory, moreThanThereIsIsRefused) {
    EXPECT_EQ(allocatePages(std::numeric_limits<std::size_t>::max() / 4), nullptr);
}

} // namespace
} // namespace tarvo::platform
