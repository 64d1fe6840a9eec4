#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <regex>
#include <sstream>

namespace tarvo::apps {
namespace {

constexpr double degreesPerRadian = 180.0 / std::numbers::pi;
constexpr double unread = std::numeric_limits<double>::quiet_NaN();
/// The projection computes in single precision.
constexpr double tolerance = 1e-3;

struct Pair {
    double first;
    double second;
};

/// The two numbers of a line such as "pan 1.5 tilt -3".
Pair parse(const Outcome& outcome, const std::string& firstName, const std::string& secondName) {
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::istringstream line(outcome.out);
    std::string name1;
    std::string name2;
    Pair pair{unread, unread};
    line >> name1 >> pair.first >> name2 >> pair.second;
    EXPECT_EQ(name1, firstName);
    EXPECT_EQ(name2, secondName);
    return pair;
}

void expectDirection(std::vector<std::string> arguments, double pan, double tilt) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.begin(), "map-point");
    const Pair found = parse(run(arguments), "pan", "tilt");
    EXPECT_NEAR(found.first, pan, tolerance);
    EXPECT_NEAR(found.second, tilt, tolerance);
}

void expectOverviewPoint(std::vector<std::string> arguments, double x, double y) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.begin(), "map-point");
    arguments.push_back("--to-overview");
    const Pair found = parse(run(arguments), "x", "y");
    EXPECT_NEAR(found.first, x, tolerance);
    EXPECT_NEAR(found.second, y, tolerance);
}

double tangent(double degrees) {
    return std::tan(degrees / degreesPerRadian);
}

double arcTangent(double value) {
    return std::atan(value) * degreesPerRadian;
}

TEST(MapPoint, inTheMiddleIsWhereTheViewLooks) {
    expectDirection({"0.5", "0.5"}, 0.0, 0.0);
    expectDirection({"0.5", "0.5", "--pan", "12.3456", "--tilt", "-30"}, 12.3456, -30.0);
    expectDirection({"0.5", "0.5", "--tilt-orientation", "ceiling", "--pan", "-170", "--tilt", "-75.5"},
                    -170.0, -75.5);
    expectDirection({"0.5", "0.5", "--tilt-orientation", "desk", "--pan", "90", "--tilt", "45"}, 90.0, 45.0);
}

TEST(MapPoint, printsOneLine) {
    EXPECT_EQ(run({"map-point", "0.5", "0.5", "--pan", "12.5", "--tilt=-30"}).out,
              "pan 12.500000 tilt -30.000000\n");
}

TEST(MapPoint, startsFromTheDefaultsOfMountingAndShape) {
    // For 4:3 the half height starts at 22 x 4/3 degrees, and the tilt leaves 22 + 6 degrees.
    expectDirection({"0.5", "0.5", "--tilt-orientation", "ceiling"}, 0.0, -28.0);
    expectDirection({"0.5", "0.5", "--tilt-orientation", "desk"}, 0.0, 28.0);
    expectDirection({"0.5", "0"}, 0.0, 22.0 * 4.0 / 3.0);
}

TEST(MapPoint, atTheEdgesFollowsThePerspective) {
    expectDirection({"0.5", "0", "--field-of-view", "30"}, 0.0, 30.0);
    expectDirection({"0.5", "1", "--field-of-view", "30"}, 0.0, -30.0);
    expectDirection({"1", "0.5", "--field-of-view", "30"}, arcTangent(tangent(30.0) * 4.0 / 3.0), 0.0);
    expectDirection({"0", "0.5", "--field-of-view", "30", "--input-size", "1000x1000"}, -30.0, 0.0);
    // A wider output shows the same width and less height.
    expectDirection({"0.5", "0", "--field-of-view", "30", "--output-width", "640", "--output-height", "360"},
                    0.0, arcTangent(tangent(30.0) * (4.0 / 3.0) / (16.0 / 9.0)));
    expectDirection({"0.5", "0", "--field-of-view", "30", "--output-format-16-9"}, 0.0,
                    arcTangent(tangent(30.0) * (4.0 / 3.0) / (2592.0 / 1458.0)));
}

TEST(MapPoint, keepsThePositionInItsRange) {
    expectDirection({"0.5", "0.5", "--tilt-orientation", "ceiling", "--tilt", "50"}, 0.0, 0.0);
    expectDirection({"0.5", "0.5", "--tilt-orientation", "ceiling", "--pan", "200"}, -160.0, -28.0);
    expectDirection({"0.5", "0.5", "--tilt-orientation", "wall", "--pan", "120"}, 90.0, 0.0);
    expectDirection({"0.5", "0", "--field-of-view", "75"}, 0.0, 60.0);
    expectDirection({"0.5", "0.5", "--pan", "3e38", "--tilt", "-3e38"}, 90.0, -90.0);
}

