#pragma once

#include "scene/Colour.h"

namespace tarvo::scene {

// The unlit textures of the room's six sides. u counts metres to the right from the middle of the side as one
// sees it from inside, v metres upwards: from the floor for the walls; floor and ceiling have their origin in
// the middle and north at the top.

Colour northWall(double u, double v);
Colour eastWall(double u, double v);
Colour southWall(double u, double v);
Colour westWall(double u, double v);
Colour floorTiles(double u, double v);
Colour ceilingTiles(double u, double v);

} // namespace tarvo::scene
