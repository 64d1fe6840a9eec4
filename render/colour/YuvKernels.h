#pragma once

// A vector of 32-bit pixels as it is stored has neighbours in its lanes. So that no vector needs to be put in
// order across lanes, a pair of them is made of channels, 16 bits each, whose lanes hold four neighbours of
// the first and then four of the second.

#include "render/colour/VectorTypes.h"

namespace tarvo::render {
namespace {

/// Channels put together to pixels, the first and the second half of each lane.
template<typename Set>
struct PixelHalves {
    Longs<Set> first;
    Longs<Set> second;

    /// Saturates the channels.
    PixelHalves(Words<Set> blue, Words<Set> green, Words<Set> red, Words<Set> alpha) {
        const Bytes<Set> blueRed = Set::packed(blue, red);
        const Bytes<Set> greenAlpha = Set::packed(green, alpha);
        const auto blueGreen = Words<Set>(Set::lowInTurns(blueRed, greenAlpha));
        const auto redAlpha = Words<Set>(Set::highInTurns(blueRed, greenAlpha));
        first = Longs<Set>(Set::lowInTurns(blueGreen, redAlpha));
        second = Longs<Set>(Set::highInTurns(blueGreen, redAlpha));
    }
};

/// The product, 2^15 being 1, rounded.
template<typename Set>
Words<Set> scaled(Words<Set> values, std::int16_t factor) {
    return Set::multiplied(values, Words<Set>{} + factor);
}

/// From the chroma of two rows, each pixel's own sample and the neighbour on its side, the mix with weights
/// of 9, 3, 3 and 1, `unit` times that, less the half of full scale.
template<typename Set>
Words<Set> mixed(Bytes<Set> nearRow, Bytes<Set> farRow, int unit) {
    const auto weights = [](int own, int neighbour) {
        return Bytes<Set>(Words<Set>{} + static_cast<std::int16_t>(own | neighbour << 8));
    };
    return Set::multipliedBytes(nearRow, weights(9 * unit, 3 * unit)) +
           Set::multipliedBytes(farRow, weights(3 * unit, unit)) - static_cast<std::int16_t>(2040 * unit);
}

/// A vector of channels' pixels, with Cr eightfold and Cb fourfold its sixteenths.
template<typename Set>
void storeYv12(std::uint8_t* target, const std::uint8_t* lumaBytes, Words<Set> cr, Words<Set> cb) {
    const Words<Set> luma = Set::lumaWords(lumaBytes);
    const Words<Set> ofCr = scaled<Set>(cr, YuvFactors::ofCr);
    const Words<Set> ofBoth = ofCr + scaled<Set>(cb, YuvFactors::ofCb);
    const PixelHalves<Set> pixels(
        luma + scaled<Set>(cb, YuvFactors::blue), luma - scaled<Set>(ofBoth, YuvFactors::green),
        luma + scaled<Set>(ofCr, YuvFactors::red), Words<Set>{} + std::int16_t{255});
    Set::store(target, Bytes<Set>(pixels.first));
    Set::store(target + 16 * Set::lanes, Bytes<Set>(pixels.second));
}

/// Begins to fetch what becomes of `x` two pairs of rows further down, which may be beyond the last: nothing
/// is read. Rows of a small area lie pages apart, which no processor guesses.
template<int columns>
void fetchBelow(const Yv12Stretch& stretch, int x) {
    const auto fetch = [](const std::uint8_t* row, std::ptrdiff_t column, std::ptrdiff_t step) {
        __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(row) +
                                                         static_cast<std::uintptr_t>(column + 2 * step)));
    };
    for (int column = x; column < x + columns; column += 64) {
        fetch(stretch.luma, column, stretch.lumaStep);
        fetch(stretch.nextLuma, column, stretch.lumaStep);
        fetch(stretch.farCr, column / 2, stretch.crStep);
        fetch(stretch.farCb, column / 2, stretch.cbStep);
    }
}