TEST(MapPoint, toTheOverviewFollowsTheLens) {
    expectOverviewPoint({"0.5", "0.5", "--tilt-orientation", "ceiling", "--tilt", "-90"}, 0.5, 0.5);
    expectOverviewPoint({"0.5", "0.5", "--tilt-orientation", "wall"}, 0.5, 0.5);
    // A lens r = t / 2 shows a ray 30 degrees off its axis pi / 12 picture heights from the centre; the
    // picture of a ceiling camera has pan 0 at its top and pan 90 to the right. The overview is the square in
    // the picture's middle.
    const double radius = std::numbers::pi / 12.0;
    const std::vector<std::string> view{"0.5",          "0.5",    "--tilt-orientation", "ceiling",
                                        "--tilt",       "-60",    "--lens-profile",     "0,0,0.5",
                                        "--input-size", "400x300"};
    expectOverviewPoint(view, 0.5, 0.5 - radius);
    std::vector<std::string> viewToTheRight = view;
    viewToTheRight.insert(viewToTheRight.end(), {"--pan", "90"});
    expectOverviewPoint(viewToTheRight, 0.5 + radius, 0.5);
}

TEST(MapPoint, onTheOverviewDiscLooksWhereTheDiscDoes) {
    // The disc is half as high as the picture and sits in a lower corner: its centre is 3/4 down and, in a
    // 4:3 picture, 3/16 of the width from the side. There the lens axis points straight down.
    const std::vector<std::string> view{"--view-type", "singleOverview", "--tilt-orientation", "ceiling"};
    const auto tiltAt = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "map-point");
        arguments.insert(arguments.end(), view.begin(), view.end());
        return parse(run(arguments), "pan", "tilt").second;
    };
    EXPECT_NEAR(tiltAt({"0.8125", "0.75"}), -90.0, tolerance);
    EXPECT_NEAR(tiltAt({"0.1875", "0.75", "--overview-map-placement-left"}), -90.0, tolerance);

    // Past the disc lies what the view would show without it: a half picture height of tan(88/3 degrees), 1/4
    // of it below the middle.
    const double belowMiddle = 0.5 * tangent(22.0 * 4.0 / 3.0);
    const double right = 0.625 * tangent(22.0 * 4.0 / 3.0) * 4.0 / 3.0;
    const double tilt = 28.0 / degreesPerRadian;
    const double height = -belowMiddle * std::cos(tilt) - std::sin(tilt);
    const double elevation = std::asin(height / std::hypot(1.0, belowMiddle, right)) * degreesPerRadian;
    EXPECT_NEAR(tiltAt({"0.8125", "0.75", "--ignore-overview-map"}), elevation, tolerance);
    EXPECT_NEAR(tiltAt({"0.8125", "0.75", "--overview-map-placement-left"}), elevation, tolerance);
}

TEST(MapPoint, needsASingleDewarpedView) {
    for (const std::string type : {"quad", "panoramaSingle", "panoramaDouble"}) {
        const Outcome outcome = run({"map-point", "0.5", "0.5", "--view-type", type});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.err, "tarvo-dewarp: Point mapping only supported in single dewarp view.\n");
    }
}

TEST(MapPoint, needsAnOutputOfSensibleSize) {
    const Outcome outcome = run({"map-point", "0.5", "0.5", "--input-size", "1x10000"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, testing::HasSubstr("1024x10240000"));
}

TEST(MapPoint, survivesAnyLens) {
    const std::regex twoNumbers("[a-z]+ -?[0-9]+\\.[0-9]+ [a-z]+ -?[0-9]+\\.[0-9]+\n");
    for (const std::string lens : {"0,0,0", "1e38,1e38,1e38", "-1e38,0,0", "0,0,-1", "1e-45,0,0"}) {
        for (const std::string level : {"0", "0.5", "1"}) {
            for (const std::string overview : {"--to-overview", "--ignore-overview-map"}) {
                const Outcome outcome = run(
                    {"map-point", "0.9", "0.1", "--lens-profile", lens, "--effect-level", level, overview});
                // Either two finite numbers or a clear refusal.
                if (outcome.status == 2) {
                    EXPECT_THAT(outcome.err, testing::HasSubstr("nothing is seen at that point"));
                } else {
                    EXPECT_EQ(outcome.status, 0) << outcome.err;
                    EXPECT_TRUE(std::regex_match(outcome.out, twoNumbers)) << outcome.out;
                }
            }
        }
    }
}

} // namespace
} // namespace tarvo::apps
