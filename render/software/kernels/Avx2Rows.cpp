// Compiled for AVX2.
#include "render/software/kernels/PositionRows.h"

#include <immintrin.h>

namespace tarvo::render::software {
namespace {

__m256i inBothHalves(__m128i bytes) {
    return _mm256_broadcastsi128_si256(bytes);
}

/// Two neighbouring pixels from each of four places.
[[gnu::always_inline]] inline __m256i pixelPairs(const std::uint8_t* pixels, const std::int32_t* offsets) {
    const auto pairOfPairs = [&](int i) {
        const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(pixels + offsets[i]));
        return _mm_castpd_si128(
            _mm_loadh_pd(_mm_castsi128_pd(first), reinterpret_cast<const double*>(pixels + offsets[i + 1])));
    };
    return _mm256_set_m128i(pairOfPairs(2), pairOfPairs(0));
}

/// The mix of each channel over a pair, 255-fold: 0 … 65025.
[[gnu::always_inline]] inline __m256i mixAcross(__m256i pairs, __m256i shares) {
    const __m256i byChannel =
        inBothHalves(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    // The multiplication wants one factor with a sign: pixels less 128, which the shares make 32640.
    const __m256i centred =
        _mm256_xor_si256(_mm256_shuffle_epi8(pairs, byChannel), _mm256_set1_epi8(static_cast<char>(0x80)));
    return _mm256_add_epi16(_mm256_maddubs_epi16(shares, centred), _mm256_set1_epi16(32640));
}

/// Four pixels, a channel in 16 bits.
[[gnu::always_inline]] inline __m256i sampleFour(const SampleRow& row, int i) {
    const __m256i fractions =
        _mm256_cvtepu16_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(row.fractions + i)));
    const __m256i right = _mm256_shuffle_epi8(
        fractions, inBothHalves(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 8, 8, 8, 8, 8, 8, 8, 8)));
    const __m256i down = _mm256_shuffle_epi8(
        fractions, inBothHalves(_mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 9, 9, 9, 9, 9, 9, 9, 9)));
    const __m256i shares = _mm256_xor_si256(right, _mm256_set1_epi16(0x00FF));
    const __m256i above = mixAcross(pixelPairs(row.pixels, row.offsets + i), shares);
    const __m256i below = mixAcross(pixelPairs(row.pixels + row.pitch, row.offsets + i), shares);
    const __m256i up = _mm256_xor_si256(down, _mm256_set1_epi16(-1));
    const __m256i mix = _mm256_add_epi16(_mm256_mulhi_epu16(above, up), _mm256_mulhi_epu16(below, down));
    return _mm256_mulhi_epu16(_mm256_add_epi16(mix, _mm256_set1_epi16(127)), _mm256_set1_epi16(257));
}

void sample(const SampleRow& row) {
    constexpr int block = 8;
    int i = 0;
    for (; i + block <= row.count; i += block) {
        const __m256i offsets = _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(row.offsets + i));
        if (_mm256_movemask_epi8(_mm256_srai_epi32(offsets, 31)) != 0) {
            samplePlainly(row, i, i + block);
            continue;
        }
        const __m256i levels = _mm256_packus_epi16(sampleFour(row, i), sampleFour(row, i + 4));
        // Packing takes turns in either half.
        const __m256i inOrder = _mm256_permute4x64_epi64(levels, 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(row.target + static_cast<std::ptrdiff_t>(i) * 4),
                            inOrder);
    }
    samplePlainly(row, i, row.count);
}

} // namespace

constinit const RowKernels avx2Rows = rowsWith(sample);

} // namespace tarvo::render::software
