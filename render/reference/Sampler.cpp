#include "render/reference/Sampler.h"

#include <algorithm>
#include <cmath>

namespace tarvo::render::reference {
namespace {

/// The two neighbouring pixels of a coordinate and the share of the second.
struct Neighbours {
    int first;
    int second;
    float share;
};

Neighbours neighbours(float coordinate, int size) {
    // Pixel i has its centre at i + 0.5. Compared this way round, what is no number falls to the first pixel.
    const float position = coordinate * static_cast<float>(size) - 0.5F;
    const float last = static_cast<float>(size - 1);
    const float inside = position > 0.0F ? std::min(position, last) : 0.0F;
    const int first = static_cast<int>(inside);
    return {first, std::min(first + 1, size - 1), inside - static_cast<float>(first)};
}

Colour mix(const Colour& a, const Colour& b, float share) {
    return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
            a.blue + (b.blue - a.blue) * share, a.alpha + (b.alpha - a.alpha) * share};
}

std::uint8_t level(float value) {
    const float saturated = value > 0.0F ? std::min(value, 1.0F) : 0.0F;
    return static_cast<std::uint8_t>(saturated * 255.0F + 0.5F);
}

} // namespace

Colour fromBgra(Bgra pixel) {
    constexpr float unit = 1.0F / 255.0F;
    return {static_cast<float>(pixel.red) * unit, static_cast<float>(pixel.green) * unit,
            static_cast<float>(pixel.blue) * unit, static_cast<float>(pixel.alpha) * unit};
}

Bgra toBgra(Colour colour) {
    return {level(colour.blue), level(colour.green), level(colour.red), level(colour.alpha)};
}

Colour sampleBilinear(const Picture& picture, float u, float v) {
    const Neighbours x = neighbours(u, picture.width);
    const Neighbours y = neighbours(v, picture.height);
    const Colour upper =
        mix(fromBgra(picture.at(x.first, y.first)), fromBgra(picture.at(x.second, y.first)), x.share);
    const Colour lower =
        mix(fromBgra(picture.at(x.first, y.second)), fromBgra(picture.at(x.second, y.second)), x.share);
    return mix(upper, lower, y.share);
}

} // namespace tarvo::render::reference
