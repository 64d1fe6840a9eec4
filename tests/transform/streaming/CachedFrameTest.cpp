#include "transform/streaming/CachedFrame.h"

#include <gtest/gtest.h>

#include <limits>

namespace tarvo::transform {
namespace {

TEST(CachedFrame, keepsOneFrameUntilItIsFreed) {
    CCachedFrame cache;
    EXPECT_TRUE(cache.frame().empty());
    const auto room = cache.allocate(100);
    ASSERT_EQ(room.size(), 100U);
    EXPECT_EQ(room[99], std::byte{0});
    room[99] = std::byte{5};
    EXPECT_EQ(cache.allocate(100).data(), room.data());
    EXPECT_EQ(cache.frame()[99], std::byte{5});
    EXPECT_EQ(cache.allocate(50).size(), 50U);
    cache.free();
    EXPECT_TRUE(cache.frame().empty());
}

TEST(CachedFrame, isGoneAfterARequest) {
    CCachedFrame cache;
    cache.allocate(10)[0] = std::byte{5};
    cache.requestFree();
    EXPECT_TRUE(cache.frame().empty());
    cache.allocate(10)[0] = std::byte{6};
    EXPECT_EQ(cache.frame()[0], std::byte{6}); // one request, one frame
    cache.requestFree();
    EXPECT_EQ(cache.allocate(10)[0], std::byte{0});
}

TEST(CachedFrame, isEmptyWithoutMemory) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    CCachedFrame cache;
    EXPECT_TRUE(cache.allocate(std::numeric_limits<std::ptrdiff_t>::max()).empty());
    EXPECT_TRUE(cache.frame().empty());
    EXPECT_EQ(cache.allocate(4).size(), 4U);
#else
    GTEST_SKIP() << "the sanitizers end the program for such a request";
#endif
}

} // namespace
} // namespace tarvo::transform
