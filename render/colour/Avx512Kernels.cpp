#include "render/colour/ColourKernels.h"

#include <immintrin.h>

// Compiled for AVX-512 F, BW and VL. The arithmetic is that of the plain rows, operation for operation:
// integers as they are, floats in the same order. Most instructions work in the four quarters of a vector
// separately; comments say where that matters.

namespace tarvo::render::avx512 {
namespace {

__m512i load(const std::uint8_t* bytes) {
    return _mm512_loadu_si512(bytes);
}

void store(std::uint8_t* bytes, __m512i value) {
    _mm512_storeu_si512(bytes, value);
}

__m256i load32(const std::uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(bytes));
}

void store32(std::uint8_t* bytes, __m256i value) {
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(bytes), value);
}

void store16(std::uint8_t* bytes, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(bytes), value);
}

// ---- 4-byte pixels to YV12

/// Two 16-bit factors, for the low and the high half of each 32 bits.
__m512i factors(int low, int high) {
    return _mm512_set1_epi32(
        static_cast<int>((static_cast<unsigned>(high) << 16) | (static_cast<unsigned>(low) & 0xFFFF)));
}

/// Sixteen pixels as 16-bit numbers, ready to be multiplied and added in pairs.
struct Pixels {
    __m512i outer; ///< b0 and b2
    __m512i
        middle; ///< b1 twice, as the factor of luma, 33030, is too large for one number of 16 bits with sign
};

Pixels loadPixels(const std::uint8_t* bytes) {
    const __m512i pixels = load(bytes);
    const __m512i twiceMiddle =
        _mm512_broadcast_i32x4(_mm_setr_epi8(1, -1, 1, -1, 5, -1, 5, -1, 9, -1, 9, -1, 13, -1, 13, -1));
    return {_mm512_and_si512(pixels, _mm512_set1_epi32(0x00FF00FF)),
            _mm512_shuffle_epi8(pixels, twiceMiddle)};
}

__m512i luma(const Pixels& pixels) {
    const __m512i sum = _mm512_add_epi32(_mm512_madd_epi16(pixels.outer, factors(16843, 6423)),
                                         _mm512_madd_epi16(pixels.middle, factors(16515, 16515)));
    return _mm512_srli_epi32(_mm512_add_epi32(sum, _mm512_set1_epi32(0x108000)), 16);
}

/// Adds neighbouring pixels of two rows: the sums of the blocks, two of the first vector and two of the
/// second in each quarter.
__m512i blockSums(__m512i upper0, __m512i upper1, __m512i lower0, __m512i lower1) {
    const __m512 columns0 = _mm512_castsi512_ps(_mm512_add_epi16(upper0, lower0));
    const __m512 columns1 = _mm512_castsi512_ps(_mm512_add_epi16(upper1, lower1));
    return _mm512_add_epi16(
        _mm512_castps_si512(_mm512_shuffle_ps(columns0, columns1, _MM_SHUFFLE(2, 0, 2, 0))),
        _mm512_castps_si512(_mm512_shuffle_ps(columns0, columns1, _MM_SHUFFLE(3, 1, 3, 1))));
}

__m512i chroma(const Pixels& sums, __m512i outerFactors, __m512i middleFactor) {
    const __m512i sum = _mm512_add_epi32(_mm512_madd_epi16(sums.outer, outerFactors),
                                         _mm512_madd_epi16(sums.middle, middleFactor));
    return _mm512_srli_epi32(_mm512_add_epi32(sum, _mm512_set1_epi32(0x2008000)), 18);
}

