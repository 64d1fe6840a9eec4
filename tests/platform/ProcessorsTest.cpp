#include "platform/Processors.h"

#include <gtest/gtest.h>

#include <thread>

namespace tarvo::platform {
namespace {

TEST(Processors, areAtLeastOneAndNoMoreThanThereAre) {
    EXPECT_GE(usableProcessors(), 1);
    EXPECT_LE(usableProcessors(), static_cast<int>(std::thread::hardware_concurrency()));
}

} // namespace
} // namespace tarvo::platform
