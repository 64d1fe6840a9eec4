#include "render/software/kernels/Sampling.h"

#include <cmath>
#include <cstring>

namespace tarvo::render::software::plain {
namespace {

/// A position in 1/256 pixel from the centre of the first pixel, kept between the outermost centres.
int fixedPosition(float position, float last) {
    const float fixed = (position - 0.5F) * 256.0F;
    const float inside = fixed > 0.0F ? (fixed < last ? fixed : last) : 0.0F;
    return static_cast<int>(inside + 0.5F);
}

} // namespace

void pack(const PackRow& row) {
    const auto lastX = static_cast<float>((row.width - 1) * 256);
    const auto lastY = static_cast<float>((row.height - 1) * 256);
    for (int i = 0; i < row.count; ++i) {
        const int x = fixedPosition(row.x[i], lastX);
        const int y = fixedPosition(row.y[i], lastY);
        const bool isSomewhere = row.x[i] == row.x[i] && row.y[i] == row.y[i];
        row.offsets[i] = isSomewhere ? (y >> 8) * row.pitch + (x >> 8) * 4 : -1;
        row.fractions[i] = static_cast<std::uint16_t>((x & 255) | (y & 255) << 8);
    }
}

void sample(const SampleRow& row) {
    for (int i = 0; i < row.count; ++i) {
        std::uint8_t* const target = row.target + static_cast<std::ptrdiff_t>(i) * 4;
        if (row.offsets[i] < 0) {
            std::memcpy(target, &row.outside, 4);
            continue;
        }
        const std::uint8_t* const upper = row.pixels + row.offsets[i];
        const std::uint8_t* const lower = upper + row.pitch;
        const int right = row.fractions[i] & 255;
        const int down = row.fractions[i] >> 8;
        for (int channel = 0; channel < 4; ++channel) {
            const int above = upper[channel] * (256 - right) + upper[channel + 4] * right;
            const int below = lower[channel] * (256 - right) + lower[channel + 4] * right;
            target[channel] = static_cast<std::uint8_t>((above * (256 - down) + below * down + 32768) >> 16);
        }
    }
}

} // namespace tarvo::render::software::plain
