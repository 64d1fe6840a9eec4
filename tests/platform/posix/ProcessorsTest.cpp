#include "platform/Processors.h"

#include <gtest/gtest.h>

#include <sched.h>

namespace tarvo::platform {
namespace {

TEST(Processors, areThoseThatTheProcessIsBoundTo) {
    cpu_set_t before;
    CPU_ZERO(&before);
    ASSERT_EQ(::sched_getaffinity(0, sizeof(before), &before), 0);
    EXPECT_EQ(usableProcessors(), CPU_COUNT(&before));
    int first = 0;
    while (!CPU_ISSET(first, &before))
        ++first;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    ASSERT_EQ(::sched_setaffinity(0, sizeof(one), &one), 0);
    EXPECT_EQ(usableProcessors(), 1);
    EXPECT_EQ(::sched_setaffinity(0, sizeof(before), &before), 0);
}

} // namespace
} // namespace tarvo::platform
