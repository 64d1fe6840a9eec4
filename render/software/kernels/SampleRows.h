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

/// A vector that is to stay in its register: compilers take some constants for free and make them again at
/// every use.
template<typename Vector>
[[gnu::always_inline]] inline Vector inRegister(Vector vector) {
    asm("" : "+x"(vector));
    return vector;
}

/// The half of full scale, 255-fold.
constexpr int centre = 32640;

/// The four pixels around a position.
struct FourPixels {
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    std::int32_t right;
    std::int32_t down;

    [[gnu::always_inline]] FourPixels(const std::uint8_t* pixels, std::ptrdiff_t pitch, std::int32_t offset,
                                      std::uint16_t fractions)
        : upper(pixels + offset), lower(upper + pitch), right(fractions & 255),
          down(((fractions >> 8) * 257) >> 1) {}

    /// 255-fold.
    [[gnu::always_inline]] std::uint32_t mix(int channel) const {
        const std::int32_t above = across(upper + channel) * (32767 - down);
        const std::int32_t below = across(lower + channel) * down;
        return static_cast<std::uint32_t>(((above + 16384) >> 15) + ((below + 16384) >> 15) + centre);
    }

private:
    [[gnu::always_inline]] std::int32_t across(const std::uint8_t* left) const {
        return (left[0] - 128) * (255 - right) + (left[4] - 128) * right;
    }
};

/// Pixels `begin` … `end` − 1 of a row one by one.
[[gnu::noinline]] void samplePlainly(const SampleBlock& block, int row, int begin, int end) {
    const std::int32_t* const offsets = block.offsets + row * block.step;
    const std::uint16_t* const fractions = block.fractions + row * block.step;
    for (int i = begin; i < end; ++i) {
        std::uint8_t* const target =
            block.target + row * block.targetPitch + static_cast<std::ptrdiff_t>(i) * 4;
        if (offsets[i] < 0) {
            __builtin_memcpy(target, &block.outside, 4);
            continue;
        }
        const FourPixels pixels(block.pixels, block.pitch, offsets[i], fractions[i]);
        for (int channel = 0; channel < 4; ++channel)
            target[channel] = static_cast<std::uint8_t>((pixels.mix(channel) + 127U) * 257U >> 16);
    }
}

/// Begins to fetch what is looked at by `count` positions. Every fourth will do: a line of the cache holds
/// sixteen pixels side by side.
template<int count>
[[gnu::always_inline]] inline void fetch(const std::uint8_t* pixels, const std::int32_t* offsets) {
    for (int i = 0; i < count; i += 4)
        __builtin_prefetch(pixels + offsets[i]);
}

/// Begins to fetch what lies so many elements ahead, which may be beyond the end: nothing is read.
template<typename Element>
[[gnu::always_inline]] inline void fetchAhead(const Element* place, std::uintptr_t elements) {
    __builtin_prefetch(
        reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(place) + elements * sizeof(Element)));
}

/// A block in strips of `length` pixels of a row: `store(offsets, fractions, target)` for those that look
/// somewhere all over, as isSomewhere(offsets) tells, and the rest one by one. Nothing is called in the inner
/// loop, so that what `store` needs each time stays in registers.
template<int length, typename IsSomewhere, typename Store>
[[gnu::always_inline, maybe_unused]] inline void sampleInStrips(const SampleBlock& block,
                                                                IsSomewhere isSomewhere, Store store) {
    // Six rows of a wide block: about as much ahead as memory takes to answer.
    constexpr std::ptrdiff_t ahead = 768;
    // Positions themselves, of which the next are looked at by then: with many transforms they come from
    // main memory, and what processors guess ends with each page.
    constexpr std::uintptr_t positionsAhead = 1536;
    const std::uint8_t* const pixels = block.pixels;
    const int whole = block.count / length * length;
    std::ptrdiff_t left = (block.rows - 1) * block.step + block.count + block.following;
    for (int row = 0; row < block.rows; ++row, left -= block.step) {
        const std::int32_t* const offsets = block.offsets + row * block.step;
        const std::uint16_t* const fractions = block.fractions + row * block.step;
        std::uint8_t* const target = block.target + row * block.targetPitch;
        const bool fetches = left >= ahead + block.count;
        int i = 0;
        while (i < whole) {
            for (; i < whole && isSomewhere(offsets + i); i += length) {
                if (fetches)
                    fetch<length>(pixels, offsets + i + ahead);
                fetchAhead(offsets + i, positionsAhead);
                fetchAhead(fractions + i, positionsAhead);
                store(offsets + i, fractions + i, target + static_cast<std::ptrdiff_t>(i) * 4);
            }
            if (i < whole) {
                samplePlainly(block, row, i, i + length);
                i += length;
            }
        }
        if (i < block.count)
            samplePlainly(block, row, i, block.count);
    }
}

/// Pixels `begin` … `end` − 1 of several layers one by one.
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
