#include "render/software/kernels/YuvConversion.h"

#include "render/software/kernels/Blending.h"
#include "render/software/kernels/LinearSampler.h"

#include <cstring>

namespace tarvo::render::software {
namespace {

void store(const Colour& colour, std::uint8_t* target) {
    const Bgra pixel = storedColour(colour);
    std::memcpy(target, &pixel, 4);
}

} // namespace

void yv12Row(const Yv12Source& source, const PlaceRow& places, std::uint8_t* target) {
    for (int i = 0; i < places.count; ++i, target += 4) {
        const auto sample = [&](std::size_t plane) {
            const int divisor = plane == 0 ? 1 : 2;
            return CLinearSampler<std::uint8_t, 1>(source.planes[plane], source.steps[plane],
                                                   source.width / divisor, source.height / divisor,
                                                   places.u[i], places.v[i])
                       .channel(0) /
                   255.0F;
        };
        const float y = sample(0);
        const float a = sample(1) - 0.5F;
        const float b = sample(2) - 0.5F;
        store({y + 1.370705F * a, y - 0.698001F * a - 0.337633F * b, y + 1.732446F * b, 1.0F}, target);
    }
}

void yuy2Row(const Yuy2Source& source, int x, int y, int count, std::uint8_t* target) {
    const std::size_t words = source.length / 4;
    for (int i = 0; i < count; ++i, target += 4) {
        // In 32 bits with wrap-around, like the shader program.
        const std::uint32_t pixel = static_cast<std::uint32_t>(y) * static_cast<std::uint32_t>(source.width) +
                                    static_cast<std::uint32_t>(x) + static_cast<std::uint32_t>(i);
        const bool isThere = pixel / 2 < words;
        const std::uint8_t* const word = source.bytes + (isThere ? std::size_t{pixel / 2} * 4 : 0);
        const auto byte = [&](std::size_t index) { return isThere ? static_cast<float>(word[index]) : 0.0F; };
        const float luma = byte(pixel % 2 * 2);
        const float cb = byte(1) - 128.0F;
        const float cr = byte(3) - 128.0F;
        // 256, not 255, and alpha with the rest: deliberate.
        constexpr float unit = 1.0F / 256.0F;
        store({(luma + 1.402F * cr) * unit, (luma - 0.344F * cb - 0.714F * cr) * unit,
               (luma + 1.772F * cb) * unit, unit},
              target);
    }
}

} // namespace tarvo::render::software
