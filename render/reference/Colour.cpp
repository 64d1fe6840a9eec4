#include "render/reference/Colour.h"

#include <algorithm>

namespace tarvo::render::reference {
namespace {

float saturated(float value) {
    // Compared this way round, what is no number falls to 0.
    return value > 0.0F ? std::min(value, 1.0F) : 0.0F;
}

std::uint8_t level(float value) {
    return static_cast<std::uint8_t>(saturated(value) * 255.0F + 0.5F);
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

Bgra blended(Colour source, Bgra target) {
    const Colour below = fromBgra(target);
    const float share = saturated(source.alpha);
    const auto mix = [share](float over, float under) {
        return share * saturated(over) + (1.0F - share) * under;
    };
    return toBgra(
        {mix(source.red, below.red), mix(source.green, below.green), mix(source.blue, below.blue), share});
}

} // namespace tarvo::render::reference
