#include "platform/LocalTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace tarvo::platform {
namespace {

/// Milliseconds since some day, to compare times with.
long long milliseconds(const LocalTime& time) {
    const std::chrono::sys_days day = std::chrono::year(time.year) / time.month / time.day;
    return day.time_since_epoch().count() * 86'400'000LL + time.hour * 3'600'000LL + time.minute * 60'000LL +
           time.second * 1000LL + time.millisecond;
}

/// What the C library says.
LocalTime expected() {
    const std::time_t now = std::time(nullptr);
    const std::tm parts = *std::localtime(&now);
    return {
        parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec, 0};
}

TEST(LocalTime, isTheLocalClocks) {
    const long long before = milliseconds(expected());
    const LocalTime time = localTime();
    const long long after = milliseconds(expected());
    // The C library's clock has whole seconds, and advances with the system's timer.
    EXPECT_GE(milliseconds(time), before - 100);
    EXPECT_LT(milliseconds(time), after + 1100);
    EXPECT_GE(time.millisecond, 0);
    EXPECT_LE(time.millisecond, 999);
}

TEST(LocalTime, countsMilliseconds) {
    const long long before = milliseconds(localTime());
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    const long long passed = milliseconds(localTime()) - before;
    EXPECT_GE(passed, 100);
    EXPECT_LT(passed, 10'000);
}

} // namespace
} // namespace tarvo::platform
