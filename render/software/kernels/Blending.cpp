#include "render/software/kernels/Blending.h"

#include <cstring>

namespace tarvo::render::software {
namespace {

/// Saturated like what a target of 8 bits is given: at the corners of a sliver, alpha goes on far beyond the
/// values of the vertices. What is no number becomes 0.
float saturated(float value) {
    return value > 0.0F ? (value < 1.0F ? value : 1.0F) : 0.0F;
}

std::uint8_t level(float value) {
    return static_cast<std::uint8_t>(saturated(value) * 255.0F + 0.5F);
}

void blendPixel(float blue, float green, float red, float unboundedAlpha, std::uint8_t* target) {
    constexpr float unit = 1.0F / 255.0F;
    const float alpha = saturated(unboundedAlpha);
    const auto mixed = [alpha](float over, std::uint8_t under) {
        return level(alpha * over + (1.0F - alpha) * (static_cast<float>(under) * unit));
    };
    target[0] = mixed(blue, target[0]);
    target[1] = mixed(green, target[1]);
    target[2] = mixed(red, target[2]);
    target[3] = level(alpha);
}

} // namespace

Bgra storedColour(const Colour& colour) {
    return {level(colour.blue), level(colour.green), level(colour.red), level(colour.alpha)};
}

void overviewRegion(const float* alpha, int count, std::uint8_t* target) {
    for (int i = 0; i < count; ++i, target += 4) {
        const Bgra pixel{0, 0, 255, level(alpha[i])};
        std::memcpy(target, &pixel, 4);
    }
}

void blendOverviewRegion(const float* alpha, int count, std::uint8_t* target) {
    for (int i = 0; i < count; ++i, target += 4)
        blendPixel(0.0F, 0.0F, 1.0F, alpha[i], target);
}

void blend(const std::uint8_t* pixels, int count, std::uint8_t* target) {
    constexpr float unit = 1.0F / 255.0F;
    for (int i = 0; i < count; ++i, pixels += 4, target += 4) {
        blendPixel(static_cast<float>(pixels[0]) * unit, static_cast<float>(pixels[1]) * unit,
                   static_cast<float>(pixels[2]) * unit, static_cast<float>(pixels[3]) * unit, target);
    }
}

} // namespace tarvo::render::software
