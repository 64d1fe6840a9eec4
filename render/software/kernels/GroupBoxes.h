#pragma once

// For files that are compiled for AVX2 or more: see PositionRows.h.

#include "render/software/kernels/SampleRows.h"

#include <immintrin.h>

namespace tarvo::render::software {
namespace {

/// The box of places, column and line in 16 bits each: `low` has the least of them on any lanes, `high` the
/// complements of the greatest. All ones stand for a place that is nowhere.
GroupBox boxFrom(__m256i low, __m256i high) {
    const __m256i both = _mm256_min_epu16(_mm256_unpacklo_epi64(low, high), _mm256_unpackhi_epi64(low, high));
    const __m128i four = _mm_min_epu16(_mm256_castsi256_si128(both), _mm256_extracti128_si256(both, 1));
    const __m128i two = _mm_min_epu16(four, _mm_shuffle_epi32(four, _MM_SHUFFLE(2, 3, 0, 1)));
    const int first = _mm_cvtsi128_si32(two);
    const int last = ~_mm_extract_epi32(two, 2);
    if (first == -1)
        return {noColumn, noColumn, -1, -1};
    return {first & 0xFFFF, first >> 16 & 0xFFFF, last & 0xFFFF, last >> 16 & 0xFFFF};
}

} // namespace
} // namespace tarvo::render::software
