// A sink that is late tells so, and the transform makes fewer frames and passes the word on.

#include "tests/graph/TransformGraph.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>

namespace tarvo::tests {
namespace {

using namespace TarvoVideoTransformLib;

constexpr REFERENCE_TIME oneSecond = 10'000'000;

class GraphQuality : public CTransformGraph {
protected:
    /// Says of every frame how late it was, before the next can be made.
    void makeSinkLate(REFERENCE_TIME lateness) {
        sink->onFrame = [this, lateness](const Delivery& frame) {
            Quality quality{};
            quality.Type = lateness > 0 ? Famine : Flood;
            quality.Proportion = 500;
            quality.Late = lateness;
            quality.TimeStamp = frame.start.value_or(0);
            EXPECT_EQ(system.tellQuality(*sink, *filter, quality), S_OK);
        };
    }
    double frameRate() {
        double rate = -1.0;
        EXPECT_EQ(transform->get_OutputFrameRate(&rate), S_OK);
        return rate;
    }
    static std::vector<std::int64_t> durationsOf(const std::vector<Delivery>& frames) {
        std::vector<std::int64_t> durations;
        for (const Delivery& frame : frames)
            durations.push_back(frame.stop.value_or(0) - frame.start.value_or(0));
        return durations;
    }
    /// That each frame but the first, which is at time 0, was told upstream with its lateness.
    void expectTold(REFERENCE_TIME lateness) {
        const std::vector<Quality> messages = source->messages();
        ASSERT_EQ(messages.size(), 39U);
        for (std::size_t i = 0; i < messages.size(); ++i) {
            ASSERT_EQ(messages[i].Type, lateness > 0 ? Famine : Flood);
            ASSERT_EQ(messages[i].Proportion, 1000);
            ASSERT_EQ(messages[i].Late, lateness);
            ASSERT_EQ(messages[i].TimeStamp, static_cast<REFERENCE_TIME>(i + 1) * frameDuration);
        }
    }
};

TEST_F(GraphQuality, lateFramesHalveTheRateDownToTheSources) {
    GraphPlan plan;
    plan.frameRate = 100.0;
    build(plan);
    makeSinkLate(oneSecond);
    const std::vector<std::int64_t> durations = durationsOf(play());
    EXPECT_EQ(frameRate(), 25.0);
    // The mean of the lateness over a second's frames has to come to a quarter of a second: of one second
    // each that takes 29 frames at 100 a second (1 - 0.99^29 = 0.253) and 15 at 50 (1 - 0.98^15 = 0.261). The
    // very first, at time 0, does not count.
    std::map<std::int64_t, std::ptrdiff_t> counts;
    for (const std::int64_t duration : durations)
        ++counts[duration];
    EXPECT_EQ(counts[100'000], 30);
    EXPECT_EQ(counts[200'000], 15);
    EXPECT_EQ(counts[400'000] + 45, static_cast<std::ptrdiff_t>(durations.size()));
    EXPECT_GT(counts[400'000], 20);
    EXPECT_TRUE(std::ranges::is_sorted(durations));
}

TEST_F(GraphQuality, anOptionKeepsTheRate) {
    GraphPlan plan;
    plan.frameRate = 100.0;
    plan.options = noOutputFpsDecimation;
    build(plan);
    makeSinkLate(oneSecond);
    expectTimes(play(), 4 * 40 + 1, 0, frameDuration / 4);
    EXPECT_EQ(frameRate(), 100.0);
}

TEST_F(GraphQuality, anAverageBelowAQuarterOfASecondIsBorne) {
    GraphPlan plan;
    plan.frameRate = 100.0;
    build(plan);
    makeSinkLate(oneSecond / 5);
    expectTimes(play(), 4 * 40 + 1, 0, frameDuration / 4);
    EXPECT_EQ(frameRate(), 100.0);
}

TEST_F(GraphQuality, isPassedOnToTheSource) {
    build({});
    makeSinkLate(oneSecond);
    expectTimes(play(), 41, 0, frameDuration);
    expectTold(oneSecond);
}

TEST_F(GraphQuality, isPassedOnThroughTheAccelerator) {
    build({});
    ASSERT_EQ(inject(), S_OK);
    makeSinkLate(-1000);
    expectTimes(play(), 41, 0, frameDuration);
    expectTold(-1000);
}

} // namespace
} // namespace tarvo::tests
