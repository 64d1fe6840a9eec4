#pragma once

#include "scene/Colour.h"
#include "scene/Vector.h"

#include <span>

namespace tarvo::scene {

/// What a piece of furniture is covered with.
enum class Finish { wood, fabric, cushion, column, cabinet, book };

/// An axis-parallel block.
struct Block {
    Vector low;
    Vector high;
    Finish finish = Finish::wood;
};

/// All blocks that stand in the room.
std::span<const Block> furniture();

/// Unlit texture of a block. (u, v) are metres on one of its faces, v upwards on upright faces; `width` and
/// `height` are the face's.
Colour blockTexture(Finish finish, double u, double v, double width, double height);

/// Unlit texture of the globe; `outward` is the unit vector from its centre to the place.
Colour globeTexture(const Vector& outward);

/// Unlit texture of the orange on the table.
Colour orangeTexture(const Vector& outward);

/// Unlit texture of the beach ball in the ball's own axes.
Colour beachBallTexture(const Vector& outward);

/// How much of the floor's light reaches (x, y) past the furniture, 0 to 1.
double floorLight(double x, double y);

} // namespace tarvo::scene
