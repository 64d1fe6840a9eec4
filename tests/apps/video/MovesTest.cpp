#include "apps/tarvo-dewarp/video/Moves.h"

#include "apps/tarvo-dewarp/OptionValues.h"
#include "tests/apps/video/VideoTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tarvo::apps::video {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr std::int64_t second = 10'000'000;

double panAt(const CMoves& moves, double seconds) {
    const auto values = moves.at(static_cast<std::int64_t>(seconds * second));
    EXPECT_EQ(values.size(), 1U);
    EXPECT_EQ(values.at(0).first, "pan");
    return values.at(0).second;
}

TEST(Moves, easeBetweenTwoValues) {
    const CMoves moves = CMoves::parse("1 pan 10\n3 pan 30\n", "tour");
    EXPECT_THAT(moves.at(0), IsEmpty());
    EXPECT_THAT(moves.at(second - 1), IsEmpty());
    EXPECT_DOUBLE_EQ(panAt(moves, 1.0), 10.0);
    // A quarter of the time is 3/16 − 2/64 = 5/32 of the way, a half is half, three quarters 27/32.
    EXPECT_DOUBLE_EQ(panAt(moves, 1.5), 13.125);
    EXPECT_DOUBLE_EQ(panAt(moves, 2.0), 20.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 2.5), 26.875);
    EXPECT_DOUBLE_EQ(panAt(moves, 3.0), 30.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 1000.0), 30.0);
}

TEST(Moves, goStraightOrJump) {
    const CMoves moves = CMoves::parse("0 pan 0\n2 pan 8 linear\n3 pan -8 hold\n4 pan 0 ease-in-out", "tour");
    EXPECT_DOUBLE_EQ(panAt(moves, 0.25), 1.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 1.5), 6.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 2.0), 8.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 2.999), 8.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 3.0), -8.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 3.25), -6.75); // −8 + 8 · 5/32
    EXPECT_DOUBLE_EQ(panAt(moves, 3.5), -4.0);
}

TEST(Moves, mayStandInAnyOrder) {
    const CMoves moves = CMoves::parse("3 pan 30\n1 pan 10 linear\n2 tilt -5\n", "tour");
    EXPECT_DOUBLE_EQ(panAt(moves, 1.5), 13.125);
    EXPECT_THAT(moves.at(3 * second), ElementsAre(Pair("tilt", -5.0), Pair("pan", 30.0)));
}

TEST(Moves, knowTimesRemarksAndLineEnds) {
    const CMoves moves = CMoves::parse("\xEF\xBB\xBF# a tour\r\n\r\n"
                                       "\t 0:30  pan\t1 # half a minute\r\n"
                                       "1:02:03.5 pan 2 hold#no blank\n"
                                       "90 pan 3 hold",
                                       "tour");
    EXPECT_THAT(moves.at(30 * second - 1), IsEmpty());
    EXPECT_DOUBLE_EQ(panAt(moves, 30.0), 1.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 89.9), 1.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 90.0), 3.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 3723.4), 3.0);
    EXPECT_DOUBLE_EQ(panAt(moves, 3723.5), 2.0);
    EXPECT_TRUE(CMoves::parse("", "tour").empty());
    EXPECT_TRUE(CMoves::parse("# nothing\n\n", "tour").empty());
}

TEST(Moves, putTheFieldOfViewBeforeTheDirection) {
    const CMoves moves = CMoves::parse("0 virtual-ptz-pan 1\n0 virtual-ptz-tilt 2\n"
                                       "0 virtual-ptz-field-of-view 30\n0 effect-level 0.5\n"
                                       "0 virtual-ptz-panorama-horizontal-field-of-view 180\n",
                                       "tour");
    EXPECT_THAT(moves.at(0), ElementsAre(Pair("effect-level", 0.5),
                                         Pair("virtual-ptz-panorama-horizontal-field-of-view", 180.0),
                                         Pair("virtual-ptz-field-of-view", 30.0),
                                         Pair("virtual-ptz-tilt", 2.0), Pair("virtual-ptz-pan", 1.0)));
    EXPECT_TRUE(moves.moveVirtualCamera());
    EXPECT_FALSE(CMoves::parse("0 pan 1\n0 effect-level 1", "tour").moveVirtualCamera());
}