/// 32 columns of two rows from column x on.
void convertBlock(const RowPairToYv12& rows, int x) {
    const std::uint8_t* const upperPixels = rows.upper + static_cast<std::ptrdiff_t>(x) * 4;
    const std::uint8_t* const lowerPixels = rows.lower + static_cast<std::ptrdiff_t>(x) * 4;
    const Pixels upper[2] = {loadPixels(upperPixels), loadPixels(upperPixels + 64)};
    const Pixels lower[2] = {loadPixels(lowerPixels), loadPixels(lowerPixels + 64)};

    // In each quarter four bytes of either vector of the upper row, then four of either of the lower.
    const __m512i lumas = _mm512_packus_epi16(_mm512_packus_epi32(luma(upper[0]), luma(upper[1])),
                                              _mm512_packus_epi32(luma(lower[0]), luma(lower[1])));
    const __m512i inOrder = _mm512_permutexvar_epi32(
        _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), lumas);
    store32(rows.upperLuma + x, _mm512_castsi512_si256(inOrder));
    store32(rows.lowerLuma + x, _mm512_extracti64x4_epi64(inOrder, 1));

    const Pixels sums{blockSums(upper[0].outer, upper[1].outer, lower[0].outer, lower[1].outer),
                      blockSums(upper[0].middle, upper[1].middle, lower[0].middle, lower[1].middle)};
    // In each quarter two bytes of either vector for plane 1, then two of either for plane 2.
    const __m256i chromas =
        _mm512_cvtepi16_epi8(_mm512_packus_epi32(chroma(sums, factors(28770, -4653), factors(-24117, 0)),
                                                 chroma(sums, factors(-9699, 28770), factors(-19071, 0))));
    const __m256i planes = _mm256_permutexvar_epi16(
        _mm256_setr_epi16(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), chromas);
    store16(rows.chroma1 + x / 2, _mm256_castsi256_si128(planes));
    store16(rows.chroma2 + x / 2, _mm256_extracti128_si256(planes, 1));
}

// ---- YUV to BGRA

/// One channel of 32 pixels, 16 bits each: in each quarter four of even and then four of odd columns.
__m512i evenThenOdd(__m512 even, __m512 odd) {
    return _mm512_packs_epi32(_mm512_cvtps_epi32(even), _mm512_cvtps_epi32(odd));
}

/// Saturates 32 pixels of such channels and puts them in order.
void storeBgra(std::uint8_t* target, __m512i blue, __m512i green, __m512i red, __m512i alpha) {
    const __m512i blueRed = _mm512_packus_epi16(blue, red);
    const __m512i greenAlpha = _mm512_packus_epi16(green, alpha);
    const __m512i blueGreen = _mm512_unpacklo_epi8(blueRed, greenAlpha);
    const __m512i redAlpha = _mm512_unpackhi_epi8(blueRed, greenAlpha);
    const __m512i even = _mm512_unpacklo_epi16(blueGreen, redAlpha);
    const __m512i odd = _mm512_unpackhi_epi16(blueGreen, redAlpha);
    const __m512i lower = _mm512_unpacklo_epi32(even, odd); // of each eight pixels the first four
    const __m512i upper = _mm512_unpackhi_epi32(even, odd); // and the last four
    store(target, _mm512_permutex2var_epi64(lower, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), upper));
    store(target + 64,
          _mm512_permutex2var_epi64(lower, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), upper));
}

/// 18 samples between two chroma rows, fourfold, from the one before the first on.
__m512i betweenRows(const std::uint8_t* nearRow, const std::uint8_t* farRow) {
    constexpr __mmask32 read = (1U << 18) - 1;
    const __m512i nearWords = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(read, nearRow - 1));
    const __m512i farWords = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(read, farRow - 1));
    const __m512i twice = _mm512_add_epi16(nearWords, nearWords);
    return _mm512_add_epi16(twice, _mm512_add_epi16(nearWords, farWords));
}

