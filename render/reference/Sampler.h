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

/// Bilinear mix of the four pixels around (u, v), 0 … 1 over the picture; beyond its edge the edge pixel goes
/// on. Any coordinate may be asked for, also one that is no number. The picture is not empty.
Colour sampleBilinear(const Picture& picture, float u, float v);

} // namespace tarvo::render::reference
