// Compiled for AVX2.
#include "render/software/kernels/GroupBoxes.h"
#include "render/software/kernels/RowTable.h"

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

/// The mix of each channel over a pair, 255-fold, less the half of full scale.
[[gnu::always_inline]] inline __m256i mixAcross(__m256i pairs, __m256i shares) {
    const __m256i byChannel =
        inBothHalves(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    // The multiplication wants one factor with a sign: pixels less 128.
    const __m256i centred =
        _mm256_xor_si256(_mm256_shuffle_epi8(pairs, byChannel), _mm256_set1_epi8(static_cast<char>(0x80)));
    return _mm256_maddubs_epi16(shares, centred);
}

/// Four pixels, a channel in 16 bits, 255-fold, less the half of full scale, 32640.
[[gnu::always_inline]] inline __m256i mixFour(const std::uint8_t* pixels, std::ptrdiff_t pitch,
                                              const std::int32_t* offsets, const std::uint16_t* shares255) {
    const __m256i fractions = inBothHalves(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(shares255)));
    const __m256i right = _mm256_shuffle_epi8(
        fractions, _mm256_setr_epi64x(0, 0x0202020202020202, 0x0404040404040404, 0x0606060606060606));
    const __m256i down = _mm256_srli_epi16(
        _mm256_shuffle_epi8(fractions, _mm256_setr_epi64x(0x0101010101010101, 0x0303030303030303,
                                                          0x0505050505050505, 0x0707070707070707)),
        1);
    const __m256i shares = _mm256_xor_si256(right, _mm256_set1_epi16(0x00FF));
    const __m256i above = mixAcross(pixelPairs(pixels, offsets), shares);
    const __m256i below = mixAcross(pixelPairs(pixels + pitch, offsets), shares);
    const __m256i up = _mm256_xor_si256(down, _mm256_set1_epi16(0x7FFF));
    return _mm256_add_epi16(_mm256_mulhrs_epi16(above, up), _mm256_mulhrs_epi16(below, down));
}

/// From 255-fold levels less `offset`, which saturate where 16 bits end.
template<int offset>
[[gnu::always_inline]] inline __m256i levelsOf(__m256i mix) {
    const __m256i half = _mm256_set1_epi16(static_cast<short>(offset + 127));
    const __m256i raised = offset == 0 ? _mm256_adds_epu16(mix, half) : _mm256_add_epi16(mix, half);
    return _mm256_mulhi_epu16(raised, _mm256_set1_epi16(257));
}

/// Eight pixels.
template<int offset>
[[gnu::always_inline]] inline __m256i levelsInOrder(__m256i first, __m256i second) {
    const __m256i levels = _mm256_packus_epi16(levelsOf<offset>(first), levelsOf<offset>(second));
    // Packing takes turns in either half.
    return _mm256_permute4x64_epi64(levels, 0xD8);
}

void sample(const SampleBlock& block) {
    sampleInStrips<8>(
        block, [](const std::int32_t* offsets) __attribute__((always_inline)) {
            const __m256i eight = _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(offsets));
            return _mm256_movemask_ps(_mm256_castsi256_ps(eight)) == 0;
        },
        [&](const std::int32_t* offsets, const std::uint16_t* fractions,
            std::uint8_t* target) __attribute__((always_inline)) {
            const auto mix = [&](int i) __attribute__((always_inline)) {
                return mixFour(block.pixels, block.pitch, offsets + i, fractions + i);
            };
            _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(target), levelsInOrder<centre>(mix(0), mix(4)));
        });
}

/// What a layer adds to four pixels.
[[gnu::always_inline]] inline __m256i weightedFour(const MixRow& row, const MixLayer& layer, int i) {
    const __m256i weights = _mm256_shuffle_epi8(
        _mm256_cvtepu16_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(layer.weights + i))),
        inBothHalves(_mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 8, 9, 8, 9, 8, 9, 8, 9)));
    const __m256i mix = mixFour(row.pixels, row.pitch, layer.offsets + i, layer.fractions + i);
    return _mm256_mulhi_epu16(_mm256_add_epi16(mix, _mm256_set1_epi16(centre)), weights);
}

/// False, and nothing written, where a layer sees only some of the eight pixels.
bool mixEight(const MixRow& row, int i) {
    __m256i first = _mm256_setzero_si256();
    __m256i second = _mm256_setzero_si256();
    for (int k = 0; k < row.layerCount; ++k) {
        const MixLayer& layer = row.layers[k];
        const int unseen = _mm256_movemask_ps(
            _mm256_castsi256_ps(_mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(layer.offsets + i))));
        if (unseen == 0xFF)
            continue;
        if (unseen != 0)
            return false;
        first = _mm256_adds_epu16(first, weightedFour(row, layer, i));
        second = _mm256_adds_epu16(second, weightedFour(row, layer, i + 4));
    }
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(row.target + static_cast<std::ptrdiff_t>(i) * 4),
                        _mm256_or_si256(levelsInOrder<0>(first, second), opaque));
    return true;
}

