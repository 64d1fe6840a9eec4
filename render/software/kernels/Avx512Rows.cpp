// Compiled for AVX-512 F, BW and VL.
#include "render/software/kernels/GroupBoxes.h"
#include "render/software/kernels/RowTable.h"

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

/// Eight pixels, a channel in 16 bits, 255-fold.
[[gnu::always_inline]] inline __m512i mixEight(const std::uint8_t* pixels, std::ptrdiff_t pitch,
                                               const std::int32_t* places, const std::uint16_t* shares255) {
    const __m512i fractions =
        _mm512_cvtepu16_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(shares255)));
    const __m512i right = _mm512_shuffle_epi8(
        fractions, _mm512_broadcast_i32x4(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 8, 8, 8, 8, 8, 8, 8, 8)));
    const __m512i down = _mm512_shuffle_epi8(
        fractions, _mm512_broadcast_i32x4(_mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 9, 9, 9, 9, 9, 9, 9, 9)));
    const __m512i shares = _mm512_xor_si512(right, _mm512_set1_epi16(0x00FF));
    const __m256i offsets = _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(places));
    const __m512i above = mixAcross(pixelPairs(pixels, offsets), shares);
    const __m512i below = mixAcross(pixelPairs(pixels + pitch, offsets), shares);
    const __m512i up = _mm512_xor_si512(down, _mm512_set1_epi16(-1));
    return _mm512_add_epi16(_mm512_mulhi_epu16(above, up), _mm512_mulhi_epu16(below, down));
}

/// From 255-fold levels, saturated on the way as far as 16 bits go.
[[gnu::always_inline]] inline __m512i levelsOf(__m512i mix) {
    return _mm512_mulhi_epu16(_mm512_adds_epu16(mix, _mm512_set1_epi16(127)), _mm512_set1_epi16(257));
}

[[gnu::always_inline]] inline __m512i sampleEight(const SampleRow& row, int i) {
    return levelsOf(mixEight(row.pixels, row.pitch, row.offsets + i, row.fractions + i));
}

void sample(const SampleRow& row) {
    constexpr int block = 16;
    int i = 0;
    for (; i + block <= row.count; i += block) {
        fetchLater(row, i, block);
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

/// What a layer adds to eight pixels.
[[gnu::always_inline]] inline __m512i weightedEight(const MixRow& row, const MixLayer& layer, int i) {
    const __m512i weights = _mm512_shuffle_epi8(
        _mm512_cvtepu16_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(layer.weights + i))),
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 8, 9, 8, 9, 8, 9, 8, 9)));
    return _mm512_mulhi_epu16(mixEight(row.pixels, row.pitch, layer.offsets + i, layer.fractions + i),
                              weights);
}

/// False, and nothing written, where a layer sees only some of the sixteen pixels.
bool mixSixteen(const MixRow& row, int i) {
    __m512i first = _mm512_setzero_si512();
    __m512i second = _mm512_setzero_si512();
    for (int k = 0; k < row.layerCount; ++k) {
        const MixLayer& layer = row.layers[k];
        const __mmask16 unseen =
            _mm512_cmplt_epi32_mask(_mm512_loadu_si512(layer.offsets + i), _mm512_setzero_si512());
        if (unseen == 0xFFFF)
            continue;
        if (unseen != 0)
            return false;
        first = _mm512_adds_epu16(first, weightedEight(row, layer, i));
        second = _mm512_adds_epu16(second, weightedEight(row, layer, i + 8));
    }
    const __m512i levels = _mm512_packus_epi16(levelsOf(first), levelsOf(second));
    const __m512i opaque = _mm512_set1_epi32(static_cast<int>(0xFF000000U));
    // Packing takes turns in every quarter.
    const __m512i inOrder = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), levels);
    _mm512_storeu_si512(row.target + static_cast<std::ptrdiff_t>(i) * 4, _mm512_or_si512(inOrder, opaque));
    return true;
}

void mixLayers(const MixRow& row) {
    constexpr int block = 16;
    int i = 0;
    for (; i + block <= row.count; i += block) {
        if (!mixSixteen(row, i))
            mixLayersPlainly(row, i, i + block);
    }
    mixLayersPlainly(row, i, row.count);
}