template<typename Set, bool isPair>
void convertBlock(const Yv12Stretch& stretch, int x) {
    for (int part = 0; part < Set::chromaParts; ++part) {
        const auto chroma = [&](const std::uint8_t* row) { return Set::chromaPairs(row + x / 2, part); };
        const Bytes<Set> nearCr = chroma(stretch.nearCr);
        const Bytes<Set> farCr = chroma(stretch.farCr);
        const Bytes<Set> nearCb = chroma(stretch.nearCb);
        const Bytes<Set> farCb = chroma(stretch.farCb);
        const std::ptrdiff_t first = x + part * 8 * Set::lanes;
        storeYv12<Set>(stretch.target + first * 4, stretch.luma + first, mixed<Set>(nearCr, farCr, 8),
                       mixed<Set>(nearCb, farCb, 4));
        if constexpr (isPair)
            storeYv12<Set>(stretch.nextTarget + first * 4, stretch.nextLuma + first,
                           mixed<Set>(farCr, nearCr, 8), mixed<Set>(farCb, nearCb, 4));
    }
}

template<typename Set>
[[gnu::flatten]] int yv12ToBgra(const Yv12Stretch& wanted) {
    Yv12Stretch stretch = wanted; // a copy, as nobody else's stores can change it
    constexpr int block = Set::chromaParts * 8 * Set::lanes;
    if (stretch.nextLuma == nullptr)
        return inBlocks<block>(stretch.columns, [&](int x) { convertBlock<Set, false>(stretch, x); });
    for (int pair = 1;; ++pair, stretch.moveToNextPair()) {
        const int done = inBlocks<block>(stretch.columns, [&](int x) {
            fetchBelow<block>(stretch, x);
            convertBlock<Set, true>(stretch, x);
        });
        if (done == 0 || pair == stretch.pairs)
            return done;
    }
}

template<typename Set>
Floats<Set> byteOf(Longs<Set> words, int shift) {
    return __builtin_convertvector((words >> shift) & 0xFF, Floats<Set>);
}

/// Both lumas with what chroma adds, of 256, brought to levels. Dividing by 256 and then multiplying with 255
/// is the same, 256 being a power of two.
template<typename Set>
Words<Set> storedOf256(Floats<Set> even, Floats<Set> odd) {
    return Set::rounded(even * (255.0F / 256.0F), odd * (255.0F / 256.0F));
}

/// 8 pixels a lane. The same operations in the same order as in the plain rows.
template<typename Set>
void convertWords(const std::uint8_t* bytes, std::uint8_t* target) {
    const Longs<Set> words = Set::loadApart(bytes);
    const Floats<Set> even = byteOf<Set>(words, 0);
    const Floats<Set> odd = byteOf<Set>(words, 16);
    const Floats<Set> u = byteOf<Set>(words, 8) - 128.0F;
    const Floats<Set> v = byteOf<Set>(words, 24) - 128.0F;
    const PixelHalves<Set> pixels(
        storedOf256<Set>(even + 1.772F * u, odd + 1.772F * u),
        storedOf256<Set>(even - 0.344F * u - 0.714F * v, odd - 0.344F * u - 0.714F * v),
        storedOf256<Set>(even + 1.402F * v, odd + 1.402F * v), Words<Set>{} + std::int16_t{1});
    Set::store(target, Bytes<Set>(Set::lowInTurns(pixels.first, pixels.second)));
    Set::store(target + 16 * Set::lanes, Bytes<Set>(Set::highInTurns(pixels.first, pixels.second)));
}

template<typename Set>
[[gnu::flatten]] int yuy2ToBgra(const std::uint8_t* words, std::uint8_t* target, int pixels) {
    return inBlocks<8 * Set::lanes>(
        pixels / 2 * 2, [&](std::ptrdiff_t x) { convertWords<Set>(words + x * 2, target + x * 4); });
}

} // namespace
} // namespace tarvo::render
