#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/video/FrameRate.h"
#include "apps/tarvo-dewarp/video/InputPace.h"
#include "apps/tarvo-dewarp/video/SteadyPace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarvo::apps::video {
namespace {

using testing::ElementsAre;

constexpr FrameRate ntsc{30000, 1001};

TEST(FrameRate, placesFramesExactly) {
    EXPECT_EQ(startOf(0, {30, 1}), 0);
    // 1/30 s is 333,333.3 units of 100 ns.
    EXPECT_EQ(startOf(1, {30, 1}), 333'333);
    EXPECT_EQ(startOf(2, {30, 1}), 666'667);
    EXPECT_EQ(startOf(3, {30, 1}), 1'000'000);
    // 30000 frames of NTSC are 1001 s, a thousand times as many a thousand times as long.
    EXPECT_EQ(startOf(30'000, ntsc), 10'010'000'000);
    EXPECT_EQ(startOf(30'000'000, ntsc), 10'010'000'000'000);
    EXPECT_EQ(startOf(1, ntsc), 333'667); // 333,666.7
}

TEST(FrameRate, findsTheNearestFrame) {
    for (const FrameRate& rate : {FrameRate{30, 1}, FrameRate{25, 2}, ntsc}) {
        for (const std::int64_t index : {0, 1, 2, 29, 1'000'003, 90'000'001}) {
            EXPECT_EQ(indexAt(startOf(index, rate), rate), index);
        }
    }
    // A frame of 25 a second is 400,000 units long.
    EXPECT_EQ(indexAt(199'999, {25, 1}), 0);
    EXPECT_EQ(indexAt(200'001, {25, 1}), 1);
}

TEST(FrameRate, isReadFromTexts) {
    EXPECT_EQ(readFrameRate("--rate", "30"), (FrameRate{30, 1}));
    EXPECT_EQ(readFrameRate("--rate", "12.5"), (FrameRate{25, 2}));
    EXPECT_EQ(readFrameRate("--rate", "30000/1001"), ntsc);
    EXPECT_EQ(readFrameRate("--rate", "50/2"), (FrameRate{25, 1}));
    EXPECT_EQ(readFrameRate("--rate", "1000"), (FrameRate{1000, 1}));
    for (const char* const text : {"", "0", "-5", "fast", "nan", "inf", "1e300", "1001", "30/0", "0/1", "30/",
                                   "/2", "1/2/3", "2.5/1", "-30/-1", "99999999999/99999999999"}) {
        EXPECT_THROW(readFrameRate("--rate", text), UsageError) << text;
    }
}

/// How often each of the frames that begin at these times is written at 10 a second; the last lasts 0.1 s.
std::vector<std::int64_t> writtenAtTen(const std::vector<double>& starts) {
    CSteadyPace pace({10, 1});
    std::vector<std::int64_t> written;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const auto start = static_cast<std::int64_t>(starts[i] * 1e7);
        const std::int64_t repeats = pace.repeatsUntil(start, 1'000'000);
        if (i > 0) {
            written.push_back(repeats);
        }
    }
    written.push_back(pace.repeatsToEnd());
    return written;
}

TEST(SteadyPace, writesEachFrameOfASteadyStreamOnce) {
    EXPECT_THAT(writtenAtTen({0.0, 0.1, 0.2, 0.3}), ElementsAre(1, 1, 1, 1));
    EXPECT_THAT(writtenAtTen({0.0}), ElementsAre(1));
    // Wherever it begins.
    EXPECT_THAT(writtenAtTen({5.0, 5.1, 5.2}), ElementsAre(1, 1, 1));
}

TEST(SteadyPace, repeatsWhatIsShownForLonger) {
    EXPECT_THAT(writtenAtTen({0.0, 0.3, 0.4}), ElementsAre(3, 1, 1));
    // 0.04, 0.14 and 0.26 are nearest to 0, 1 and 3 tenths.
    EXPECT_THAT(writtenAtTen({0.04, 0.14, 0.26}), ElementsAre(1, 2, 1));
}

TEST(SteadyPace, leavesOutWhatIsReplacedAtOnce) {
    EXPECT_THAT(writtenAtTen({0.0, 0.02, 0.1}), ElementsAre(0, 1, 1));
}

TEST(SteadyPace, writesTheLastFrameUntilItsEnd) {
    CSteadyPace pace({10, 1});
    EXPECT_EQ(pace.repeatsToEnd(), 0); // none came
    EXPECT_EQ(pace.repeatsUntil(0, 5'000'000), 0);
    EXPECT_EQ(pace.repeatsToEnd(), 5);
    EXPECT_EQ(pace.repeatsUntil(5'000'000, 0), 5);
    EXPECT_EQ(pace.repeatsToEnd(), 1);
}

/// The numbers of the frames that are shown, of a steady stream of `count` frames.
std::vector<std::int64_t> shownOf(std::int64_t count, const FrameRate& input, const FrameRate& output) {
    CInputPace pace(output);
    std::vector<std::int64_t> shown;
    std::int64_t expected = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        const auto time = pace.place(startOf(i, input), startOf(i + 1, input) - startOf(i, input));
        if (time) {
            shown.push_back(i);
            // No gap and no overlap.
            EXPECT_EQ(time->start, startOf(expected, output));
            ++expected;
            EXPECT_EQ(*time->start + *time->duration, startOf(expected, output));
        }
    }
    return shown;
}

TEST(InputPace, showsWhatIsSeenAtEachMoment) {
    EXPECT_THAT(shownOf(8, {30, 1}, {15, 1}), ElementsAre(0, 2, 4, 6));
    // Moments 0, 0.1, 0.2, 0.3, 0.4: frames of 0.04 s number 0, 2 (0.08 … 0.12), 5, 7 and 10.
    EXPECT_THAT(shownOf(11, {25, 1}, {10, 1}), ElementsAre(0, 2, 5, 7, 10));
}

TEST(InputPace, endsWithTheInput) {
    EXPECT_EQ(shownOf(3000, {30, 1}, {15, 1}).size(), 1500U);
    EXPECT_EQ(shownOf(3000, {30, 1}, {10, 1}).size(), 1000U);
    EXPECT_EQ(shownOf(3000, ntsc, {30000, 2002}).size(), 1500U);
    EXPECT_EQ(shownOf(3000, {60, 1}, {25, 1}).size(), 1250U);
}

TEST(InputPace, toleratesTimesInMilliseconds) {
    CInputPace pace(FrameRate{15, 1});
    std::vector<std::int64_t> shown;
    const std::vector<std::int64_t> starts{0, 33, 67, 100, 133, 167, 200};
    for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
        if (pace.place(starts[i] * 10'000, (starts[i + 1] - starts[i]) * 10'000)) {
            shown.push_back(static_cast<std::int64_t>(i));
        }
    }
    EXPECT_THAT(shown, ElementsAre(0, 2, 4));
}

TEST(InputPace, givesALongFrameAllItsMoments) {
    CInputPace pace(FrameRate{10, 1});
    const auto time = pace.place(0, 5'000'000);
    ASSERT_TRUE(time);
    EXPECT_EQ(*time->start, 0);
    EXPECT_EQ(*time->duration, 5'000'000);
    EXPECT_FALSE(pace.place(4'000'000, 500'000)); // those are taken
}

TEST(InputPace, letsEverythingThroughWithoutARate) {
    CInputPace pace(std::nullopt);
    const auto time = pace.place(123, 456);
    ASSERT_TRUE(time);
    EXPECT_EQ(*time->start, 123);
    EXPECT_EQ(*time->duration, 456);
    EXPECT_EQ(pace.place(579, 0)->duration, std::nullopt);
}

} // namespace
} // namespace tarvo::apps::video
