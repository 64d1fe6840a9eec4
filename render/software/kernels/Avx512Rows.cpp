// Compiled for AVX-512 F, BW and VL.
#include "render/software/kernels/GroupBoxes.h"
#include "render/software/kernels/RowTable.h"

#include <immintrin.h>

namespace tarvo::render::software {
namespace {

/// Two neighbouring pixels from each of eight places, by the instruction made for that.
struct GatheredPairs {
    [[gnu::always_inline]] static __m512i from(const std::uint8_t* pixels, const std::int32_t* offsets) {
        return _mm512_i32gather_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(offsets)), pixels,
                                      1);
    }
};

/// The same by a load for each place: where processors make that instruction of many small ones, or were
/// slowed down for safety, this takes a third off sampling.
class CLoadedPairs {
public:
    [[gnu::always_inline]] static __m512i from(const std::uint8_t* pixels, const std::int32_t* offsets) {
        const __m256i first = _mm256_set_m128i(two(pixels, offsets + 2), two(pixels, offsets));
        const __m256i second = _mm256_set_m128i(two(pixels, offsets + 6), two(pixels, offsets + 4));
        return _mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1);
    }

private:
    [[gnu::always_inline]] static __m128i two(const std::uint8_t* pixels, const std::int32_t* offsets) {
        // The number of loads bounds this: both offsets come in one.
        std::uint64_t both = 0;
        __builtin_memcpy(&both, offsets, sizeof(both));
        const std::uint8_t* const low = pixels + (both & 0xFFFFFFFFU);
        const std::uint8_t* const high = pixels + (both >> 32);
        const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(low));
        return _mm_castpd_si128(_mm_loadh_pd(_mm_castsi128_pd(first), reinterpret_cast<const double*>(high)));
    }
};

/// Picks byte `which` of each of eight 16-bit numbers, which every lane has, eight times.
[[gnu::always_inline]] inline __m512i eightTimes(int which) {
    const auto bytesOf = [which](int number) { return 0x0101010101010101LL * (2 * number + which); };
    return _mm512_setr_epi64(bytesOf(0), bytesOf(1), bytesOf(2), bytesOf(3), bytesOf(4), bytesOf(5),
                             bytesOf(6), bytesOf(7));
}

/// The mix of the four pixels around eight places.
template<typename Pairs>
class CMixer {
public:
    [[gnu::always_inline]] CMixer(const std::uint8_t* pixels, std::ptrdiff_t pitch)
        : m_upper(pixels), m_lower(pixels + pitch) {}

    /// A channel in 16 bits, 255-fold, less the half of full scale, 32640.
    [[gnu::always_inline]] __m512i mixEight(const std::int32_t* offsets,
                                            const std::uint16_t* shares255) const {
        const __m512i fractions =
            _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(shares255)));
        const __m512i shares = _mm512_xor_si512(_mm512_shuffle_epi8(fractions, m_right), m_otherShare);
        const __m512i down = _mm512_srli_epi16(_mm512_shuffle_epi8(fractions, m_down), 1);
        const __m512i up = _mm512_xor_si512(down, m_full);
        const __m512i above = mixAcross(Pairs::from(m_upper, offsets), shares);
        const __m512i below = mixAcross(Pairs::from(m_lower, offsets), shares);
        return _mm512_add_epi16(_mm512_mulhrs_epi16(above, up), _mm512_mulhrs_epi16(below, down));
    }

private:
    /// The mix of each channel over a pair.
    [[gnu::always_inline]] __m512i mixAcross(__m512i pairs, __m512i shares) const {
        // The multiplication wants one factor with a sign: pixels less 128.
        const __m512i centred = _mm512_xor_si512(_mm512_shuffle_epi8(pairs, m_byChannel), m_signs);
        return _mm512_maddubs_epi16(shares, centred);
    }

    const std::uint8_t* m_upper;
    const std::uint8_t* m_lower;
    __m512i m_byChannel = inRegister(
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15)));
    __m512i m_signs = inRegister(_mm512_set1_epi8(static_cast<char>(0x80)));
    __m512i m_right = inRegister(eightTimes(0));
    __m512i m_down = inRegister(eightTimes(1));
    __m512i m_otherShare = inRegister(_mm512_set1_epi16(0x00FF));
    __m512i m_full = inRegister(_mm512_set1_epi16(0x7FFF));
};

