#pragma once

// For every file that is compiled for one instruction set: see PositionRows.h. What packs positions and
// samples pixels by them, as plain loops.

#include "render/software/kernels/RowKernels.h"

namespace tarvo::render::software {
namespace {

/// The least and the greatest position that looks at something; what is no number is neither.
struct Bounds {
    float low;
    float highX;
    float highY;

    explicit Bounds(const PackRow& row)
        : low(row.isBounded ? 0.0F : -__builtin_inff()), highX(highest(row.width, row.isBounded)),
          highY(highest(row.height, row.isBounded)) {}

private:
    /// The number before a size, which is whole.
    static float highest(int size, bool isBounded) {
        if (!isBounded)
            return __builtin_inff();
        return __builtin_bit_cast(float, __builtin_bit_cast(std::int32_t, static_cast<float>(size)) - 1);
    }
};

/// Beyond every picture.
constexpr std::int32_t noColumn = 1 << 20;

/// Kept between the outermost centres, from the first one on.
[[gnu::always_inline]] inline float fromFirstCentre(float position, float last) {
    const float from = position - 0.5F;
    return from > 0.0F ? (from < last ? from : last) : 0.0F;
}

/// One group, which begins at a multiple of its length.
void packGroup(const PackRow& row, int begin, int end) {
    const float* __restrict const x = row.x;
    const float* __restrict const y = row.y;
    std::int32_t* __restrict const offsets = row.offsets;
    std::uint16_t* __restrict const fractions = row.fractions;
    const auto lastX = static_cast<float>(row.width - 1);
    const auto lastY = static_cast<float>(row.height - 1);
    const std::int32_t pitch = row.pitch;
    const Bounds bounds(row);
    std::int32_t left = noColumn;
    std::int32_t top = noColumn;
    std::int32_t right = -1;
    std::int32_t bottom = -1;
    for (int i = begin; i < end; ++i) {
        const float insideX = fromFirstCentre(x[i], lastX);
        const float insideY = fromFirstCentre(y[i], lastY);
        const auto column = static_cast<std::int32_t>(insideX);
        const auto line = static_cast<std::int32_t>(insideY);
        const auto shareX = static_cast<std::int32_t>((insideX - static_cast<float>(column)) * 255.0F + 0.5F);
        const auto shareY = static_cast<std::int32_t>((insideY - static_cast<float>(line)) * 255.0F + 0.5F);
        const bool isSomewhere =
            (x[i] >= bounds.low) & (x[i] <= bounds.highX) & (y[i] >= bounds.low) & (y[i] <= bounds.highY);
        offsets[i] = isSomewhere ? line * pitch + column * 4 : -1;
        fractions[i] = static_cast<std::uint16_t>(shareX | shareY << 8);
        const std::int32_t leastColumn = isSomewhere ? column : noColumn;
        const std::int32_t leastLine = isSomewhere ? line : noColumn;
        const std::int32_t mostColumn = isSomewhere ? column : -1;
        const std::int32_t mostLine = isSomewhere ? line : -1;
        left = leastColumn < left ? leastColumn : left;
        top = leastLine < top ? leastLine : top;
        right = mostColumn > right ? mostColumn : right;
        bottom = mostLine > bottom ? mostLine : bottom;
    }
    if (row.boxes != nullptr)
        row.boxes[begin / groupLength] = {left, top, right, bottom};
}

[[maybe_unused]] void packPlainly(const PackRow& row) {
    const int whole = row.count / groupLength * groupLength;
    for (int begin = 0; begin < whole; begin += groupLength)
        packGroup(row, begin, begin + groupLength);
    if (whole < row.count)
        packGroup(row, whole, row.count);
}

/// Begins to fetch what the later ones of `count` pixels from pixel i on look at. Every fourth will do: a
/// line of the cache holds sixteen pixels side by side.
[[gnu::always_inline, maybe_unused]] inline void fetchLater(const SampleRow& row, int i, int count) {
    if (row.later == nullptr)
        return;
    for (int k = i; k < i + count; k += 4)
        __builtin_prefetch(row.pixels + row.later[k]);
}

/// The four pixels around a position.
struct FourPixels {
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    std::uint32_t right;
    std::uint32_t down;

    [[gnu::always_inline]] FourPixels(const std::uint8_t* pixels, std::ptrdiff_t pitch, std::int32_t offset,
                                      std::uint16_t fractions)
        : upper(pixels + offset), lower(upper + pitch), right(fractions & 255U),
          down((fractions >> 8U) * 257U) {}

    /// 255-fold.
    [[gnu::always_inline]] std::uint32_t mix(int channel) const {
        const std::uint32_t above = upper[channel] * (255U - right) + upper[channel + 4] * right;
        const std::uint32_t below = lower[channel] * (255U - right) + lower[channel + 4] * right;
        return (above * (65535U - down) >> 16) + (below * down >> 16);
    }
};

/// Pixels `begin` … `end` − 1 one by one.
void samplePlainly(const SampleRow& row, int begin, int end) {
    for (int i = begin; i < end; ++i) {
        std::uint8_t* const target = row.target + static_cast<std::ptrdiff_t>(i) * 4;
        if (row.offsets[i] < 0) {
            __builtin_memcpy(target, &row.outside, 4);
            continue;
        }
        const FourPixels pixels(row.pixels, row.pitch, row.offsets[i], row.fractions[i]);
        for (int channel = 0; channel < 4; ++channel)
            target[channel] = static_cast<std::uint8_t>((pixels.mix(channel) + 127U) * 257U >> 16);
    }
}

/// The same of several layers.
void mixLayersPlainly(const MixRow& row, int begin, int end) {
    for (int i = begin; i < end; ++i) {
        std::uint32_t sums[4] = {0, 0, 0, 0};
        for (int layer = 0; layer < row.layerCount; ++layer) {
            const MixLayer& each = row.layers[layer];
            if (each.offsets[i] < 0)
                continue;
            const FourPixels pixels(row.pixels, row.pitch, each.offsets[i], each.fractions[i]);
            for (int channel = 0; channel < 3; ++channel) {
                const std::uint32_t sum = sums[channel] + (pixels.mix(channel) * each.weights[i] >> 16);
                sums[channel] = sum < 65535U ? sum : 65535U;
            }
        }
        std::uint8_t* const target = row.target + static_cast<std::ptrdiff_t>(i) * 4;
        for (int channel = 0; channel < 3; ++channel) {
            const std::uint32_t sum = sums[channel] + 127U < 65535U ? sums[channel] + 127U : 65535U;
            const std::uint32_t level = sum * 257U >> 16;
            target[channel] = static_cast<std::uint8_t>(level < 255U ? level : 255U);
        }
        target[3] = 255;
    }
}

} // namespace
} // namespace tarvo::render::software
