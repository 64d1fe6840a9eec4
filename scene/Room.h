#pragma once

#include "scene/Colour.h"
#include "scene/Vector.h"

namespace tarvo::scene {

/// The room's corners, metres.
inline constexpr Vector roomLow{-4.0, -3.0, 0.0};
inline constexpr Vector roomHigh{4.0, 3.0, 3.0};

/// The leaf of the door in the north wall (y = 3): it reaches from the floor to doorTop. Around it runs a
/// white frame of width doorFrame.
inline constexpr double doorWest = -3.1;
inline constexpr double doorEast = -2.1;
inline constexpr double doorTop = 2.1;
inline constexpr double doorFrame = 0.12;

/// A ball: where it is and how large, metres.
struct Ball {
    Vector centre;
    double radius = 0.0;
};

/// A furnished room at one moment of time. North, east, south and west wall bear the letters N, E, S and W,
/// floor and ceiling F and C; every letter's plate has an orange dot at its lower right, so that a mirrored
/// or turned picture shows at once. The letters on floor and ceiling have north at their top. Around the
/// table in the middle rolls a beach ball, one round in 12 seconds. Immutable, so it may be used by several
/// threads.
class CRoom {
public:
    /// Throws std::invalid_argument when the time is not finite.
    explicit CRoom(double timeSeconds = 0.0, bool withBeachBall = true);

    /// The colour seen along a ray that starts inside the room. Throws std::invalid_argument when the
    /// direction has no length or a number is not finite.
    Colour shade(const Ray& ray) const;

    /// True strictly inside the six walls.
    static bool contains(const Vector& point);

    /// The rolling ball, also when it is left out of the room.
    const Ball& beachBall() const { return m_beachBall; }

private:
    /// A direction from the beach ball's centre in axes that roll with the ball, the third one its axle.
    Vector inBallAxes(const Vector& outward) const;

    double m_ballPlace = 0.0; ///< the ball as seen from the room's centre, radians from east to north
    double m_ballRoll = 0.0;  ///< how far the ball has turned about its axle, radians
    Ball m_beachBall;
    bool m_withBeachBall;
};

} // namespace tarvo::scene
