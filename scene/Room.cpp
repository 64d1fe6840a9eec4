#include "scene/Room.h"

#include "scene/Furniture.h"
#include "scene/Patterns.h"
#include "scene/Surfaces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <numbers>
#include <optional>
#include <stdexcept>

namespace tarvo::scene {
namespace {

constexpr Ball globe{{-2.40, 1.90, 0.45}, 0.45};
constexpr Ball tableOrange{{-0.48, -0.20, 0.83}, 0.07};

constexpr double ballRadius = 0.26;
/// Turns about itself in one round. Whole, so that the motion repeats without a jump.
constexpr double ballTurns = 6.0;
constexpr double ballTrack =
    ballTurns * ballRadius;         ///< distance from the room's centre, rolling without slip
constexpr double ballStart = -0.60; ///< azimuth at time zero, radians from east to north
constexpr double ballRoundSeconds = 12.0;

using Axes = std::array<double, 3>;

constexpr Axes axes(const Vector& a) {
    return {a.x, a.y, a.z};
}

/// A place where a ray enters or leaves a box through the face across `axis`.
struct Crossing {
    double distance = 0.0;
    std::size_t axis = 0;
};

/// One over the direction; an axis along which the ray does not move at all takes a huge value instead of
/// infinity, so that no product below becomes 0 · ∞.
Axes inverse(const Vector& direction) {
    constexpr double tiny = 1e-30;
    Axes result = axes(direction);
    for (double& component : result) {
        component = 1.0 / (std::abs(component) < tiny ? std::copysign(tiny, component) : component);
    }
    return result;
}

Crossing exitFromRoom(const Axes& origin, const Axes& inverseDirection) {
    constexpr Axes low = axes(roomLow);
    constexpr Axes high = axes(roomHigh);
    Crossing exit{
        (inverseDirection[0] > 0.0 ? high[0] - origin[0] : low[0] - origin[0]) * inverseDirection[0], 0};
    for (std::size_t axis = 1; axis < 3; ++axis) {
        const double far = inverseDirection[axis] > 0.0 ? high[axis] : low[axis];
        const double distance = (far - origin[axis]) * inverseDirection[axis];
        if (distance < exit.distance) {
            exit = {distance, axis};
        }
    }
    return exit;
}

/// Where the ray enters the block, if it does so ahead of its origin.
std::optional<Crossing> entryInto(const Block& block, const Axes& origin, const Axes& inverseDirection) {
    const Axes low = axes(block.low);
    const Axes high = axes(block.high);
    Crossing entry{0.0, 3};
    double exit = 1e300;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double one = (low[axis] - origin[axis]) * inverseDirection[axis];
        const double two = (high[axis] - origin[axis]) * inverseDirection[axis];
        const double near = std::min(one, two);
        if (near > entry.distance) {
            entry = {near, axis};
        }
        exit = std::min(exit, std::max(one, two));
    }
    if (entry.axis == 3 || entry.distance > exit) {
        return std::nullopt;
    }
    return entry;
}

/// Where the ray enters the ball, if it does so ahead of its origin.
std::optional<double> entryInto(const Ball& ball, const Ray& ray) {
    const Vector toOrigin = ray.origin - ball.centre;
    const double square = dot(ray.direction, ray.direction);
    const double half = dot(toOrigin, ray.direction);
    const double discriminant = half * half - square * (dot(toOrigin, toOrigin) - ball.radius * ball.radius);
    if (discriminant < 0.0) {
        return std::nullopt;
    }
    const double distance = (-half - std::sqrt(discriminant)) / square;
    return distance > 0.0 ? std::optional<double>(distance) : std::nullopt;
}

/// Light of the two rows of lamps and the rest that comes from everywhere.
double lightAt(const Vector& place, const Vector& normal) {
    double light = 0.74;
    for (const Vector& lamp : {Vector{-2.1, 0.0, 2.7}, Vector{2.1, 0.0, 2.7}}) {
        const Vector toLamp = lamp - place;
        const double square = dot(toLamp, toLamp);
        const double facing = std::max(0.0, dot(toLamp, normal)) / std::sqrt(square);
        light += 1.6 * facing / (square + 2.5);
    }
    return light;
}

/// Corners get less light: how much is left at a distance from one neighbouring side.
double cornerLight(double distance) {
    const double scaled = distance / 0.16;
    return 1.0 - 0.30 / (1.0 + scaled * scaled);
}

Colour shadeBlock(const Block& block, const Vector& place, std::size_t axis, bool fromLow) {
    Axes normal{0.0, 0.0, 0.0};
    normal[axis] = fromLow ? -1.0 : 1.0;
    const Axes inside = axes(place - block.low);
    const Axes size = axes(block.high - block.low);
    const std::size_t across = axis == 0 ? 1 : 0;
    const std::size_t upwards = axis == 2 ? 1 : 2;
    const Colour texture =
        blockTexture(block.finish, inside[across], inside[upwards], size[across], size[upwards]);
    const double ground = axis == 2 ? 1.0 : cornerLight(place.z + 0.04);
    return (ground * lightAt(place, {normal[0], normal[1], normal[2]})) * texture;
}

Colour shadeSide(const Vector& place, std::size_t axis, bool positive, const Ball* beachBall) {
    const double corners = (axis == 0 ? 1.0 : cornerLight(4.0 - std::abs(place.x))) *
                           (axis == 1 ? 1.0 : cornerLight(3.0 - std::abs(place.y))) *
                           (axis == 2 ? 1.0 : cornerLight(1.5 - std::abs(place.z - 1.5)));
    if (axis == 0) {
        return (corners * lightAt(place, {positive ? -1.0 : 1.0, 0.0, 0.0})) *
               (positive ? eastWall(-place.y, place.z) : westWall(place.y, place.z));
    }
    if (axis == 1) {
        return (corners * lightAt(place, {0.0, positive ? -1.0 : 1.0, 0.0})) *
               (positive ? northWall(place.x, place.z) : southWall(-place.x, place.z));
    }
    if (positive) {
        return corners * ceilingTiles(-place.x, place.y);
    }
    double light = corners * lightAt(place, {0.0, 0.0, 1.0}) * floorLight(place.x, place.y);
    const auto underBall = [&](const Ball& ball) {
        const double away = std::hypot(place.x - ball.centre.x, place.y - ball.centre.y);
        light *= 0.55 + 0.45 * softAbove(away, 0.8 * ball.radius, 1.2 * ball.radius);
    };
    underBall(globe);
    if (beachBall != nullptr) {
        underBall(*beachBall);
    }
    return light * floorTiles(place.x, place.y);
}

/// Balls darken towards their underside.
double roundLight(const Vector& outward, const Vector& place) {
    return lightAt(place, outward) * (0.85 + 0.15 * outward.z);
}

} // namespace

