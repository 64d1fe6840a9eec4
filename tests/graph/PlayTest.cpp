// A source, the transform in its filter and a sink: what comes out is what the transform makes of the same
// frames by itself, at the same times, however the graph is played.

#include "tests/graph/TransformGraph.h"

#include <chrono>
#include <ostream>
#include <string>
#include <thread>
#include <tuple>

namespace tarvo::tests {
namespace {

using namespace TarvoVideoTransformLib;

/// At the end of the stream the transform is asked for what it still has, and repeats its last frame.
constexpr std::size_t withRepeat(int frames) {
    return static_cast<std::size_t>(frames) + 1;
}

/// More than any sink takes while a test lasts.
constexpr int endless = 1'000'000;

struct NamedSubtype {
    const char* name;
    const GUID& subtype;
};
void PrintTo(const NamedSubtype& one, std::ostream* stream) {
    *stream << one.name;
}
constexpr NamedSubtype yv12{"Yv12", MEDIASUBTYPE_YV12};
constexpr NamedSubtype yuy2{"Yuy2", MEDIASUBTYPE_YUY2};
constexpr NamedSubtype rgb32{"Rgb32", MEDIASUBTYPE_RGB32};

struct NamedView {
    const char* name;
    LONG type;
};
void PrintTo(const NamedView& one, std::ostream* stream) {
    *stream << one.name;
}
constexpr NamedView views[] = {{"single", single},
                               {"quad", quad},
                               {"panoramaSingle", panoramaSingle},
                               {"panoramaDouble", panoramaDouble},
                               {"singleOverview", singleOverview},
                               {"custom", custom}};

using Formats = std::tuple<NamedView, NamedSubtype, NamedSubtype>;

class EveryFormatAndView : public CTransformGraph, public testing::WithParamInterface<Formats> {};

TEST_P(EveryFormatAndView, goThroughTheGraphAndTheAccelerator) {
    constexpr int frameCount = 300;
    const auto& [view, input, output] = GetParam();
    GraphPlan plan;
    plan.input = input.subtype;
    plan.output = output.subtype;
    plan.viewType = view.type;
    plan.frameCount = frameCount;
    build(plan);

    const std::vector<Delivery> first = play();
    expectTimes(first, withRepeat(frameCount), 0, frameDuration);
    ASSERT_FALSE(HasFailure());
    for (std::size_t i = 1; i < frameCount; ++i)
        ASSERT_TRUE(first[i].bytes != first[i - 1].bytes) << "frame " << i << " is the one before";
    EXPECT_TRUE(first[frameCount].bytes == first[frameCount - 1].bytes) << "no repeat";
    expectSame(first, driven(framesFrom(0)));

    ASSERT_EQ(inject(), S_OK);
    expectSame(play(), first);
}

INSTANTIATE_TEST_SUITE_P(Transform, EveryFormatAndView,
                         testing::Combine(testing::ValuesIn(views), testing::Values(yv12, yuy2, rgb32),
                                          testing::Values(yv12, rgb32)),
                         [](const testing::TestParamInfo<Formats>& formats) {
                             return std::string(std::get<0>(formats.param).name) +
                                    std::get<1>(formats.param).name + "To" + std::get<2>(formats.param).name;
                         });

/// Without and with the accelerator.
class Playing : public CTransformGraph, public testing::WithParamInterface<bool> {
protected:
    void buildAll(const GraphPlan& plan) {
        build(plan);
        if (GetParam()) {
            ASSERT_EQ(inject(), S_OK);
        }
    }
    /// So that it does not have to keep too many.
    void makeSinkSlow() {
        sink->onFrame = [](const Delivery&) { std::this_thread::sleep_for(std::chrono::milliseconds(2)); };
    }
};

INSTANTIATE_TEST_SUITE_P(Transform, Playing, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& accelerated) {
                             return std::string(accelerated.param ? "accelerated" : "plain");
                         });

TEST_P(Playing, beginsAnewAfterEachStop) {
    buildAll({});
    const std::vector<Delivery> expected = driven(framesFrom(0));
    expectTimes(expected, withRepeat(40), 0, frameDuration);
    for (int run = 0; run < 3; ++run)
        expectSame(play(), expected);
}

TEST_P(Playing, stopsMidwayAndBeginsAnew) {
    GraphPlan plan;
    plan.frameCount = endless;
    buildAll(plan);
    makeSinkSlow();
    for (int run = 0; run < 3; ++run) {
        ASSERT_GE(player->run(), S_OK);
        EXPECT_TRUE(sink->waitForFrames(5));
        EXPECT_GE(player->stop(), S_OK);
        const std::vector<Delivery> begun = sink->takeFrames();
        std::vector<Delivery> expected = driven(framesFrom(0, static_cast<int>(begun.size())));
        // By itself the transform repeats the last; here the stream had no end.
        expected.pop_back();
        expectSame(begun, expected);
        EXPECT_TRUE(sink->takeFrames().empty()) << "something came after the stop";
    }
    EXPECT_EQ(sink->ends(), 0);
}

TEST_P(Playing, aFlushLetsNothingOldThrough) {
    GraphPlan plan;
    plan.frameCount = endless;
    buildAll(plan);
    makeSinkSlow();
    ASSERT_GE(player->run(), S_OK);
    EXPECT_TRUE(sink->waitForFrames(5));
    source->seek(endless - 50);
    EXPECT_TRUE(player->waitForCompletion());
    EXPECT_GE(player->stop(), S_OK);
    EXPECT_EQ(sink->ends(), 1);
    const std::vector<Delivery> flushed = sink->takeFrames();
    expectTimes(flushed, withRepeat(50), (endless - 50) * frameDuration, frameDuration);
    expectSame(flushed, driven(framesFrom(endless - 50)));
}

TEST_P(Playing, aStreamWithoutFramesHasNothingButAnEnd) {
    GraphPlan plan;
    plan.frameCount = 0;
    buildAll(plan);
    EXPECT_TRUE(play().empty());
    EXPECT_TRUE(play().empty());
}

TEST_P(Playing, aSingleFrameComesAndIsRepeated) {
    GraphPlan plan;
    plan.frameCount = 1;
    buildAll(plan);
    const std::vector<Delivery> frames = play();
    expectTimes(frames, 2, 0, frameDuration);
    expectSame(frames, driven(framesFrom(0)));
}

TEST_P(Playing, moreFramesGoOutThanComeIn) {
    GraphPlan plan;
    plan.frameRate = 50.0;
    buildAll(plan);
    const std::vector<Delivery> frames = play();
    // Two of each, and the repeat.
    expectTimes(frames, withRepeat(2 * 40), 0, frameDuration / 2);
    expectSame(frames, driven(framesFrom(0)));
}

TEST_P(Playing, aDiscontinuityBringsOutWhatWasBefore) {
    GraphPlan plan;
    plan.frameCount = 20;
    plan.edit = [](SourceFrame& frame, int index) {
        frame.isDiscontinuity = index == 10;
        // Ten frames are missing.
        frame.start += (index < 10 ? 0 : 10) * frameDuration;
        frame.stop += (index < 10 ? 0 : 10) * frameDuration;
    };
    buildAll(plan);
    if (accelerator) {
        ASSERT_EQ(accelerator->put_Settings(0), S_OK) << "no frames to fill the gap";
    }
    const std::vector<Delivery> frames = play();
    ASSERT_EQ(frames.size(), withRepeat(20) + 1);
    expectSame(frames, driven(framesFrom(0)));
    // The repeat before it follows the tenth frame at once.
    EXPECT_EQ(frames[10].start, 10 * frameDuration);
    EXPECT_TRUE(frames[10].bytes == frames[9].bytes);
    EXPECT_EQ(frames[11].start, 20 * frameDuration);
    EXPECT_EQ(frames[21].start, 30 * frameDuration);
}

} // namespace
} // namespace tarvo::tests
