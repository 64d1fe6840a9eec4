#pragma once

#include "render/Picture.h"

namespace tarvo::render::reference {

/// Channels as the pixel programs compute them, 0 … 1 unless a program goes beyond.
struct Colour {
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float alpha = 1.0F;
};

Colour fromBgra(Bgra pixel);

/// Saturated to 0 … 1 and rounded to the nearest of 256 levels; what is no number becomes 0.
Bgra toBgra(Colour colour);

/// `source` mixed into a target's pixel by the alpha of the source, which also becomes the target's. As
/// everywhere in front of a target with 256 levels, the source saturates first.
Bgra blended(Colour source, Bgra target);

} // namespace tarvo::render::reference
