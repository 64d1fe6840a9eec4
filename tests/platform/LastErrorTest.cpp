#include "platform/LastError.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace tarvo::platform {
namespace {

TEST(LastError, isWhatWasSet) {
    setLastError(1234);
    EXPECT_EQ(lastError(), 1234U);
    setLastError(0);
    EXPECT_EQ(lastError(), 0U);
}

TEST(LastError, isEachThreadsOwn) {
    setLastError(0);
    std::promise<void> isSetElsewhere;
    std::promise<void> isSetHere;
    // Starting and joining a thread may change the value, so both hold theirs between the two.
    std::thread other([&] {
        setLastError(6);
        isSetElsewhere.set_value();
        isSetHere.get_future().wait();
    });
    isSetElsewhere.get_future().wait();
    EXPECT_NE(lastError(), 6U);
    isSetHere.set_value();
    other.join();
}

} // namespace
} // namespace tarvo::platform
