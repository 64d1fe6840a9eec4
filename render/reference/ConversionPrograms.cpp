#include "render/reference/ConversionPrograms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tarvo::render::reference {
namespace {

// Everywhere here channels are counted in levels, 0 … 255, so that luma is a whole number and rounding a sum
// is rounding what chroma adds.

std::uint8_t saturated(long level) {
    return static_cast<std::uint8_t>(std::clamp(level, 0L, 255L));
}

/// The two chroma samples around a pixel's centre, along one direction, and the share of the second.
struct Neighbours {
    int first;
    int second;
    float share;
};

/// The centre of a pixel, (pixel + 1/2) / pixels of the way, lies at that times `samples` less 1/2 in the row
/// of samples. Over the common denominator this is a fraction of whole numbers.
Neighbours neighbours(int pixel, int pixels, int samples) {
    const std::int64_t numerator = (2LL * pixel + 1) * samples - pixels;
    const std::int64_t denominator = 2LL * pixels;
    if (numerator < 0) {
        return {0, 0, 0.0F};
    }
    const int first = static_cast<int>(numerator / denominator);
    return {first, std::min(first + 1, samples - 1),
            static_cast<float>(numerator % denominator) / static_cast<float>(denominator)};
}

float mix(float a, float b, float share) {
    return a + (b - a) * share;
}

/// The linear sample at a pixel of the luma plane, less one half of full scale.
float chroma(const Plane& plane, const Plane& luma, int x, int y) {
    const Neighbours column = neighbours(x, luma.width, plane.width);
    const Neighbours row = neighbours(y, luma.height, plane.height);
    const auto along = [&](int index) {
        return mix(plane.at(column.first, index), plane.at(column.second, index), column.share);
    };
    return mix(along(row.first), along(row.second), row.share) - 127.5F;
}

} // namespace

Colour yv12Program(const std::array<const Plane*, 3>& planes, int x, int y) {
    const Plane& luma = *planes[0];
    const int level = luma.at(x, y);
    const float a = chroma(*planes[1], luma, x, y);
    const float b = chroma(*planes[2], luma, x, y);
    return fromBgra({saturated(level + std::lrint(1.732446F * b)),
                     saturated(level - std::lrint(0.698001F * a + 0.337633F * b)),
                     saturated(level + std::lrint(1.370705F * a)), 255});
}

Colour yuy2Program(const Yuy2Constants& constants, std::span<const std::uint8_t> bytes, int x, int y) {
    // In 32 bits with wrap-around, like the shader program.
    const std::uint32_t number =
        static_cast<std::uint32_t>(x) + static_cast<std::uint32_t>(y) * constants.width;
    const std::size_t word = static_cast<std::size_t>(number / 2) * 4;
    const auto byteOf = [&](std::size_t index) { return word + 4 <= bytes.size() ? bytes[word + index] : 0; };
    const auto luma = static_cast<float>(byteOf(number % 2 * 2));
    const auto u = static_cast<float>(byteOf(1) - 128);
    const auto v = static_cast<float>(byteOf(3) - 128);
    // 256, not 255, and alpha with the rest: deliberate, frames have always been converted like this.
    const auto stored = [](float value) { return saturated(std::lrint(value / 256.0F * 255.0F)); };
    return fromBgra({stored(luma + 1.772F * u), stored(luma - 0.344F * u - 0.714F * v),
                     stored(luma + 1.402F * v), stored(1.0F)});
}

} // namespace tarvo::render::reference
