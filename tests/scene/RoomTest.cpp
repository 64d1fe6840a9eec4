#include "scene/Room.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace tarvo::scene {
namespace {

Colour lookAt(const CRoom& room, const Vector& from, const Vector& to) {
    return room.shade({from, to - from});
}

double difference(const Colour& a, const Colour& b) {
    return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
}

bool isOrange(const Colour& colour) {
    return colour.red > 0.6 && colour.blue < 0.35 * colour.red && colour.green > 0.3 * colour.red &&
           colour.green < 0.7 * colour.red;
}

/// A letter's plate: the place of its dot and the same place of the mirrored and of the turned plate.
struct Plate {
    const char* name;
    Vector eye;
    Vector dot;
    Vector mirrored;
    Vector turned;
};

TEST(Room, everyPlateHasItsDotAtTheLowerRight) {
    const std::array plates{
        Plate{"N", {0.0, 0.0, 1.5}, {0.05, 3.0, 1.33}, {-0.75, 3.0, 1.33}, {-0.75, 3.0, 2.17}},
        Plate{"E", {0.0, 0.0, 1.5}, {4.0, -0.5, 1.43}, {4.0, 0.3, 1.43}, {4.0, 0.3, 2.27}},
        Plate{"S", {0.0, 0.0, 1.5}, {-0.4, -3.0, 0.78}, {0.4, -3.0, 0.78}, {0.4, -3.0, 1.62}},
        Plate{"W", {0.0, 0.0, 1.5}, {-4.0, 0.5, 1.43}, {-4.0, -0.3, 1.43}, {-4.0, -0.3, 2.27}},
        Plate{"F", {0.0, -2.0, 1.5}, {0.4, -2.17, 0.0}, {-0.4, -2.17, 0.0}, {-0.4, -1.33, 0.0}},
        Plate{"C", {0.0, 0.0, 1.5}, {-0.4, 1.08, 3.0}, {0.4, 1.08, 3.0}, {0.4, 1.92, 3.0}},
    };
    const CRoom room(0.0, false);
    for (const Plate& plate : plates) {
        EXPECT_TRUE(isOrange(lookAt(room, plate.eye, plate.dot))) << plate.name;
        EXPECT_FALSE(isOrange(lookAt(room, plate.eye, plate.mirrored))) << plate.name;
        EXPECT_FALSE(isOrange(lookAt(room, plate.eye, plate.turned))) << plate.name;
    }
}

TEST(Room, aPlaceLooksTheSameFromEverywhere) {
    const CRoom room;
    const Vector column{2.25, 1.60, 1.50};
    const Vector globeTop{-2.40, 1.90, 0.90};
    const Vector tableTop{0.10, 0.05, 0.76};
    const Vector northWall{0.50, 3.0, 0.80};
    for (const Vector& place : {column, globeTop, tableTop, northWall}) {
        const Colour one = lookAt(room, {-0.5, 0.9, 1.9}, place);
        const Colour two = lookAt(room, {-0.9, -0.8, 2.6}, place);
        EXPECT_NEAR(one.red, two.red, 1e-6);
        EXPECT_NEAR(one.green, two.green, 1e-6);
        EXPECT_NEAR(one.blue, two.blue, 1e-6);
    }
}

TEST(Room, thingsHideWhatIsBehindThem) {
    const CRoom room(0.0, false);
    // Both rays end at the same place of the east wall; the first one has the column in its way.
    const Vector wall{4.0, 1.65, 2.6};
    const Colour hidden = lookAt(room, {0.5, 1.65, 2.6}, wall);
    const Colour open = lookAt(room, {3.0, 1.2, 2.6}, wall);
    EXPECT_GT(difference(hidden, open), 0.1);
}

TEST(Room, theLengthOfTheDirectionDoesNotMatter) {
    const CRoom room;
    const Vector eye{0.2, -1.0, 1.4};
    const Vector aim{0.3, 0.8, -0.2};
    const Colour plain = room.shade({eye, aim});
    for (const double factor : {1e-6, 0.5, 1000.0}) {
        const Colour scaled = room.shade({eye, factor * aim});
        EXPECT_NEAR(scaled.red, plain.red, 1e-9);
        EXPECT_NEAR(scaled.green, plain.green, 1e-9);
        EXPECT_NEAR(scaled.blue, plain.blue, 1e-9);
    }
}

TEST(Room, isClosedAndItsColoursAreFinite) {
    const CRoom room(2.5);
    for (const Vector& eye : {Vector{0.0, -2.85, 2.2}, Vector{0.0, 0.0, 0.85}, Vector{-3.9, 2.9, 0.1}}) {
        for (int i = 0; i < 60; ++i) {
            for (int j = 0; j <= 30; ++j) {
                // Includes directions along the axes exactly.
                const double pan = i * 0.10471975511965977;
                const double tilt = (j - 15) * 0.10471975511965977;
                const Colour colour = room.shade(
                    {eye, {std::cos(tilt) * std::sin(pan), std::cos(tilt) * std::cos(pan), std::sin(tilt)}});
                for (const double channel : {colour.red, colour.green, colour.blue}) {
                    ASSERT_GT(channel, 0.0);
                    ASSERT_LT(channel, 2.0);
                }
            }
        }
        for (const Vector& aim : {Vector{1.0, 0.0, 0.0}, Vector{-1.0, 0.0, 0.0}, Vector{0.0, 1.0, 0.0},
                                  Vector{0.0, -1.0, 0.0}, Vector{0.0, 0.0, 1.0}, Vector{0.0, 0.0, -1.0}}) {
            ASSERT_GT(room.shade({eye, aim}).red, 0.0);
        }
    }
}

TEST(Room, theBallRollsRoundTheTableInTwelveSeconds) {
    const Ball start = CRoom().beachBall();
    EXPECT_DOUBLE_EQ(start.centre.z, start.radius);
    const Vector quarter = CRoom(3.0).beachBall().centre;
    EXPECT_NEAR(quarter.x, -start.centre.y, 1e-9);
    EXPECT_NEAR(quarter.y, start.centre.x, 1e-9);
    const Vector half = CRoom(-6.0).beachBall().centre;
    EXPECT_NEAR(half.x, -start.centre.x, 1e-9);
    EXPECT_NEAR(half.y, -start.centre.y, 1e-9);
    const Vector round = CRoom(12.0).beachBall().centre;
    EXPECT_NEAR(round.x, start.centre.x, 1e-9);
    EXPECT_NEAR(round.y, start.centre.y, 1e-9);
}

/// Directions of the ball's track: away from the room's centre, and where the ball is going.
struct Track {
    explicit Track(const Ball& ball) {
        const double distance = std::hypot(ball.centre.x, ball.centre.y);
        away = {ball.centre.x / distance, ball.centre.y / distance, 0.0};
        ahead = {-away.y, away.x, 0.0};
    }
    Vector away;
    Vector ahead;
};

/// Shares of the channels in the colour of the ball's skin, which depend little on the light.
Colour skinOf(const CRoom& room, const Vector& outward) {
    const Ball ball = room.beachBall();
    const Colour seen = room.shade({ball.centre + (1.05 * ball.radius) * outward, -outward});
    return (1.0 / (seen.red + seen.green + seen.blue)) * seen;
}

TEST(Room, theBallRollsWithoutSlip) {
    const double seconds = 0.4;
    const CRoom before(0.0);
    const CRoom after(seconds);
    const Track then(before.beachBall());
    const Track now(after.beachBall());
    // The length of track it covered is the length of skin that touched the floor.
    const double distance = std::hypot(before.beachBall().centre.x, before.beachBall().centre.y);
    const double covered = 2.0 * std::numbers::pi * seconds / 12.0 * distance;
    const double turn = covered / before.beachBall().radius;
    int wrongTurns = 0;
    for (int i = 0; i < 24; ++i) {
        // A ring halfway between the axle and the great circle that touches the floor.
        const double place = i * std::numbers::pi / 12.0;
        const double across = std::sqrt(0.5);
        const auto on = [&](const Track& track, double angle) {
            return across * track.away + (across * std::cos(angle)) * track.ahead +
                   Vector{0.0, 0.0, across * std::sin(angle)};
        };
        // Rolling ahead, the top goes ahead and what is ahead goes down.
        const Colour skin = skinOf(before, on(then, place));
        EXPECT_LT(difference(skin, skinOf(after, on(now, place - turn))), 0.01) << place;
        wrongTurns += difference(skin, skinOf(after, on(now, place + turn))) > 0.1 ? 1 : 0;
    }
    EXPECT_GT(wrongTurns, 8);
}

TEST(Room, theBallCanBeLeftOut) {
    const CRoom with(0.0, true);
    const CRoom without(0.0, false);
    const Vector eye{0.5, -2.0, 1.5};
    const Colour ball = lookAt(with, eye, with.beachBall().centre);
    const Colour rest = lookAt(without, eye, with.beachBall().centre);
    EXPECT_GT(difference(ball, rest), 0.05);
    // Without the ball nothing moves.
    EXPECT_EQ(lookAt(CRoom(4.0, false), eye, with.beachBall().centre), rest);
}

TEST(Room, knowsItsInside) {
    EXPECT_TRUE(CRoom::contains({0.0, 0.0, 1.0}));
    EXPECT_TRUE(CRoom::contains({3.99, -2.99, 2.99}));
    EXPECT_FALSE(CRoom::contains({4.0, 0.0, 1.0}));
    EXPECT_FALSE(CRoom::contains({0.0, -3.0, 1.0}));
    EXPECT_FALSE(CRoom::contains({0.0, 0.0, 0.0}));
    EXPECT_FALSE(CRoom::contains({0.0, 0.0, std::numeric_limits<double>::quiet_NaN()}));
}

TEST(Room, refusesRaysThatAreNone) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const CRoom room;
    EXPECT_THROW(room.shade({{0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}}), std::invalid_argument);
    EXPECT_THROW(room.shade({{0.0, 0.0, 1.0}, {1.0, nan, 0.0}}), std::invalid_argument);
    EXPECT_THROW(room.shade({{0.0, 0.0, 1.0}, {1.0, infinite, 0.0}}), std::invalid_argument);
    EXPECT_THROW(room.shade({{0.0, 0.0, 3.5}, {1.0, 0.0, 0.0}}), std::invalid_argument);
    EXPECT_THROW(CRoom{nan}, std::invalid_argument);
    EXPECT_THROW(CRoom{infinite}, std::invalid_argument);
    EXPECT_NO_THROW(CRoom{1e308});
}

} // namespace
} // namespace tarvo::scene
