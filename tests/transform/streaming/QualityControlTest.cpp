#include "transform/streaming/QualityControl.h"

#include "tests/transform/streaming/GraphFakes.h"
#include "tests/transform/streaming/StreamFakes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <random>
#include <thread>

namespace tarvo::transform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD enabled = 1;
constexpr auto least64 = std::numeric_limits<std::int64_t>::min();
constexpr auto most64 = std::numeric_limits<std::int64_t>::max();
const std::string linePrefix = "T:_:[7] - Quality Control - ";

/// A quality control in a filter whose first pin is connected to one that hears of quality.
struct Graph {
    CReadableLog log;
    CFakeQualitySink sink;
    CFakePin upstreamPin;
    CFakePin inputPin;
    CFakePin outputPin;
    CFakeEnumPins pins;
    CFakeFilter filter;
    CFramePacing pacing;
    StreamSettings settings;
    CCachedFrame cache;
    CQualityControl quality{filter, pacing, settings, cache, log.objectLog()};

    Graph() {
        upstreamPin.quality = &sink;
        inputPin.peer = &upstreamPin;
        pins.pins = {&inputPin, &outputPin};
        filter.pins = &pins;
        settings.inputFrameRate = 30.0;
        settings.outputFrameRate = 30.0;
    }
    ~Graph() {
        quality.SetStatus(0);
        expectNothingHeld(0);
    }
    void expectNothingHeld(int sinkReferences) {
        EXPECT_EQ(sink.references(), sinkReferences);
        EXPECT_EQ(upstreamPin.references(), 0);
        EXPECT_EQ(inputPin.references(), 0);
        EXPECT_EQ(outputPin.references(), 0);
        EXPECT_EQ(pins.references(), 0);
        EXPECT_EQ(filter.references(), 0);
    }
    /// An output frame of a new input at this time.
    void emitFrame(std::int64_t time) {
        pacing.holdInput(DMO_INPUT_DATA_BUFFERF_TIME, time, 0, 0.0);
        pacing.beginOutput(0.0);
        pacing.finishOutput();
    }
    void emitRepeat() {
        pacing.beginOutput(0.0);
        pacing.finishOutput();
    }
    bool isEnabled() const {
        DWORD flags = 99;
        EXPECT_EQ(quality.GetStatus(&flags), S_OK);
        EXPECT_LE(flags, 1U);
        return flags == 1;
    }
};

TEST(QualityControl, isSwitchedByStatus) {
    Graph graph;
    EXPECT_FALSE(graph.isEnabled());
    EXPECT_EQ(graph.quality.GetStatus(nullptr), E_POINTER);
    EXPECT_EQ(graph.quality.SetStatus(enabled), S_OK);
    EXPECT_TRUE(graph.isEnabled());
    graph.expectNothingHeld(1); // the upstream's quality control, and nothing of its own filter
    EXPECT_EQ(graph.quality.SetStatus(enabled), S_OK);
    graph.expectNothingHeld(1);
    EXPECT_EQ(graph.quality.SetStatus(2), S_OK); // another bit
    EXPECT_FALSE(graph.isEnabled());
    graph.expectNothingHeld(0);
    EXPECT_EQ(graph.quality.SetStatus(0xFFFFFFFFU), S_OK);
    EXPECT_TRUE(graph.isEnabled());
}

TEST(QualityControl, doesWithoutAnUpstreamPin) {
    const auto doesWithout = [](auto&& breakGraph) {
        Graph graph;
        breakGraph(graph);
        EXPECT_EQ(graph.quality.SetStatus(enabled), S_OK);
        EXPECT_TRUE(graph.isEnabled());
        graph.expectNothingHeld(0);
        graph.emitFrame(100);
        EXPECT_EQ(graph.quality.SetNow(50), S_OK);
        EXPECT_THAT(graph.sink.takeMessages(), IsEmpty());
        EXPECT_THAT(graph.log.takeLines(), IsEmpty());
        graph.expectNothingHeld(0);
    };
    doesWithout([](Graph& graph) { graph.filter.isFilter = false; });
    doesWithout([](Graph& graph) { graph.filter.pins = nullptr; });
    doesWithout([](Graph& graph) { graph.pins.pins.clear(); });
    doesWithout([](Graph& graph) { graph.inputPin.peer = nullptr; });
    doesWithout([](Graph& graph) { graph.upstreamPin.quality = nullptr; });
}