TEST(Moves, nameTheLineOfAMistake) {
    const auto messageOf = [](const std::string& line) -> std::string {
        try {
            CMoves::parse("0 pan 0\n\n" + line + "\n5 pan 1\n", "tour.txt");
        } catch (const UsageError& error) {
            return error.what();
        }
        return "none";
    };
    for (const char* const line : {"1",
                                   "1 pan",
                                   "1 pan 2 linear now",
                                   "pan 1 2",
                                   "one pan 2",
                                   "-1 pan 2",
                                   "nan pan 2",
                                   "1e300 pan 2",
                                   "1:60 pan 2",
                                   "1:60:00 pan 2",
                                   "1.5:00 pan 2",
                                   "1:2:3:4 pan 2",
                                   ": pan 2",
                                   "1: pan 2",
                                   ":1 pan 2",
                                   "1 zoom 2",
                                   "1 Pan 2",
                                   "1 pan far",
                                   "1 pan nan",
                                   "1 pan 1e300",
                                   "1 pan inf",
                                   "1 effect-level 1.5",
                                   "1 effect-level -0.1",
                                   "1 virtual-ptz-panorama-vertical-field-of-view 181",
                                   "1 pan 2 smooth",
                                   "0 pan 7"}) {
        EXPECT_THAT(messageOf(line), StartsWith("tour.txt:3: ")) << line;
    }
    EXPECT_THAT(messageOf("1 zoom 2"), HasSubstr("there are: effect-level, "));
    EXPECT_THAT(messageOf("0:00 pan 7"), HasSubstr("pan has a value at this time already"));
}

class MovesOfVideo : public CVideoTest {};

TEST_F(MovesOfVideo, turnTheViewAtTheOutputsRate) {
    writeBytes(file("tour"),
               "0 pan -40\n0 field-of-view 20\n0.1 pan 50 linear\n0.1 field-of-view 26 linear\n");
    const std::string stream = noiseClip(96, 72, 3);
    const Y4mClip clip =
        shown(stream, {"--moves", fileText("tour"), "--tilt", "5", "--output-frame-rate", "60"});
    const Y4mClip input = parseClip(stream);
    ASSERT_EQ(clip.frames.size(), 6U);
    // 15 degrees and one of the field of view every sixtieth of a second; two for each frame that came in.
    for (std::size_t i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        const double share = static_cast<double>(i);
        const auto expected = still(input, i / 2,
                                    {"--pan", std::to_string(-40.0 + 15.0 * share), "--tilt", "5",
                                     "--field-of-view", std::to_string(20.0 + share)});
        const auto got = clip.yv12(i);
        ASSERT_EQ(got.size(), expected.size());
        // Times are rounded to 100 ns, which turns the view by a thousandth of a degree at most.
        double sum = 0.0;
        for (std::size_t k = 0; k < got.size(); ++k) {
            sum += std::abs(got[k] - expected[k]);
        }
        EXPECT_LT(sum / static_cast<double>(got.size()), 0.1);
        // And it is this frame alone.
        if (i > 0) {
            EXPECT_NE(clip.frames[i], clip.frames[i - 1]);
        }
    }
}

TEST_F(MovesOfVideo, beginWithTheFirstFrame) {
    writeBytes(file("tour"), "0 pan 30\n0 tilt -10\n");
    const std::string stream = noiseClip(96, 72, 2);
    const Y4mClip clip = shown(stream, {"--moves", fileText("tour"), "--pan", "5"});
    ASSERT_EQ(clip.frames.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(clip.yv12(i), still(parseClip(stream), i, {"--pan", "30", "--tilt", "-10"}));
    }
}

TEST_F(MovesOfVideo, turnTheVirtualCamera) {
    ASSERT_EQ(run({"tables", fileText("view.tables"), "--grid", "32x24", "--input-size", "64x48"}).status, 0);
    const std::vector<std::string> custom{"--view-type",
                                          "custom",
                                          "--custom-transform-data",
                                          fileText("view.tables"),
                                          "--custom-transform-control-type",
                                          "virtualPtzFromPanorama",
                                          "--virtual-ptz-field-of-view",
                                          "30"};
    writeBytes(file("tour"), "0 virtual-ptz-pan 0\n0.1 virtual-ptz-pan 30 linear\n");
    std::vector<std::string> moving = custom;
    moving.insert(moving.end(), {"--moves", fileText("tour")});
    const std::string stream = noiseClip(64, 48, 4);
    const Y4mClip clip = shown(stream, moving);
    ASSERT_EQ(clip.frames.size(), 4U);
    // The fourth frame is that of 0.1 s.
    for (const auto& [frame, pan] : {std::pair(std::size_t{0}, "0"), std::pair(std::size_t{3}, "30")}) {
        std::vector<std::string> there = custom;
        there.insert(there.end(), {"--virtual-ptz-pan", pan});
        EXPECT_EQ(clip.yv12(frame), still(parseClip(stream), frame, there)) << pan;
    }
    EXPECT_NE(clip.yv12(3), still(parseClip(stream), 3, custom));
}

TEST_F(MovesOfVideo, areRefusedWithFileAndLine) {
    writeBytes(file("in.y4m"), noiseClip(16, 16, 1));
    writeBytes(file("tour"), "0 pan 30\n1 roll 3\n");
    const auto with = [&](const std::string& moves) {
        return video(fileText("in.y4m"), fileText("out.y4m"), {"--moves", fileText(moves)});
    };
    expectFailure(with("tour"), 2, fileText("tour") + ":2: no property \"roll\"");
    expectFailure(with("absent"), 1, "absent: No such file");
    writeBytes(file("virtual"), "0 virtual-ptz-pan 30\n");
    expectFailure(with("virtual"), 2, "need --view-type custom");
}

} // namespace
} // namespace tarvo::apps::video