/// The sixteen from the one with this number on.
__m256i sixteenFrom(short first, __m512i words) {
    const __m512i count =
        _mm512_castsi256_si512(_mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    const __m512i which = _mm512_add_epi16(count, _mm512_set1_epi16(first));
    return _mm512_castsi512_si256(_mm512_permutexvar_epi16(which, words));
}

/// The chroma of 32 pixels, sixteenfold, less the half of full scale.
struct Chroma {
    __m512 even;
    __m512 odd;
};

__m512 floats(__m256i words) {
    return _mm512_cvtepi32_ps(_mm512_cvtepi16_epi32(words));
}

Chroma interpolated(const std::uint8_t* nearRow, const std::uint8_t* farRow) {
    const __m512i samples = betweenRows(nearRow, farRow);
    const __m256i own = sixteenFrom(1, samples);
    const __m256i most = _mm256_add_epi16(
        own, _mm256_sub_epi16(_mm256_add_epi16(own, own), _mm256_set1_epi16(2040))); // 16 · 127.5
    return {floats(_mm256_add_epi16(most, _mm512_castsi512_si256(samples))),
            floats(_mm256_add_epi16(most, sixteenFrom(2, samples)))};
}

__m512 times(__m512 values, float factor) {
    return _mm512_mul_ps(values, _mm512_set1_ps(factor));
}

/// The chroma is sixteenfold; taking the factors' sixteenth instead gives the same bits, 16 being a power of
/// two.
__m512 green(__m512 a, __m512 b) {
    return _mm512_add_ps(times(a, 0.698001F / 16.0F), times(b, 0.337633F / 16.0F));
}

/// 32 pixels from column x of the stretch on.
void convertBlock(const Yv12Stretch& stretch, int x) {
    const Chroma a = interpolated(stretch.nearCr + x / 2, stretch.farCr + x / 2);
    const Chroma b = interpolated(stretch.nearCb + x / 2, stretch.farCb + x / 2);
    const __m512i evenOdd =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15));
    const __m512i luma = _mm512_shuffle_epi8(_mm512_cvtepu8_epi16(load32(stretch.luma + x)), evenOdd);
    const __m512i addedBlue = evenThenOdd(times(b.even, 1.732446F / 16.0F), times(b.odd, 1.732446F / 16.0F));
    const __m512i lostGreen = evenThenOdd(green(a.even, b.even), green(a.odd, b.odd));
    const __m512i addedRed = evenThenOdd(times(a.even, 1.370705F / 16.0F), times(a.odd, 1.370705F / 16.0F));
    storeBgra(stretch.target + static_cast<std::ptrdiff_t>(x) * 4, _mm512_add_epi16(luma, addedBlue),
              _mm512_sub_epi16(luma, lostGreen), _mm512_add_epi16(luma, addedRed), _mm512_set1_epi16(255));
}

__m512 byteOf(__m512i words, unsigned shift) {
    return _mm512_cvtepi32_ps(_mm512_and_si512(_mm512_srli_epi32(words, shift), _mm512_set1_epi32(0xFF)));
}

/// Both lumas with what chroma adds, of 256, brought to levels. Dividing by 256 and then multiplying with 255
/// is the same, 256 being a power of two.
__m512i storedOf256(__m512 even, __m512 odd) {
    return evenThenOdd(times(even, 255.0F / 256.0F), times(odd, 255.0F / 256.0F));
}

/// 32 pixels from 16 words.
void convertWords(const std::uint8_t* bytes, std::uint8_t* target) {
    const __m512i words = load(bytes);
    const __m512 even = byteOf(words, 0);
    const __m512 odd = byteOf(words, 16);
    const __m512 u = _mm512_sub_ps(byteOf(words, 8), _mm512_set1_ps(128.0F));
    const __m512 v = _mm512_sub_ps(byteOf(words, 24), _mm512_set1_ps(128.0F));
    const __m512 blue = times(u, 1.772F);
    const __m512 greenOfU = times(u, 0.344F);
    const __m512 greenOfV = times(v, 0.714F);
    const __m512 red = times(v, 1.402F);
    storeBgra(target, storedOf256(_mm512_add_ps(even, blue), _mm512_add_ps(odd, blue)),
              storedOf256(_mm512_sub_ps(_mm512_sub_ps(even, greenOfU), greenOfV),
                          _mm512_sub_ps(_mm512_sub_ps(odd, greenOfU), greenOfV)),
              storedOf256(_mm512_add_ps(even, red), _mm512_add_ps(odd, red)), _mm512_set1_epi16(1));
}

} // namespace

int rgb32ToYv12(const RowPairToYv12& rows) {
    constexpr int block = 32;
    if (rows.columns < block)
        return 0;
    // The last block overlaps the one before it where they do not come out even, and writes the same again.
    const int last = rows.columns - block;
    for (int x = 0;; x = x + block < last ? x + block : last) {
        convertBlock(rows, x);
        if (x == last)
            return rows.columns;
    }
}

int yv12ToBgra(const Yv12Stretch& stretch) {
    constexpr int block = 32;
    if (stretch.columns < block)
        return 0;
    const int last = stretch.columns - block;
    for (int x = 0;; x = x + block < last ? x + block : last) {
        convertBlock(stretch, x);
        if (x == last)
            return stretch.columns;
    }
}

int yuy2ToBgra(const std::uint8_t* words, std::uint8_t* target, int pixels) {
    constexpr int block = 32;
    const int whole = pixels / 2 * 2;
    if (whole < block)
        return 0;
    const std::ptrdiff_t last = whole - block;
    for (std::ptrdiff_t x = 0;; x = x + block < last ? x + block : last) {
        convertWords(words + x * 2, target + x * 4);
        if (x == last)
            return whole;
    }
}

} // namespace tarvo::render::avx512
