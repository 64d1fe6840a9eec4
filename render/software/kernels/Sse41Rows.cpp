// Compiled for SSSE3 and SSE4.1.
#include "render/software/kernels/RowTable.h"

#include <smmintrin.h>

namespace tarvo::render::software {
namespace {

/// Two neighbouring pixels from each of two places.
[[gnu::always_inline]] inline __m128i pixelPairs(const std::uint8_t* pixels, const std::int32_t* offsets) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(pixels + offsets[0]));
    return _mm_castpd_si128(
        _mm_loadh_pd(_mm_castsi128_pd(first), reinterpret_cast<const double*>(pixels + offsets[1])));
}

/// The mix of each channel over a pair, 255-fold, less the half of full scale.
[[gnu::always_inline]] inline __m128i mixAcross(__m128i pairs, __m128i shares) {
    const __m128i byChannel = _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
    // The multiplication wants one factor with a sign: pixels less 128.
    const __m128i centred =
        _mm_xor_si128(_mm_shuffle_epi8(pairs, byChannel), _mm_set1_epi8(static_cast<char>(0x80)));
    return _mm_maddubs_epi16(shares, centred);
}

/// Two pixels, a channel in 16 bits, 255-fold, less the half of full scale, 32640.
[[gnu::always_inline]] inline __m128i mixTwo(const std::uint8_t* pixels, std::ptrdiff_t pitch,
                                             const std::int32_t* offsets, const std::uint16_t* shares255) {
    std::int32_t both = 0;
    __builtin_memcpy(&both, shares255, sizeof(both));
    const __m128i fractions = _mm_cvtsi32_si128(both);
    const __m128i right =
        _mm_shuffle_epi8(fractions, _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 2, 2, 2, 2, 2, 2, 2, 2));
    const __m128i down = _mm_srli_epi16(
        _mm_shuffle_epi8(fractions, _mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 3, 3, 3, 3, 3, 3, 3, 3)), 1);
    const __m128i shares = _mm_xor_si128(right, _mm_set1_epi16(0x00FF));
    const __m128i above = mixAcross(pixelPairs(pixels, offsets), shares);
    const __m128i below = mixAcross(pixelPairs(pixels + pitch, offsets), shares);
    const __m128i up = _mm_xor_si128(down, _mm_set1_epi16(0x7FFF));
    return _mm_add_epi16(_mm_mulhrs_epi16(above, up), _mm_mulhrs_epi16(below, down));
}

/// From 255-fold levels less `offset`, which saturate where 16 bits end.
template<int offset>
[[gnu::always_inline]] inline __m128i levelsOf(__m128i mix) {
    const __m128i half = _mm_set1_epi16(static_cast<short>(offset + 127));
    const __m128i raised = offset == 0 ? _mm_adds_epu16(mix, half) : _mm_add_epi16(mix, half);
    return _mm_mulhi_epu16(raised, _mm_set1_epi16(257));
}

void sample(const SampleBlock& block) {
    sampleInStrips<4>(
        block, [](const std::int32_t* offsets) __attribute__((always_inline)) {
            const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(offsets));
            return _mm_movemask_ps(_mm_castsi128_ps(four)) == 0;
        },
        [&](const std::int32_t* offsets, const std::uint16_t* fractions,
            std::uint8_t* target) __attribute__((always_inline)) {
            const auto levels = [&](int i) __attribute__((always_inline)) {
                return levelsOf<centre>(mixTwo(block.pixels, block.pitch, offsets + i, fractions + i));
            };
            _mm_storeu_si128(reinterpret_cast<__m128i_u*>(target), _mm_packus_epi16(levels(0), levels(2)));
        });
}

/// What a layer adds to two pixels.
[[gnu::always_inline]] inline __m128i weightedTwo(const MixRow& row, const MixLayer& layer, int i) {
    std::int32_t both = 0;
    __builtin_memcpy(&both, layer.weights + i, sizeof(both));
    const __m128i weights = _mm_shuffle_epi8(_mm_cvtsi32_si128(both),
                                             _mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3));
    const __m128i mix = mixTwo(row.pixels, row.pitch, layer.offsets + i, layer.fractions + i);
    return _mm_mulhi_epu16(_mm_add_epi16(mix, _mm_set1_epi16(centre)), weights);
}

/// False, and nothing written, where a layer sees only some of the four pixels.
bool mixFour(const MixRow& row, int i) {
    __m128i first = _mm_setzero_si128();
    __m128i second = _mm_setzero_si128();
    for (int k = 0; k < row.layerCount; ++k) {
        const MixLayer& layer = row.layers[k];
        const int unseen = _mm_movemask_ps(
            _mm_castsi128_ps(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(layer.offsets + i))));
        if (unseen == 0xF)
            continue;
        if (unseen != 0)
            return false;
        first = _mm_adds_epu16(first, weightedTwo(row, layer, i));
        second = _mm_adds_epu16(second, weightedTwo(row, layer, i + 2));
    }
    const __m128i levels = _mm_packus_epi16(levelsOf<0>(first), levelsOf<0>(second));
    const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000U));
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(row.target + static_cast<std::ptrdiff_t>(i) * 4),
                     _mm_or_si128(levels, opaque));
    return true;
}

void mixLayers(const MixRow& row) {
    constexpr int block = 4;
    int i = 0;
    for (; i + block <= row.count; i += block) {
        if (!mixFour(row, i))
            mixLayersPlainly(row, i, i + block);
    }
    mixLayersPlainly(row, i, row.count);
}

} // namespace

constinit const RowKernels sse41Rows = rowsWith(packPlainly, sample, mixLayers);

} // namespace tarvo::render::software
