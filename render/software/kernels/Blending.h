#pragma once

#include "render/Picture.h"

#include <cstdint>

namespace tarvo::render::software {

/// Channels as programs compute them, 0 … 1 unless a program goes beyond.
struct Colour {
    float red;
    float green;
    float blue;
    float alpha;
};

/// Saturated to 0 … 1 and rounded to the nearest of 256 levels; what is no number becomes 0.
Bgra storedColour(const Colour& colour);

/// The overview marker, which is red with the vertex colour as alpha, instead of `count` pixels.
void overviewRegion(const float* alpha, int count, std::uint8_t* target);
/// The same, mixed into them by that alpha, which also becomes theirs.
void blendOverviewRegion(const float* alpha, int count, std::uint8_t* target);
/// Mixes pixels in by their alpha, which also becomes the target's.
void blend(const std::uint8_t* pixels, int count, std::uint8_t* target);

} // namespace tarvo::render::software