/// From 255-fold levels less `offset`, which saturate where 16 bits end.
template<int offset>
class CLevels {
public:
    /// Sixteen pixels.
    [[gnu::always_inline]] __m512i operator()(__m512i first, __m512i second) const {
        const __m512i levels = _mm512_packus_epi16(levelsOf(first), levelsOf(second));
        // Packing takes turns in every quarter.
        return _mm512_permutexvar_epi64(m_inOrder, levels);
    }

private:
    [[gnu::always_inline]] __m512i levelsOf(__m512i mix) const {
        const __m512i raised = offset == 0 ? _mm512_adds_epu16(mix, m_half) : _mm512_add_epi16(mix, m_half);
        return _mm512_mulhi_epu16(raised, m_reciprocal);
    }

    __m512i m_half = inRegister(_mm512_set1_epi16(static_cast<short>(offset + 127)));
    __m512i m_reciprocal = inRegister(_mm512_set1_epi16(257));
    __m512i m_inOrder = inRegister(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7));
};

template<typename Pairs>
void sample(const SampleBlock& block) {
    const CMixer<Pairs> mixer(block.pixels, block.pitch);
    const CLevels<centre> levels;
    sampleInStrips<16>(
        block, [](const std::int32_t* offsets) __attribute__((always_inline)) {
            return _mm512_cmplt_epi32_mask(_mm512_loadu_si512(offsets), _mm512_setzero_si512()) == 0;
        },
        [&](const std::int32_t* offsets, const std::uint16_t* fractions, std::uint8_t* target)
            __attribute__((always_inline)) {
                _mm512_storeu_si512(target, levels(mixer.mixEight(offsets, fractions),
                                                   mixer.mixEight(offsets + 8, fractions + 8)));
            });
}

/// What a layer adds to eight pixels.
template<typename Pairs>
[[gnu::always_inline]] inline __m512i weightedEight(const CMixer<Pairs>& mixer, const MixLayer& layer,
                                                    int i) {
    const __m512i weights = _mm512_shuffle_epi8(
        _mm512_cvtepu16_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(layer.weights + i))),
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 8, 9, 8, 9, 8, 9, 8, 9)));
    const __m512i mix = mixer.mixEight(layer.offsets + i, layer.fractions + i);
    return _mm512_mulhi_epu16(_mm512_add_epi16(mix, _mm512_set1_epi16(centre)), weights);
}

/// False, and nothing written, where a layer sees only some of the sixteen pixels.
template<typename Pairs>
[[gnu::always_inline]] inline bool mixSixteen(const MixRow& row, const CMixer<Pairs>& mixer,
                                              const CLevels<0>& levels, int i) {
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
        first = _mm512_adds_epu16(first, weightedEight(mixer, layer, i));
        second = _mm512_adds_epu16(second, weightedEight(mixer, layer, i + 8));
    }
    const __m512i opaque = _mm512_set1_epi32(static_cast<int>(0xFF000000U));
    _mm512_storeu_si512(row.target + static_cast<std::ptrdiff_t>(i) * 4,
                        _mm512_or_si512(levels(first, second), opaque));
    return true;
}

template<typename Pairs>
void mixLayers(const MixRow& row) {
    constexpr int strip = 16;
    const CMixer<Pairs> mixer(row.pixels, row.pitch);
    const CLevels<0> levels;
    int i = 0;
    for (; i + strip <= row.count; i += strip) {
        if (!mixSixteen(row, mixer, levels, i))
            mixLayersPlainly(row, i, i + strip);
    }
    mixLayersPlainly(row, i, row.count);
}

/// Kept between the outermost centres, from the first one on.
[[gnu::always_inline]] inline __m512 fromFirstCentre(__m512 positions, __m512 last, bool isInside) {
    const __m512 from = _mm512_sub_ps(positions, _mm512_set1_ps(0.5F));
    // What is no number becomes the second.
    return isInside ? from : _mm512_min_ps(_mm512_max_ps(from, _mm512_setzero_ps()), last);
}