TEST(QualityControl, tellsUpstreamHowLateAFrameWas) {
    Graph graph;
    graph.quality.SetStatus(enabled);
    graph.emitFrame(1'000);
    EXPECT_EQ(graph.quality.SetNow(1'700), S_OK);
    auto messages = graph.sink.takeMessages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].sender, &graph.filter);
    EXPECT_EQ(messages[0].quality.Type, Famine);
    EXPECT_EQ(messages[0].quality.Proportion, 1000);
    EXPECT_EQ(messages[0].quality.Late, 700);
    EXPECT_EQ(messages[0].quality.TimeStamp, 1'000);
    graph.expectNothingHeld(1);
    graph.quality.SetNow(1'000); // on time counts as early
    graph.quality.SetNow(400);
    messages = graph.sink.takeMessages();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].quality.Type, Flood);
    EXPECT_EQ(messages[0].quality.Late, 0);
    EXPECT_EQ(messages[1].quality.Type, Flood);
    EXPECT_EQ(messages[1].quality.Late, -600);
    EXPECT_THAT(graph.log.takeLines(), IsEmpty());
}

TEST(QualityControl, isSilentBeforeAFrameAfterARepeatAndWhileOff) {
    Graph graph;
    graph.emitFrame(1'000);
    graph.quality.SetNow(2'000); // off
    graph.quality.SetStatus(enabled);
    graph.emitRepeat();
    graph.quality.SetNow(2'000);
    graph.pacing.flush();
    graph.quality.flush();
    graph.quality.SetNow(20'000'000); // nothing emitted
    EXPECT_THAT(graph.sink.takeMessages(), IsEmpty());
    EXPECT_THAT(graph.log.takeLines(), IsEmpty());
}

TEST(QualityControl, logsWhereNotifyingFails) {
    Graph graph;
    graph.quality.SetStatus(enabled);
    graph.emitFrame(1'000);
    graph.sink.result = E_NOTIMPL;
    EXPECT_EQ(graph.quality.SetNow(1'700), S_OK);
    const std::string line = "T:E:[7] - Quality Control - Failed notify upstream filter pin";
    EXPECT_THAT(graph.log.takeLines(), ElementsAre(line));
    graph.sink.takeMessages();
    graph.filter.isFilter = false; // taken out of its filter meanwhile
    EXPECT_EQ(graph.quality.SetNow(1'700), S_OK);
    EXPECT_THAT(graph.log.takeLines(), ElementsAre(line));
    EXPECT_THAT(graph.sink.takeMessages(), IsEmpty());
}

/// 300 ms late, again and again: the smoothed deviation is at 250 ms after a while.
int callsUntilLowered(Graph& graph, double rate, int most) {
    const std::int64_t time = graph.pacing.lastOutputTime();
    for (int i = 1; i <= most; ++i) {
        graph.quality.SetNow(time + 3'000'000);
        if (graph.settings.outputFrameRate != rate)
            return i;
    }
    return 0;
}

TEST(QualityControl, lowersTheRateOfALateStream) {
    Graph graph;
    graph.settings.outputFrameRate = 60.0;
    graph.quality.SetStatus(enabled);
    graph.emitFrame(1);
    graph.cache.allocate(10);
    // Smoothed over 60: 3,000,000 · (1 − (59/60)^n) ≥ 2,500,000 from n = ln 6 / ln(60/59) = 106.6 on.
    EXPECT_EQ(callsUntilLowered(graph, 60.0, 1000), 107);
    EXPECT_EQ(graph.settings.outputFrameRate, 30.0);
    EXPECT_TRUE(graph.cache.frame().empty());
    // One frame in 0.3 s; the deviation that led here, and the largest.
    EXPECT_THAT(
        graph.log.takeLines(),
        ElementsAre(linePrefix + "Timestamp deviation: 250 (300) ms, Output FPS (target): 3.3 (30.0)"));
    EXPECT_EQ(callsUntilLowered(graph, 30.0, 1000), 0); // as low as the input

    Graph kept;
    kept.settings.outputFrameRate = 60.0;
    kept.settings.options = 8;
    kept.quality.SetStatus(enabled);
    kept.emitFrame(1);
    kept.cache.allocate(10);
    EXPECT_EQ(callsUntilLowered(kept, 60.0, 1000), 0);
    EXPECT_EQ(kept.cache.frame().size(), 10U);
}

TEST(QualityControl, halvesAsLongAsTheRateIsAboveTheInputs) {
    Graph graph;
    graph.settings.inputFrameRate = 25.0;
    graph.settings.outputFrameRate = 200.0;
    graph.quality.SetStatus(enabled);
    graph.emitFrame(1);
    graph.cache.allocate(10);
    double rate = 200.0;
    for (const double next : {100.0, 50.0}) {
        ASSERT_GT(callsUntilLowered(graph, rate, 2000), 0);
        EXPECT_EQ(graph.settings.outputFrameRate, next);
        EXPECT_EQ(graph.cache.frame().size(), 10U);
        rate = next;
    }
    ASSERT_GT(callsUntilLowered(graph, 50.0, 2000), 0);
    EXPECT_EQ(graph.settings.outputFrameRate, 25.0);
    EXPECT_TRUE(graph.cache.frame().empty());

    Graph between; // half is below the input's
    between.settings.inputFrameRate = 40.0;
    between.settings.outputFrameRate = 60.0;
    between.quality.SetStatus(enabled);
    between.emitFrame(1);
    ASSERT_GT(callsUntilLowered(between, 60.0, 2000), 0);
    EXPECT_EQ(between.settings.outputFrameRate, 40.0);
}

/// The rules over again, in the test's own words.
class CModel {
public:
    bool isEnabled = false;
    double outputRate = 0.0;
    double inputRate = 0.0;
    bool isDecimationOff = false;
    std::int64_t lastTime = 0;
    std::int32_t frames = 0;
    bool wasRepeat = false;
    bool isCacheFreed = false;

    std::vector<std::string> lines;
    std::vector<Quality> messages;

    void setNow(std::int64_t now) {
        if (!isEnabled || lastTime == 0)
            return;
        const std::int64_t deviation = now - lastTime; // in these tests within 32 bits
        const auto n = outputRate < 1.0 ? 32 : static_cast<std::int64_t>(outputRate);
        m_smoothed = m_smoothed + (deviation - m_smoothed) / n;
        if (deviation > m_maximum)
            m_maximum = deviation;
        bool isReduced = false;
        if (!isDecimationOff && m_smoothed >= 2'500'000 && outputRate != inputRate) {
            isReduced = true;
            outputRate *= 0.5;
            if (outputRate <= inputRate) {
                outputRate = inputRate;
                isCacheFreed = true;
            }
        }
        if (isReduced || now - m_reportTime > 10'000'000)
            report(now, isReduced);
        if (wasRepeat)
            return;
        Quality quality{};
        quality.Type = deviation < 1 ? Flood : Famine;
        quality.Proportion = 1000;
        quality.Late = outputRate == inputRate ? deviation : m_smoothed;
        quality.TimeStamp = lastTime;
        messages.push_back(quality);
    }

    void flush() {
        m_smoothed = 0;
        m_maximum = none;
        m_reportTime = 0;
        lastTime = 0;
        frames = 0;
    }

private:
    static constexpr std::int64_t none = -2147483648LL;

    void report(std::int64_t now, bool isReduced) {
        const double seconds = static_cast<double>(now - m_reportTime) / 1e7;
        const double measured = (frames - m_reportFrames) / seconds;
        char text[200];
        std::snprintf(text, sizeof(text), "Timestamp deviation: %d (%d) ms, Output FPS (target): %.1f (%.1f)",
                      static_cast<int>(m_smoothed / 10'000), static_cast<int>(m_maximum / 10'000), measured,
                      outputRate);
        lines.push_back(linePrefix + text);
        m_maximum = none;
        m_reportTime = now;
        m_reportFrames = frames;
        if (isReduced)
            m_smoothed = 0;
    }

    std::int64_t m_smoothed = 0;
    std::int64_t m_maximum = none;
    std::int64_t m_reportTime = 0;
    std::int32_t m_reportFrames = 0;
};

TEST(QualityControl, followsTheModelOverRandomSequences) {
    int reductions = 0;
    std::size_t messageCount = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random(seed);
        const std::vector<double> rates{0.0, 0.5, 1.0, 15.0, 25.0, 29.97, 30.0, 60.0, 90.0, 120.0, 1000.0};
        Graph graph;
        CModel model;
        model.inputRate = rates[random() % rates.size()];
        model.outputRate = graph.settings.outputFrameRate;
        graph.settings.inputFrameRate = model.inputRate;
        std::int64_t now = 0;
        std::int64_t lateness = 0;
        for (int i = 0; i < 1500; ++i) {
            switch (random() % 200) {
            case 0:
                model.isEnabled = random() % 8 != 0;
                graph.quality.SetStatus(model.isEnabled ? 1 : 0);
                break;
            case 1:
                model.flush();
                graph.pacing.flush();
                graph.quality.flush();
                break;
            case 2:
                model.isDecimationOff = random() % 3 == 0;
                graph.settings.options = model.isDecimationOff ? 8 | 4 : 1 | 2 | 4;
                break;
            case 3:
            case 4:
                model.outputRate = rates[random() % rates.size()];
                graph.settings.outputFrameRate = model.outputRate;
                break;
            case 5:
                lateness = static_cast<std::int64_t>(random() % 10'000'000) - 2'000'000;
                break;
            default:
                break;
            }
            now += 333'333;
            if (random() % 4 != 0) {
                graph.emitFrame(now);
                model.wasRepeat = false;
                model.lastTime = std::max(model.lastTime, now);
                ++model.frames;
            } else if (model.frames != 0) {
                graph.emitRepeat(); // without a duration it stays where it was
                model.wasRepeat = true;
                ++model.frames;
            }
            graph.cache.allocate(4);
            model.isCacheFreed = false;
            const double before = model.outputRate;
            const std::int64_t shown = now + lateness + static_cast<std::int64_t>(random() % 1'000'000);
            model.setNow(shown);
            ASSERT_EQ(graph.quality.SetNow(shown), S_OK);
            ASSERT_EQ(graph.settings.outputFrameRate, model.outputRate) << i;
            ASSERT_EQ(graph.cache.frame().empty(), model.isCacheFreed) << i;
            ASSERT_EQ(graph.log.takeLines(), std::exchange(model.lines, {})) << i;
            const auto messages = graph.sink.takeMessages();
            ASSERT_EQ(messages.size(), model.messages.size()) << i;
            for (std::size_t m = 0; m < messages.size(); ++m) {
                ASSERT_EQ(messages[m].quality.Type, model.messages[m].Type) << i;
                ASSERT_EQ(messages[m].quality.Proportion, model.messages[m].Proportion) << i;
                ASSERT_EQ(messages[m].quality.Late, model.messages[m].Late) << i;
                ASSERT_EQ(messages[m].quality.TimeStamp, model.messages[m].TimeStamp) << i;
            }
            messageCount += messages.size();
            model.messages.clear();
            reductions += before != model.outputRate ? 1 : 0;
            graph.expectNothingHeld(model.isEnabled ? 1 : 0);
            if (HasFailure())
                return;
        }
    }
    EXPECT_GT(reductions, 50);
    EXPECT_GT(messageCount, 10'000U);
}

TEST(QualityControl, reportsOncePerSecond) {
    Graph graph;
    graph.quality.SetStatus(enabled);
    for (int i = 1; i <= 30; ++i)
        graph.emitFrame(i * 333'333);
    graph.quality.SetNow(10'000'000); // exactly a second is not more than one
    EXPECT_THAT(graph.log.takeLines(), IsEmpty());
    graph.quality.SetNow(10'000'001);
    // 10 and 11 ticks late; thirty frames in a second.
    EXPECT_THAT(graph.log.takeLines(),
                ElementsAre(linePrefix + "Timestamp deviation: 0 (0) ms, Output FPS (target): 30.0 (30.0)"));
    graph.emitFrame(10'333'330);
    graph.quality.SetNow(20'000'001);
    EXPECT_THAT(graph.log.takeLines(), IsEmpty());
    graph.quality.SetNow(20'000'002);
    // 9,666,672 late in the second call and smoothed by 30 twice: (0 + 322222 + 311481) / 10,000.
    EXPECT_THAT(
        graph.log.takeLines(),
        ElementsAre(linePrefix + "Timestamp deviation: 63 (966) ms, Output FPS (target): 1.0 (30.0)"));
}

TEST(QualityControl, takesTheLowerHalfOfHugeDeviations) {
    Graph graph;
    graph.settings.options = 8;
    graph.quality.SetStatus(enabled);
    const auto lateFor = [&](std::int64_t frame, std::int64_t now) {
        graph.pacing.flush();
        graph.quality.flush();
        graph.emitFrame(frame);
        EXPECT_EQ(graph.quality.SetNow(now), S_OK);
        const auto messages = graph.sink.takeMessages();
        return messages.size() == 1 ? messages[0].quality.Late : 12345;
    };
    EXPECT_EQ(lateFor(1, 0x80000001LL), -2147483648LL);
    EXPECT_EQ(lateFor(1, 0x100000001LL), 0);
    EXPECT_EQ(lateFor(1, most64), -2);      // 0x7FFF…FFFE
    EXPECT_EQ(lateFor(1, least64), -1);     // 0x7FFF…FFFF after the wrap
    EXPECT_EQ(lateFor(most64, least64), 1); // −2⁶⁴ + 1
    EXPECT_EQ(lateFor(most64, -1), 0);
}

TEST(QualityControl, bearsRatesThatAreNone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double rate : {nan, infinity, -infinity, -5.0, 1e300, 1e-300}) {
        Graph graph;
        graph.settings.outputFrameRate = rate;
        graph.quality.SetStatus(enabled);
        graph.emitFrame(1);
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(graph.quality.SetNow(3'000'000), S_OK);
        EXPECT_EQ(graph.sink.takeMessages().size(), 200U);
        // Where the smoothing lets it come so far, the input's rate takes over.
        EXPECT_TRUE(rate >= 1.0 || graph.settings.outputFrameRate == 30.0) << rate;
    }
}

TEST(QualityControl, sharesTheStreamWithOtherThreads) {
    Graph graph;
    graph.quality.SetStatus(enabled);
    std::atomic<bool> isOver{false};
    std::thread renderer([&] {
        for (std::int64_t now = 1; !isOver; now += 100'000)
            EXPECT_EQ(graph.quality.SetNow(now), S_OK);
    });
    std::thread host([&] {
        for (int i = 0; !isOver; ++i) {
            graph.quality.SetStatus(i % 3 == 0 ? 0 : 1);
            graph.settings.outputFrameRate = i % 2 == 0 ? 60.0 : 0.0;
        }
    });
    int copies = 0;
    for (std::int64_t i = 0; i < 5'000; ++i) {
        graph.emitFrame(1 + i * 100);
        const auto room = graph.cache.allocate(64);
        std::fill(room.begin(), room.end(), std::byte{1});
        graph.emitRepeat();
        const auto frame = graph.cache.frame();
        copies += !frame.empty() && frame[63] == std::byte{1} ? 1 : 0;
        if (i % 100 == 99) {
            graph.pacing.flush();
            graph.quality.flush();
            graph.cache.free();
        }
    }
    isOver = true;
    renderer.join();
    host.join();
    EXPECT_GT(copies, 0);
    graph.quality.SetStatus(0);
    graph.expectNothingHeld(0);
}

} // namespace
} // namespace tarvo::transform
