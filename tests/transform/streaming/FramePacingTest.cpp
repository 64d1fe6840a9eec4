#include "transform/streaming/FramePacing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <random>
#include <vector>

namespace tarvo::transform {
namespace {

// Wide enough for every sum of times; outside ISO C++, and so marked.
__extension__ using Wide = __int128;

constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr auto most = std::numeric_limits<std::int64_t>::max();

constexpr DWORD inTime = 2;
constexpr DWORD inLength = 4;
constexpr DWORD syncPoint = 1;
constexpr DWORD time = 2;
constexpr DWORD timeLength = 4;
constexpr DWORD incomplete = 0x01000000;

struct Output {
    std::int64_t time = 0;
    std::int64_t duration = 0;
    DWORD flags = 0;
    friend bool operator==(const Output&, const Output&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Output& output) {
        return stream << output.time << '+' << output.duration << " 0x" << std::hex << output.flags
                      << std::dec;
    }
};

Output step(CFramePacing& pacing, double outputRate) {
    const OutputTiming timing = pacing.beginOutput(outputRate);
    pacing.finishOutput();
    return {timing.time, timing.duration, timing.flags};
}

/// As a host does it: outputs are fetched while there are said to be more.
std::vector<Output> allOutputs(CFramePacing& pacing, double outputRate) {
    std::vector<Output> outputs;
    do {
        outputs.push_back(step(pacing, outputRate));
    } while ((outputs.back().flags & incomplete) != 0 && outputs.size() < 1000);
    return outputs;
}

TEST(FramePacing, makesTwoOfOneAtTwiceTheRate) {
    CFramePacing pacing;
    pacing.holdInput(inTime | inLength, 5'000'000, 333'333, 30.0);
    EXPECT_EQ(allOutputs(pacing, 60.0),
              (std::vector<Output>{{5'000'000, 166'666, syncPoint | time | timeLength | incomplete},
                                   {5'166'666, 166'666, syncPoint | time | timeLength}}));
    EXPECT_EQ(pacing.lastOutputTime(), 5'166'666);
    EXPECT_EQ(pacing.nextOutputTime(), 5'333'332);
    EXPECT_EQ(pacing.outputCount(), 2U);
    EXPECT_TRUE(pacing.wasLastOutputRepeat());
}

TEST(FramePacing, makesOneOfOneUpToTheInputsRate) {
    for (const double rate : {0.0, 15.0, 29.97, -3.0, std::numeric_limits<double>::quiet_NaN(), 1e-300}) {
        CFramePacing pacing;
        pacing.holdInput(inTime | inLength, 100, 333'333, 30.0);
        EXPECT_EQ(allOutputs(pacing, rate),
                  (std::vector<Output>{{100, 333'333, syncPoint | time | timeLength}}))
            << rate;
        EXPECT_FALSE(pacing.wasLastOutputRepeat());
    }
}

TEST(FramePacing, makesAnotherFrameWhereHalfOfOneIsLeft) {
    const auto countFor = [](std::int64_t inputDuration) {
        CFramePacing pacing;
        pacing.holdInput(inTime | inLength, 1'000, inputDuration, 0.0);
        return allOutputs(pacing, 100.0).size(); // 100,000 each
    };
    EXPECT_EQ(countFor(149'999), 1U);
    EXPECT_EQ(countFor(150'000), 2U);
    EXPECT_EQ(countFor(249'999), 2U);
    EXPECT_EQ(countFor(250'000), 3U);
}

TEST(FramePacing, takesADurationFromTheRateWhereItMust) {
    const auto durationOf = [](DWORD flags, std::int64_t duration, double rate) {
        CFramePacing pacing;
        pacing.holdInput(flags, 0, duration, rate);
        return step(pacing, 0.0).duration;
    };
    EXPECT_EQ(durationOf(0, 0, 25.0), 400'000);
    EXPECT_EQ(durationOf(inLength, 5'000, 25.0), 400'000); // 1 ms or less is distrusted
    EXPECT_EQ(durationOf(inLength, 10'000, 25.0), 400'000);
    EXPECT_EQ(durationOf(inLength, 10'001, 25.0), 10'001);
    EXPECT_EQ(durationOf(0, 333'333, 25.0), 400'000);
    EXPECT_EQ(durationOf(inLength, 5'000, 0.0), 0);
    EXPECT_EQ(durationOf(inLength, least, 0.0), 0);
    EXPECT_EQ(durationOf(inLength, most, 0.0), most);
    EXPECT_EQ(durationOf(0, 0, 1e-300), most);
    EXPECT_EQ(durationOf(0, 0, std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(durationOf(0, 0, std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(FramePacing, saysNothingOfTimesItDoesNotKnow) {
    CFramePacing pacing;
    pacing.holdInput(0, 777, 777, 0.0);
    EXPECT_EQ(allOutputs(pacing, 60.0), (std::vector<Output>{{0, 0, syncPoint}}));
    pacing.holdInput(0, 777, 777, 25.0);
    EXPECT_EQ(allOutputs(pacing, 60.0), (std::vector<Output>{{0, 166'666, syncPoint | timeLength}}));
    pacing.holdInput(inTime, 777, 0, 0.0);
    EXPECT_EQ(allOutputs(pacing, 60.0), (std::vector<Output>{{777, 0, syncPoint | time}}));
}

TEST(FramePacing, hasNothingToShowBeforeAnInput) {
    CFramePacing pacing;
    EXPECT_FALSE(pacing.hasOutput());
    pacing.holdInput(inTime, 5, 0, 25.0);
    EXPECT_TRUE(pacing.hasOutput());
    EXPECT_TRUE(pacing.isInputHeld());
    pacing.beginOutput(25.0);
    pacing.dropInput(); // rendering failed
    EXPECT_FALSE(pacing.hasOutput());
    EXPECT_EQ(pacing.lastOutputTime(), 5);
    pacing.holdInput(inTime, 400'005, 0, 25.0);
    step(pacing, 25.0);
    EXPECT_FALSE(pacing.isInputHeld());
    EXPECT_TRUE(pacing.hasOutput()); // a repeat
    pacing.flush();
    EXPECT_FALSE(pacing.hasOutput());
    EXPECT_EQ(pacing.outputCount(), 0U);
    EXPECT_EQ(pacing.lastOutputTime(), 0);
    EXPECT_EQ(pacing.nextOutputTime(), 0);
    pacing.holdInput(inTime, 7, 0, 25.0);
    EXPECT_EQ(step(pacing, 25.0).time, 7); // the time line starts anew
}

/// What becomes of one input, from the definition: frame k of n begins k durations after the first, and there
/// is another one as long as at least half a frame of the input's span is left.
std::vector<Output> expectedOutputs(std::int64_t inputTime, std::int64_t inputDuration, std::int64_t duration,
                                    std::int64_t lastTime) {
    const std::int64_t first = std::max(inputTime, lastTime);
    std::int64_t count = 1;
    if (duration > 0) {
        const std::int64_t left = inputTime + inputDuration - first - duration / 2;
        if (left >= 0)
            count = left / duration + 1;
    }
    std::vector<Output> outputs;
    for (std::int64_t k = 0; k < count; ++k) {
        Output output{first + k * duration, duration, syncPoint | time};
        if (duration > 0)
            output.flags |= timeLength;
        if (k + 1 < count)
            output.flags |= incomplete;
        outputs.push_back(output);
    }
    return outputs;
}

struct RatePair {
    std::int64_t inputDuration;
    double outputRate;
    std::int64_t outputDuration;
    std::size_t usualCount; ///< of outputs for an input on its own
};

TEST(FramePacing, followsTheModelForPairsOfRates) {
    const std::vector<RatePair> pairs{
        {333'333, 60.0, 166'666, 2}, {400'000, 60.0, 166'666, 2},  {333'333, 29.97, 333'333, 1},
        {666'666, 90.0, 111'111, 6}, {333'333, 90.0, 111'111, 3},  {400'000, 30.0, 333'333, 1},
        {400'000, 200.0, 50'000, 8}, {333'667, 59.94, 166'833, 2}, {1'000'000, 100.0, 100'000, 10}};
    for (const RatePair& pair : pairs) {
        SCOPED_TRACE(pair.outputRate);
        CFramePacing pacing;
        std::int64_t lastTime = 0;
        std::mt19937 random(7);
        std::uniform_int_distribution<std::int64_t> jitter(-40'000, 40'000);
        for (int i = 0; i < 300; ++i) {
            // A second back now and then; times that are early or late in between.
            std::int64_t inputTime = 10'000'000 + i * pair.inputDuration;
            if (i > 100)
                inputTime += jitter(random);
            if (i % 90 == 89)
                inputTime -= 10'000'000;
            pacing.holdInput(inTime | inLength, inputTime, pair.inputDuration, 0.0);
            const std::vector<Output> outputs = allOutputs(pacing, pair.outputRate);
            ASSERT_EQ(outputs, expectedOutputs(inputTime, pair.inputDuration, pair.outputDuration, lastTime))
                << "input " << i;
            if (i == 0) {
                EXPECT_EQ(outputs.size(), pair.usualCount);
            }
            lastTime = outputs.back().time;
        }
    }
}

TEST(FramePacing, goesOnFromTheLatestTimeWhenInputsJumpBack) {
    CFramePacing pacing;
    pacing.holdInput(inTime | inLength, 50'000'000, 333'333, 30.0);
    allOutputs(pacing, 60.0);
    pacing.holdInput(inTime | inLength, 10'000'000, 333'333, 30.0);
    EXPECT_EQ(allOutputs(pacing, 60.0),
              (std::vector<Output>{{50'166'666, 166'666, syncPoint | time | timeLength}}));
}

/// The steps in numbers that cannot overflow.
class CModel {
public:
    void hold(DWORD flags, std::int64_t inputTime, std::int64_t inputDuration) {
        m_isHeld = true;
        m_hasTime = (flags & inTime) != 0;
        m_time = m_hasTime ? inputTime : 0;
        m_duration = (flags & inLength) != 0 && inputDuration > 10'000 ? inputDuration : 0;
    }
    Output output(std::int64_t limit) {
        const Wide d = std::min<Wide>(limit, m_duration);
        Wide t = 0;
        if (m_hasTime)
            t = m_isHeld ? std::max(m_time, m_last) : std::min<Wide>(m_last + d, most);
        Output output{static_cast<std::int64_t>(t), static_cast<std::int64_t>(d), syncPoint};
        if (m_hasTime)
            output.flags |= time;
        if (d > 0) {
            output.flags |= timeLength;
            if (m_hasTime && m_time + m_duration - (t + d) >= d / 2)
                output.flags |= incomplete;
        }
        m_last = t;
        m_isHeld = false;
        return output;
    }

private:
    bool m_isHeld = false;
    bool m_hasTime = false;
    Wide m_time = 0;
    Wide m_duration = 0;
    Wide m_last = 0;
};

TEST(FramePacing, isExactForAnyNumbers) {
    std::mt19937_64 random(11);
    const std::vector<std::int64_t> corners{least,  least + 1, -10'000'000, -1,       0,        1,   9'999,
                                            10'000, 10'001,    333'333,     most / 2, most - 1, most};
    const auto any = [&]() -> std::int64_t {
        switch (random() % 3) {
        case 0:
            return corners[random() % corners.size()];
        case 1:
            return static_cast<std::int64_t>(random());
        default:
            return static_cast<std::int64_t>(random() % 10'000'000);
        }
    };
    const std::vector<std::pair<double, std::int64_t>> rates{
        {0.0, most}, {60.0, 166'666}, {1e-300, most}, {3e7, 0}, {0.001, 10'000'000'000}, {25.0, 400'000}};
    int incompleteCount = 0;
    CFramePacing pacing;
    CModel model;
    for (int i = 0; i < 200'000; ++i) {
        if (random() % 50 == 0) {
            pacing.flush();
            model = CModel();
        }
        if (random() % 3 != 0) {
            const DWORD flags = random() % 8;
            const std::int64_t inputTime = any();
            const std::int64_t inputDuration = any();
            pacing.holdInput(flags, inputTime, inputDuration, 0.0);
            model.hold(flags, inputTime, inputDuration);
        }
        const auto& [rate, limit] = rates[random() % rates.size()];
        const Output got = step(pacing, rate);
        ASSERT_EQ(got, model.output(limit)) << i;
        ASSERT_EQ(pacing.lastOutputTime(), got.time);
        ASSERT_EQ(pacing.nextOutputTime(),
                  static_cast<std::int64_t>(std::min<Wide>(Wide{got.time} + got.duration, most)));
        incompleteCount += (got.flags & incomplete) != 0 ? 1 : 0;
    }
    EXPECT_GT(incompleteCount, 1'000); // the comparison was seen from both sides
    EXPECT_LT(incompleteCount, 199'000);
}

TEST(FramePacing, choosesWhereAFrameComesFrom) {
    for (int bits = 0; bits < 16; ++bits) {
        const bool isHeld = (bits & 1) != 0;
        FrameCircumstances circumstances;
        circumstances.haveSettingsChanged = (bits & 2) != 0;
        circumstances.hasCachedFrame = (bits & 4) != 0;
        circumstances.hasEverHadImageSinks = (bits & 8) != 0;
        circumstances.inputFrameRate = 30.0;
        CFramePacing pacing;
        if (isHeld)
            pacing.holdInput(0, 0, 0, 30.0);
        const bool isCopy = bits == 4 || bits == 12;
        for (const double rate : {0.0, 15.0, 30.0, 60.0}) {
            circumstances.outputFrameRate = rate;
            FrameSource expected = FrameSource::renderTarget;
            if (isCopy)
                expected = FrameSource::cache;
            else if (rate == 60.0 && bits < 8)
                expected = FrameSource::renderTargetCached;
            EXPECT_EQ(pacing.frameSource(circumstances), expected) << bits << " at " << rate;
        }
    }
}

} // namespace
} // namespace tarvo::transform