CRoom::CRoom(double timeSeconds, bool withBeachBall) : m_withBeachBall(withBeachBall) {
    if (!std::isfinite(timeSeconds)) {
        throw std::invalid_argument("room: the time is not a finite number");
    }
    const double rounds = std::fmod(timeSeconds / ballRoundSeconds, 1.0);
    m_ballPlace = ballStart + 2.0 * std::numbers::pi * rounds;
    m_ballRoll = ballTurns * 2.0 * std::numbers::pi * rounds;
    m_beachBall = {{ballTrack * std::cos(m_ballPlace), ballTrack * std::sin(m_ballPlace), ballRadius},
                   ballRadius};
}

bool CRoom::contains(const Vector& point) {
    return point.x > roomLow.x && point.x < roomHigh.x && point.y > roomLow.y && point.y < roomHigh.y &&
           point.z > roomLow.z && point.z < roomHigh.z;
}

Vector CRoom::inBallAxes(const Vector& outward) const {
    // The ball turns about the line to the room's centre; seen from there it comes by from right to left, so
    // its top moves the same way and its parts turn from "ahead" to "below".
    const double ahead = -std::sin(m_ballPlace) * outward.x + std::cos(m_ballPlace) * outward.y;
    const double awayFromCentre = std::cos(m_ballPlace) * outward.x + std::sin(m_ballPlace) * outward.y;
    return {std::cos(m_ballRoll) * ahead - std::sin(m_ballRoll) * outward.z,
            std::sin(m_ballRoll) * ahead + std::cos(m_ballRoll) * outward.z, awayFromCentre};
}

Colour CRoom::shade(const Ray& ray) const {
    if (!contains(ray.origin) || !isFinite(ray.direction) || !(dot(ray.direction, ray.direction) > 0.0)) {
        throw std::invalid_argument("room: a ray must start inside the room and have a direction");
    }
    const Axes origin = axes(ray.origin);
    const Axes inverseDirection = inverse(ray.direction);
    Crossing hit = exitFromRoom(origin, inverseDirection);
    const Block* hitBlock = nullptr;
    for (const Block& block : furniture()) {
        const std::optional<Crossing> entry = entryInto(block, origin, inverseDirection);
        if (entry && entry->distance < hit.distance) {
            hit = *entry;
            hitBlock = &block;
        }
    }
    const Ball* hitBall = nullptr;
    const Ball* beachBall = m_withBeachBall ? &m_beachBall : nullptr;
    for (const Ball* ball : {&globe, &tableOrange, beachBall}) {
        if (ball == nullptr) {
            continue;
        }
        const std::optional<double> entry = entryInto(*ball, ray);
        if (entry && *entry < hit.distance) {
            hit.distance = *entry;
            hitBall = ball;
        }
    }

    const Vector place = ray.origin + hit.distance * ray.direction;
    const bool positive = inverseDirection[hit.axis] > 0.0;
    if (hitBall == nullptr) {
        return hitBlock != nullptr ? shadeBlock(*hitBlock, place, hit.axis, positive)
                                   : shadeSide(place, hit.axis, positive, beachBall);
    }
    const Vector outward = (1.0 / hitBall->radius) * (place - hitBall->centre);
    const double light = roundLight(outward, place);
    if (hitBall == &globe) {
        return light * globeTexture(outward);
    }
    if (hitBall == &tableOrange) {
        return light * orangeTexture(outward);
    }
    return light * beachBallTexture(inBallAxes(outward));
}

} // namespace tarvo::scene