/// The columns or lines of one direction, and the shares of the next in 255ths.
struct Direction {
    __m512i whole;
    __m512i share;

    [[gnu::always_inline]] explicit Direction(__m512 inside) {
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

/// What is the same for all of a row.
class CPacker {
public:
    [[gnu::always_inline]] CPacker(const PackRow& row, const Bounds& bounds)
        : m_x(row.x), m_y(row.y), m_offsets(row.offsets), m_fractions(row.fractions),
          m_low(_mm512_set1_ps(bounds.low)), m_highX(_mm512_set1_ps(bounds.highX)),
          m_highY(_mm512_set1_ps(bounds.highY)), m_lastX(_mm512_set1_ps(static_cast<float>(row.width - 1))),
          m_lastY(_mm512_set1_ps(static_cast<float>(row.height - 1))), m_pitch(_mm512_set1_epi32(row.pitch)) {
    }

    template<bool isInside>
    [[gnu::always_inline]] Sixteen pack(int i) const {
        const __m512 x = _mm512_loadu_ps(m_x + i);
        const __m512 y = _mm512_loadu_ps(m_y + i);
        __mmask16 isSomewhere = 0xFFFF;
        if (!isInside) {
            isSomewhere = _mm512_cmp_ps_mask(x, m_low, _CMP_GE_OQ);
            isSomewhere = _mm512_mask_cmp_ps_mask(isSomewhere, y, m_low, _CMP_GE_OQ);
            isSomewhere = _mm512_mask_cmp_ps_mask(isSomewhere, x, m_highX, _CMP_LE_OQ);
            isSomewhere = _mm512_mask_cmp_ps_mask(isSomewhere, y, m_highY, _CMP_LE_OQ);
        }
        const Direction across(fromFirstCentre(x, m_lastX, isInside));
        const Direction down(fromFirstCentre(y, m_lastY, isInside));
        const __m512i offsets =
            _mm512_add_epi32(_mm512_mullo_epi32(down.whole, m_pitch), _mm512_slli_epi32(across.whole, 2));
        _mm512_storeu_si512(m_offsets + i,
                            _mm512_mask_mov_epi32(_mm512_set1_epi32(-1), isSomewhere, offsets));
        const __m512i fractions = _mm512_or_si512(across.share, _mm512_slli_epi32(down.share, 8));
        _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(m_fractions + i), _mm512_cvtepi32_epi16(fractions));
        return {_mm512_or_si512(across.whole, _mm512_slli_epi32(down.whole, 16)), isSomewhere};
    }

private:
    const float* m_x;
    const float* m_y;
    std::int32_t* m_offsets;
    std::uint16_t* m_fractions;
    __m512 m_low;
    __m512 m_highX;
    __m512 m_highY;
    __m512 m_lastX;
    __m512 m_lastY;
    __m512i m_pitch;
};

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

template<bool isInside>
void packGroups(const PackRow& row, int end) {
    const CPacker packer(row, Bounds(row));
    GroupBox* const boxes = row.boxes;
    for (int i = 0; i < end; i += groupLength) {
        const Sixteen a = packer.pack<isInside>(i);
        const Sixteen b = packer.pack<isInside>(i + groupLength / 2);
        if (boxes != nullptr)
            boxes[i / groupLength] = boxOf(a, b);
    }
}

void pack(const PackRow& row) {
    const int whole = row.count / groupLength * groupLength;
    if (row.isInside) {
        packGroups<true>(row, whole);
    } else {
        packGroups<false>(row, whole);
    }
    if (whole < row.count)
        packGroup(row, whole, row.count);
}

} // namespace

constinit const RowKernels avx512Rows = rowsWith(pack, sample<GatheredPairs>, mixLayers<GatheredPairs>);
constinit const RowKernels avx512RowsByLoads = rowsWith(pack, sample<CLoadedPairs>, mixLayers<CLoadedPairs>);

} // namespace tarvo::render::software