void mixLayers(const MixRow& row) {
    constexpr int block = 8;
    int i = 0;
    for (; i + block <= row.count; i += block) {
        if (!mixEight(row, i))
            mixLayersPlainly(row, i, i + block);
    }
    mixLayersPlainly(row, i, row.count);
}

/// The columns or lines of one direction, and the shares of the next in 255ths.
struct Direction {
    __m256i whole;
    __m256i share;

    Direction(__m256 positions, int size) {
        const __m256 from = _mm256_sub_ps(positions, _mm256_set1_ps(0.5F));
        // What is no number becomes the second.
        const __m256 notBefore = _mm256_max_ps(from, _mm256_setzero_ps());
        const __m256 inside = _mm256_min_ps(notBefore, _mm256_set1_ps(static_cast<float>(size - 1)));
        whole = _mm256_cvttps_epi32(inside);
        const __m256 rest = _mm256_sub_ps(inside, _mm256_cvtepi32_ps(whole));
        share = _mm256_cvttps_epi32(
            _mm256_add_ps(_mm256_mul_ps(rest, _mm256_set1_ps(255.0F)), _mm256_set1_ps(0.5F)));
    }
};

/// A quarter of a group.
struct Eight {
    __m256i isSomewhere; ///< all bits or none
    __m256i places;      ///< column and line, 16 bits each
    __m256i fractions;
};

Eight packEight(const PackRow& row, const Bounds& bounds, int i) {
    const __m256 x = _mm256_loadu_ps(row.x + i);
    const __m256 y = _mm256_loadu_ps(row.y + i);
    const __m256 low = _mm256_set1_ps(bounds.low);
    const __m256 notBefore =
        _mm256_and_ps(_mm256_cmp_ps(x, low, _CMP_GE_OQ), _mm256_cmp_ps(y, low, _CMP_GE_OQ));
    const __m256 notBeyond = _mm256_and_ps(_mm256_cmp_ps(x, _mm256_set1_ps(bounds.highX), _CMP_LE_OQ),
                                           _mm256_cmp_ps(y, _mm256_set1_ps(bounds.highY), _CMP_LE_OQ));
    const __m256i isSomewhere = _mm256_castps_si256(_mm256_and_ps(notBefore, notBeyond));
    const Direction across(x, row.width);
    const Direction down(y, row.height);
    const __m256i offsets = _mm256_add_epi32(_mm256_mullo_epi32(down.whole, _mm256_set1_epi32(row.pitch)),
                                             _mm256_slli_epi32(across.whole, 2));
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(row.offsets + i),
                        _mm256_blendv_epi8(_mm256_set1_epi32(-1), offsets, isSomewhere));
    return {isSomewhere, _mm256_or_si256(across.whole, _mm256_slli_epi32(down.whole, 16)),
            _mm256_or_si256(across.share, _mm256_slli_epi32(down.share, 8))};
}

/// The least column and line of two quarters, and the complements of the greatest, 16 bits each.
struct Extremes {
    __m256i low;
    __m256i high;
};

Extremes extremesOf(const Eight& a, const Eight& b) {
    const __m256i ones = _mm256_set1_epi32(-1);
    const auto leastOf = [&](const Eight& eight) {
        return _mm256_or_si256(eight.places, _mm256_xor_si256(eight.isSomewhere, ones));
    };
    const auto mostOf = [&](const Eight& eight) {
        return _mm256_xor_si256(_mm256_and_si256(eight.places, eight.isSomewhere), ones);
    };
    // Where nothing is, both are all ones.
    return {_mm256_min_epu16(leastOf(a), leastOf(b)), _mm256_min_epu16(mostOf(a), mostOf(b))};
}

GroupBox boxOf(const Extremes& a, const Extremes& b) {
    return boxFrom(_mm256_min_epu16(a.low, b.low), _mm256_min_epu16(a.high, b.high));
}

/// Half a group.
Extremes packSixteen(const PackRow& row, const Bounds& bounds, int i) {
    const Eight a = packEight(row, bounds, i);
    const Eight b = packEight(row, bounds, i + 8);
    const __m256i fractions = _mm256_permute4x64_epi64(_mm256_packus_epi32(a.fractions, b.fractions), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(row.fractions + i), fractions);
    return extremesOf(a, b);
}

void pack(const PackRow& row) {
    const Bounds bounds(row);
    int i = 0;
    for (; i + groupLength <= row.count; i += groupLength) {
        const Extremes a = packSixteen(row, bounds, i);
        const Extremes b = packSixteen(row, bounds, i + groupLength / 2);
        if (row.boxes != nullptr)
            row.boxes[i / groupLength] = boxOf(a, b);
    }
    if (i < row.count)
        packGroup(row, i, row.count);
}

} // namespace

constinit const RowKernels avx2Rows = rowsWith(pack, sample, mixLayers);

} // namespace tarvo::render::software
