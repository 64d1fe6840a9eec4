#include "platform/InterfaceTypes.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tarvo::platform {
namespace {

TEST(TaskMemory, isWritable) {
    auto* memory = static_cast<char*>(CoTaskMemAlloc(5));
    ASSERT_NE(memory, nullptr);
    std::memcpy(memory, "four", 5);
    EXPECT_STREQ(memory, "four");
    CoTaskMemFree(memory);
}

TEST(TaskMemory, ofNoBytesIsStillABlock) {
    void* memory = CoTaskMemAlloc(0);
    EXPECT_NE(memory, nullptr);
    CoTaskMemFree(memory);
}

TEST(TaskMemory, nullMayBeFreed) {
    CoTaskMemFree(nullptr);
}

TEST(TaskMemory, keepsItsContentsWhenItGrows) {
    auto* memory = static_cast<char*>(CoTaskMemRealloc(nullptr, 3));
    ASSERT_NE(memory, nullptr);
    std::memcpy(memory, "ab", 3);
    memory = static_cast<char*>(CoTaskMemRealloc(memory, 3000));
    ASSERT_NE(memory, nullptr);
    EXPECT_STREQ(memory, "ab");
    EXPECT_EQ(CoTaskMemRealloc(memory, 0), nullptr) << "frees it";
}

} // namespace
} // namespace tarvo::platform
