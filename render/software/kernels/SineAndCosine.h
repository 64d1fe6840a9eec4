#pragma once

// Also included by files that are compiled for one instruction set: see ArcTangent.h.

namespace tarvo::render::software {

struct SineAndCosine {
    float sine;
    float cosine;
};

/// Both to 3e-7 for angles up to a thousand turns; beyond that the angle itself has no such digits, and what
/// comes out is any number or none.
///
/// Angles are taken to within an eighth of a turn from a multiple of a quarter turn, the multiple being
/// subtracted in three parts of which the first two are exact, and the series of both functions summed as far
/// as single precision sees.
[[gnu::always_inline]] static inline SineAndCosine sineAndCosine(float angle) {
    constexpr float quartersPerRadian = 0.636619772F;
    // Adding it leaves no room for digits behind the point, and its last bits count.
    constexpr float wholeNumbers = 12582912.0F;
    const float shifted = angle * quartersPerRadian + wholeNumbers;
    const float quarters = shifted - wholeNumbers;
    const float rest =
        ((angle - quarters * 1.5703125F) - quarters * 4.83751297e-4F) - quarters * 7.54978995e-8F;
    const float square = rest * rest;
    const float sine =
        rest + rest * square *
                   (-0.166666667F +
                    square * (8.33333333e-3F + square * (-1.98412698e-4F + square * 2.75573192e-6F)));
    const float cosine =
        1.0F - 0.5F * square +
        square * square *
            (4.16666667e-2F +
             square * (-1.38888889e-3F + square * (2.48015873e-5F - square * 2.75573192e-7F)));
    const int quarter = __builtin_bit_cast(int, shifted);
    const bool isOdd = (quarter & 1) != 0;
    const float first = isOdd ? cosine : sine;
    const float second = isOdd ? sine : cosine;
    return {(quarter & 2) != 0 ? -first : first, ((quarter + 1) & 2) != 0 ? -second : second};
}

} // namespace tarvo::render::software
