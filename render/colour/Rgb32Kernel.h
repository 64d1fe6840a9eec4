#pragma once

#include "render/colour/VectorTypes.h"

namespace tarvo::render {
namespace {

/// Pixels as 16-bit numbers, ready to be multiplied and added in pairs.
template<typename Set>
struct Pixels {
    Words<Set> outer;  ///< b0 and b2
    Words<Set> middle; ///< b1 twice, as the factor of luma, 33030, is too large for one number with sign
};

template<typename Set>
Pixels<Set> loadPixels(const std::uint8_t* bytes) {
    const auto pixels = Longs<Set>(Set::load(bytes));
    const auto twiceMiddle =
        Set::repeated(_mm_setr_epi8(1, -1, 1, -1, 5, -1, 5, -1, 9, -1, 9, -1, 13, -1, 13, -1));
    return {Words<Set>(pixels & 0x00FF00FF), Words<Set>(Set::shuffled(Bytes<Set>(pixels), twiceMiddle))};
}

/// Two 16-bit numbers for the low and the high half of each 32 bits.
template<typename Set>
Words<Set> inTurns(int low, int high) {
    return Words<Set>(Longs<Set>{} + (high * 65536 + (low & 0xFFFF)));
}

/// Adds up products of neighbours.
template<typename Set>
Longs<Set> products(const Pixels<Set>& pixels, Words<Set> outerFactors, Words<Set> middleFactors) {
    return Set::multipliedPairs(pixels.outer, outerFactors) +
           Set::multipliedPairs(pixels.middle, middleFactors);
}

template<typename Set>
Longs<Set> luma(const Pixels<Set>& pixels) {
    const Longs<Set> sum = products<Set>(pixels, inTurns<Set>(16843, 6423), inTurns<Set>(16515, 16515));
    return (sum + 0x108000) >> 16;
}

/// Adds neighbouring pixels of two rows: the sums of the blocks, in each lane two of the first vector and two
/// of the second.
template<typename Set>
Words<Set> blockSums(Words<Set> upper0, Words<Set> upper1, Words<Set> lower0, Words<Set> lower1) {
    const auto columns0 = Longs<Set>(upper0 + lower0);
    const auto columns1 = Longs<Set>(upper1 + lower1);
    return Words<Set>(Set::even(columns0, columns1)) + Words<Set>(Set::odd(columns0, columns1));
}

template<typename Set>
Words<Set> chroma(const Pixels<Set> (&sums)[2], Words<Set> outerFactors, Words<Set> middleFactors) {
    return Set::packed(products<Set>(sums[0], outerFactors, middleFactors) >> 18,
                       products<Set>(sums[1], outerFactors, middleFactors) >> 18);
}

/// 16 columns a lane of two rows, from column x on.
template<typename Set>
void convertBlock(const RowPairToYv12& rows, int x) {
    Words<Set> upperLuma[2];
    Words<Set> lowerLuma[2];
    Pixels<Set> sums[2];
    for (int i = 0; i < 2; ++i) {
        constexpr int vector = 16 * Set::lanes;
        const std::ptrdiff_t place = static_cast<std::ptrdiff_t>(x) * 4 + 2 * i * vector;
        const Pixels<Set> upper0 = loadPixels<Set>(rows.upper + place);
        const Pixels<Set> upper1 = loadPixels<Set>(rows.upper + place + vector);
        const Pixels<Set> lower0 = loadPixels<Set>(rows.lower + place);
        const Pixels<Set> lower1 = loadPixels<Set>(rows.lower + place + vector);
        upperLuma[i] = Set::packed(luma<Set>(upper0), luma<Set>(upper1));
        lowerLuma[i] = Set::packed(luma<Set>(lower0), luma<Set>(lower1));
        sums[i].outer = blockSums<Set>(upper0.outer, upper1.outer, lower0.outer, lower1.outer);
        // Once is enough here; 2050 · 16384 is what is added before dividing by 2^18.
        const auto middle =
            Longs<Set>(blockSums<Set>(upper0.middle, upper1.middle, lower0.middle, lower1.middle));
        sums[i].middle = Words<Set>((middle & 0xFFFF) | 2050 << 16);
    }
    Set::storeFours(rows.upperLuma + x, Set::packed(upperLuma[0], upperLuma[1]));
    Set::storeFours(rows.lowerLuma + x, Set::packed(lowerLuma[0], lowerLuma[1]));
    Set::storeEights(rows.chroma1 + x / 2, rows.chroma2 + x / 2,
                     Set::packed(chroma<Set>(sums, inTurns<Set>(28770, -4653), inTurns<Set>(-24117, 16384)),
                                 chroma<Set>(sums, inTurns<Set>(-9699, 28770), inTurns<Set>(-19071, 16384))));
}

template<typename Set>
[[gnu::flatten]] int rgb32ToYv12(const RowPairToYv12& pair) {
    const RowPairToYv12 rows = pair; // a copy, as nobody else's stores can change it
    return inBlocks<16 * Set::lanes>(rows.columns, [&](int x) { convertBlock<Set>(rows, x); });
}

} // namespace
} // namespace tarvo::render
