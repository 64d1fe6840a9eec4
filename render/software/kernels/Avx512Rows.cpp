// Compiled for AVX-512 F, BW and VL.
#include "render/software/kernels/PositionRows.h"

#include <immintrin.h>

namespace tarvo::render::software {
namespace {

/// Two neighbouring pixels from each of eight places.
[[gnu::always_inline]] inline __m512i pixelPairs(const std::uint8_t* pixels, __m256i offsets) {
    return _mm512_i32gather_epi64(offsets, pixels, 1);
}

/// The mix of each channel over a pair, 255-fold: 0 … 65025.
[[gnu::always_inline]] inline __m512i mixAcross(__m512i pairs, __m512i shares) {
    const __m512i byChannel =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    // The multiplication wants one factor with a sign: pixels less 128, which the shares make 32640.
    const __m512i centred =
        _mm512_xor_si512(_mm512_shuffle_epi8(pairs, byChannel), _mm512_set1_epi8(static_cast<char>(0x80)));
    return _mm512_add_epi16(_mm512_maddubs_epi16(shares, centred), _mm512_set1_epi16(32640));
}

/// Eight pixels, a channel in 16 bits.
[[gnu::always_inline]] inline __m512i sampleEight(const SampleRow& row, int i) {
    const __m512i fractions =
        _mm512_cvtepu16_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(row.fractions + i)));
    const __m512i right = _mm512_shuffle_epi8(
        fractions, _mm512_broadcast_i32x4(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 8, 8, 8, 8, 8, 8, 8, 8)));
    const __m512i down = _mm512_shuffle_epi8(
        fractions, _mm512_broadcast_i32x4(_mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 9, 9, 9, 9, 9, 9, 9, 9)));
    const __m512i shares = _mm512_xor_si512(right, _mm512_set1_epi16(0x00FF));
    const __m256i offsets = _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(row.offsets + i));
    const __m512i above = mixAcross(pixelPairs(row.pixels, offsets), shares);
    const __m512i below = mixAcross(pixelPairs(row.pixels + row.pitch, offsets), shares);
    const __m512i up = _mm512_xor_si512(down, _mm512_set1_epi16(-1));
    const __m512i mix = _mm512_add_epi16(_mm512_mulhi_epu16(above, up), _mm512_mulhi_epu16(below, down));
    return _mm512_mulhi_epu16(_mm512_add_epi16(mix, _mm512_set1_epi16(127)), _mm512_set1_epi16(257));
}

void sample(const SampleRow& row) {
    constexpr int block = 16;
    int i = 0;
    for (; i + block <= row.count; i += block) {
        const __m512i offsets = _mm512_loadu_si512(row.offsets + i);
        if (_mm512_cmplt_epi32_mask(offsets, _mm512_setzero_si512()) != 0) {
            samplePlainly(row, i, i + block);
            continue;
        }
        const __m512i levels = _mm512_packus_epi16(sampleEight(row, i), sampleEight(row, i + 8));
        // Packing takes turns in every quarter.
        const __m512i inOrder = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), levels);
        _mm512_storeu_si512(row.target + static_cast<std::ptrdiff_t>(i) * 4, inOrder);
    }
    samplePlainly(row, i, row.count);
}

} // namespace

constinit const RowKernels avx512Rows = rowsWith(sample);

} // namespace tarvo::render::software
