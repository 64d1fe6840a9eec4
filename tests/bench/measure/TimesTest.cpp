#include "bench/measure/Times.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <stdexcept>

namespace tarvo::bench {
namespace {

CTimes timesOf(std::initializer_list<double> runs) {
    CTimes times;
    for (const double run : runs) {
        times.add(run);
    }
    return times;
}

TEST(Times, BestIsTheShortestRunWhereverItCame) {
    EXPECT_EQ(timesOf({3.0, 1.5, 2.0}).best(), 1.5);
    EXPECT_EQ(timesOf({0.0, 7.0}).best(), 0.0);
}

TEST(Times, MedianIsTheRunInTheMiddle) {
    EXPECT_EQ(timesOf({9.0, 1.0, 4.0}).median(), 4.0);
    EXPECT_EQ(timesOf({5.0}).median(), 5.0);
}

TEST(Times, MedianOfAnEvenNumberIsTheMeanOfTheTwoInTheMiddle) {
    EXPECT_EQ(timesOf({10.0, 1.0, 4.0, 3.0}).median(), 3.5);
}

TEST(Times, OneDisturbedRunMovesNeither) {
    const CTimes times = timesOf({2.0, 2.0, 1000.0, 2.0, 2.0});
    EXPECT_EQ(times.best(), 2.0);
    EXPECT_EQ(times.median(), 2.0);
    EXPECT_EQ(times.count(), 5U);
}

TEST(Times, NothingMeasuredHasNoFigures) {
    const CTimes none;
    EXPECT_THROW(static_cast<void>(none.best()), std::logic_error);
    EXPECT_THROW(static_cast<void>(none.median()), std::logic_error);
}

TEST(Times, RefusesWhatIsNoTimeAndKeepsTheOthers) {
    CTimes times = timesOf({1.0});
    EXPECT_THROW(times.add(-0.1), std::invalid_argument);
    EXPECT_THROW(times.add(std::numeric_limits<double>::quiet_NaN()), std::invalid_argument);
    EXPECT_THROW(times.add(std::numeric_limits<double>::infinity()), std::invalid_argument);
    EXPECT_EQ(times.count(), 1U);
}

TEST(SpeedRatio, SaysHowManyTimesAsFastOwnWorkIs) {
    EXPECT_EQ(speedRatio(6.0, 2.0), 3.0);
    EXPECT_EQ(speedRatio(1.0, 4.0), 0.25);
    EXPECT_THROW(speedRatio(1.0, 0.0), std::logic_error);
}

} // namespace
} // namespace tarvo::bench