/// The columns or lines of one direction, and the shares of the next in 255ths.
struct Direction {
    __m512i whole;
    __m512i share;

    Direction(__m512 positions, int size) {
        const __m512 from = _mm512_sub_ps(positions, _mm512_set1_ps(0.5F));
        // What is no number becomes the second.
        const __m512 notBefore = _mm512_max_ps(from, _mm512_setzero_ps());
        const __m512 inside = _mm512_min_ps(notBefore, _mm512_set1_ps(static_cast<float>(size - 1)));
        whole = _mm512_cvttps_epi32(inside);
        const __m512 rest = _mm512_sub_ps(inside, _mm512_cvtepi32_ps(whole));
        share = _mm512_cvttps_epi32(
            _mm512_add_ps(_mm512_mul_ps(rest, _mm512_set1_ps(255.0F)), _mm512_set1_ps(0.5F)));
    }
};

/// Half a group: columns and lines, 16 bits each, of those places that are somewhere.
struct Sixteen {
    __m512i places;
    __mmask16 isSomewhere;
};

Sixteen packSixteen(const PackRow& row, const Bounds& bounds, int i) {
    const __m512 low = _mm512_set1_ps(bounds.low);
    const __m512 x = _mm512_loadu_ps(row.x + i);
    const __m512 y = _mm512_loadu_ps(row.y + i);
    __mmask16 isSomewhere = _mm512_cmp_ps_mask(x, low, _CMP_GE_OQ);
    isSomewhere = _mm512_mask_cmp_ps_mask(isSomewhere, y, low, _CMP_GE_OQ);
    isSomewhere = _mm512_mask_cmp_ps_mask(isSomewhere, x, _mm512_set1_ps(bounds.highX), _CMP_LE_OQ);
    isSomewhere = _mm512_mask_cmp_ps_mask(isSomewhere, y, _mm512_set1_ps(bounds.highY), _CMP_LE_OQ);
    const Direction across(x, row.width);
    const Direction down(y, row.height);
    const __m512i offsets = _mm512_add_epi32(_mm512_mullo_epi32(down.whole, _mm512_set1_epi32(row.pitch)),
                                             _mm512_slli_epi32(across.whole, 2));
    _mm512_storeu_si512(row.offsets + i, _mm512_mask_mov_epi32(_mm512_set1_epi32(-1), isSomewhere, offsets));
    const __m512i fractions = _mm512_or_si512(across.share, _mm512_slli_epi32(down.share, 8));
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(row.fractions + i), _mm512_cvtepi32_epi16(fractions));
    return {_mm512_or_si512(across.whole, _mm512_slli_epi32(down.whole, 16)), isSomewhere};
}

GroupBox boxOf(const Sixteen& a, const Sixteen& b) {
    const __m512i ones = _mm512_set1_epi32(-1);
    const __m512i least = _mm512_min_epu16(_mm512_mask_mov_epi32(ones, a.isSomewhere, a.places),
                                           _mm512_mask_mov_epi32(ones, b.isSomewhere, b.places));
    // The greatest are the least of the complements.
    const __m512i most = _mm512_min_epu16(_mm512_mask_xor_epi32(ones, a.isSomewhere, a.places, ones),
                                          _mm512_mask_xor_epi32(ones, b.isSomewhere, b.places, ones));
    const auto halved = [](__m512i v) {
        return _mm256_min_epu16(_mm512_castsi512_si256(v), _mm512_extracti64x4_epi64(v, 1));
    };
    return boxFrom(halved(least), halved(most));
}

void pack(const PackRow& row) {
    const Bounds bounds(row);
    int i = 0;
    for (; i + groupLength <= row.count; i += groupLength) {
        const Sixteen a = packSixteen(row, bounds, i);
        const Sixteen b = packSixteen(row, bounds, i + groupLength / 2);
        if (row.boxes != nullptr)
            row.boxes[i / groupLength] = boxOf(a, b);
    }
    if (i < row.count)
        packGroup(row, i, row.count);
}

} // namespace

constinit const RowKernels avx512Rows = rowsWith(pack, sample, mixLayers);

} // namespace tarvo::render::software
