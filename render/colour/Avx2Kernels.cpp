#include "render/colour/ColourKernels.h"

#include <immintrin.h>

// Compiled for AVX2. The arithmetic is that of the plain rows, operation for operation: integers as they are,
// floats in the same order. Most instructions work in the two halves of a vector separately; comments say
// where that matters.

namespace tarvo::render::avx2 {
namespace {

__m256i load(const std::uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(bytes));
}

void store(std::uint8_t* bytes, __m256i value) {
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(bytes), value);
}

__m128i load16(const std::uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(bytes));
}

void store16(std::uint8_t* bytes, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(bytes), value);
}

// ---- 4-byte pixels to YV12

/// Two 16-bit factors, for the low and the high half of each 32 bits.
__m256i factors(int low, int high) {
    return _mm256_set1_epi32(
        static_cast<int>((static_cast<unsigned>(high) << 16) | (static_cast<unsigned>(low) & 0xFFFF)));
}

/// Eight pixels as 16-bit numbers, ready to be multiplied and added in pairs.
struct Pixels {
    __m256i outer; ///< b0 and b2
    __m256i
        middle; ///< b1 twice, as the factor of luma, 33030, is too large for one number of 16 bits with sign
};

Pixels loadPixels(const std::uint8_t* bytes) {
    const __m256i pixels = load(bytes);
    const __m256i twiceMiddle =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(1, -1, 1, -1, 5, -1, 5, -1, 9, -1, 9, -1, 13, -1, 13, -1));
    return {_mm256_and_si256(pixels, _mm256_set1_epi32(0x00FF00FF)),
            _mm256_shuffle_epi8(pixels, twiceMiddle)};
}

__m256i luma(const Pixels& pixels) {
    const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(pixels.outer, factors(16843, 6423)),
                                         _mm256_madd_epi16(pixels.middle, factors(16515, 16515)));
    return _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(0x108000)), 16);
}

void storeLuma(std::uint8_t* target, const Pixels (&pixels)[4]) {
    // Packed in halves: first the lower fours of all vectors, then the upper ones.
    const __m256i fours = _mm256_packus_epi16(_mm256_packus_epi32(luma(pixels[0]), luma(pixels[1])),
                                              _mm256_packus_epi32(luma(pixels[2]), luma(pixels[3])));
    store(target, _mm256_permutevar8x32_epi32(fours, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
}

/// Adds neighbouring pixels of two rows: the sums of the blocks, two of the first vector and two of the
/// second in either half.
__m256i blockSums(__m256i upper0, __m256i upper1, __m256i lower0, __m256i lower1) {
    const __m256 columns0 = _mm256_castsi256_ps(_mm256_add_epi16(upper0, lower0));
    const __m256 columns1 = _mm256_castsi256_ps(_mm256_add_epi16(upper1, lower1));
    return _mm256_add_epi16(
        _mm256_castps_si256(_mm256_shuffle_ps(columns0, columns1, _MM_SHUFFLE(2, 0, 2, 0))),
        _mm256_castps_si256(_mm256_shuffle_ps(columns0, columns1, _MM_SHUFFLE(3, 1, 3, 1))));
}

__m256i chroma(const Pixels& sums, __m256i outerFactors, __m256i middleFactor) {
    const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(sums.outer, outerFactors),
                                         _mm256_madd_epi16(sums.middle, middleFactor));
    return _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(0x2008000)), 18);
}

__m256i chromaWords(const Pixels (&sums)[2], __m256i outerFactors, __m256i middleFactor) {
    return _mm256_packus_epi32(chroma(sums[0], outerFactors, middleFactor),
                               chroma(sums[1], outerFactors, middleFactor));
}

/// 32 columns of two rows from column x on.
void convertBlock(const RowPairToYv12& rows, int x) {
    Pixels upper[4];
    Pixels lower[4];
    for (int i = 0; i < 4; ++i) {
        upper[i] = loadPixels(rows.upper + (static_cast<std::ptrdiff_t>(x) + 8 * i) * 4);
        lower[i] = loadPixels(rows.lower + (static_cast<std::ptrdiff_t>(x) + 8 * i) * 4);
    }
    storeLuma(rows.upperLuma + x, upper);
    storeLuma(rows.lowerLuma + x, lower);
    Pixels sums[2];
    for (int i = 0; i < 2; ++i) {
        const int j = 2 * i;
        sums[i].outer = blockSums(upper[j].outer, upper[j + 1].outer, lower[j].outer, lower[j + 1].outer);
        sums[i].middle =
            blockSums(upper[j].middle, upper[j + 1].middle, lower[j].middle, lower[j + 1].middle);
    }
    // In either half 8 bytes of plane 1 and 8 of plane 2, in pairs which the other half's pairs belong
    // between.
    const __m256i both = _mm256_packus_epi16(chromaWords(sums, factors(28770, -4653), factors(-24117, 0)),
                                             chromaWords(sums, factors(-9699, 28770), factors(-19071, 0)));
    const __m128i low = _mm256_castsi256_si128(both);
    const __m128i high = _mm256_extracti128_si256(both, 1);
    store16(rows.chroma1 + x / 2, _mm_unpacklo_epi16(low, high));
    store16(rows.chroma2 + x / 2, _mm_unpackhi_epi16(low, high));
}

// ---- mirroring

__m256i loadHalves(const std::uint8_t* low, const std::uint8_t* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(load16(low)), load16(high), 1);
}

void storeHalves(std::uint8_t* low, std::uint8_t* high, __m256i value) {
    store16(low, _mm256_castsi256_si128(value));
    store16(high, _mm256_extracti128_si256(value, 1));
}

/// Twice 16 pixels of 3 bytes, the second 16 in the upper halves.
struct Pixels24 {
    __m256i part[3];
};

Pixels24 loadPixels24(const std::uint8_t* bytes) {
    return {{loadHalves(bytes, bytes + 48), loadHalves(bytes + 16, bytes + 64),
             loadHalves(bytes + 32, bytes + 80)}};
}

__m256i pick(__m256i bytes, __m128i which) {
    return _mm256_shuffle_epi8(bytes, _mm256_broadcastsi128_si256(which));
}

/// Stores the pixels in reverse order. −1 makes a zero byte, which the part that has the byte fills.
void storeReversed(std::uint8_t* target, const Pixels24& pixels) {
    const __m256i last =
        pick(pixels.part[2], _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, -1));
    const __m256i beforeLast =
        pick(pixels.part[1], _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 14));
    storeHalves(target + 48, target, _mm256_or_si256(last, beforeLast));

    const __m256i fromLast =
        pick(pixels.part[2], _mm_setr_epi8(-1, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i middle =
        pick(pixels.part[1], _mm_setr_epi8(15, -1, 11, 12, 13, 8, 9, 10, 5, 6, 7, 2, 3, 4, -1, 0));
    const __m256i fromFirst =
        pick(pixels.part[0], _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 15, -1));
    storeHalves(target + 64, target + 16, _mm256_or_si256(_mm256_or_si256(fromLast, middle), fromFirst));

    const __m256i afterFirst =
        pick(pixels.part[1], _mm_setr_epi8(1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i first =
        pick(pixels.part[0], _mm_setr_epi8(-1, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2));
    storeHalves(target + 80, target + 32, _mm256_or_si256(afterFirst, first));
}

// ---- YUV to BGRA

/// One channel of 16 pixels, 16 bits each: in either half four of even and then four of odd columns.
__m256i evenThenOdd(__m256 even, __m256 odd) {
    return _mm256_packs_epi32(_mm256_cvtps_epi32(even), _mm256_cvtps_epi32(odd));
}

/// Saturates 16 pixels of such channels and puts them in order.
void storeBgra(std::uint8_t* target, __m256i blue, __m256i green, __m256i red, __m256i alpha) {
    const __m256i blueRed = _mm256_packus_epi16(blue, red);
    const __m256i greenAlpha = _mm256_packus_epi16(green, alpha);
    const __m256i blueGreen = _mm256_unpacklo_epi8(blueRed, greenAlpha);
    const __m256i redAlpha = _mm256_unpackhi_epi8(blueRed, greenAlpha);
    const __m256i even = _mm256_unpacklo_epi16(blueGreen, redAlpha);
    const __m256i odd = _mm256_unpackhi_epi16(blueGreen, redAlpha);
    const __m256i lower = _mm256_unpacklo_epi32(even, odd); // pixels 0 to 3 and 8 to 11
    const __m256i upper = _mm256_unpackhi_epi32(even, odd); // pixels 4 to 7 and 12 to 15
    store(target, _mm256_permute2x128_si256(lower, upper, 0x20));
    store(target + 32, _mm256_permute2x128_si256(lower, upper, 0x31));
}

__m256i threefold(__m256i words) {
    return _mm256_add_epi16(words, _mm256_add_epi16(words, words));
}

/// 16 samples between two chroma rows, fourfold.
__m256i betweenRows(const std::uint8_t* nearRow, const std::uint8_t* farRow) {
    return _mm256_add_epi16(threefold(_mm256_cvtepu8_epi16(load16(nearRow))),
                            _mm256_cvtepu8_epi16(load16(farRow)));
}

/// The chroma of 32 pixels, sixteenfold, less the half of full scale.
struct Chroma {
    __m256i even;
    __m256i odd;
};

Chroma interpolated(const std::uint8_t* nearRow, const std::uint8_t* farRow) {
    const __m256i own =
        _mm256_sub_epi16(threefold(betweenRows(nearRow, farRow)), _mm256_set1_epi16(2040)); // 16 · 127.5
    return {_mm256_add_epi16(own, betweenRows(nearRow - 1, farRow - 1)),
            _mm256_add_epi16(own, betweenRows(nearRow + 1, farRow + 1))};
}

__m256 lowFloats(__m256i words) {
    return _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(_mm256_castsi256_si128(words)));
}

__m256i highHalf(__m256i words) {
    return _mm256_castsi128_si256(_mm256_extracti128_si256(words, 1));
}

__m256 times(__m256 values, float factor) {
    return _mm256_mul_ps(values, _mm256_set1_ps(factor));
}

/// The chroma is sixteenfold; taking the factors' sixteenth instead gives the same bits, 16 being a power of
/// two.
__m256 green(__m256 a, __m256 b) {
    return _mm256_add_ps(times(a, 0.698001F / 16.0F), times(b, 0.337633F / 16.0F));
}

/// 16 pixels, of which the low halves hold the chroma.
void storeYv12(std::uint8_t* target, const std::uint8_t* lumaBytes, const Chroma& cr, const Chroma& cb) {
    const __m256i evenOdd =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15));
    const __m256i luma = _mm256_shuffle_epi8(_mm256_cvtepu8_epi16(load16(lumaBytes)), evenOdd);
    const __m256 aEven = lowFloats(cr.even);
    const __m256 aOdd = lowFloats(cr.odd);
    const __m256 bEven = lowFloats(cb.even);
    const __m256 bOdd = lowFloats(cb.odd);
    const __m256i addedBlue = evenThenOdd(times(bEven, 1.732446F / 16.0F), times(bOdd, 1.732446F / 16.0F));
    const __m256i lostGreen = evenThenOdd(green(aEven, bEven), green(aOdd, bOdd));
    const __m256i addedRed = evenThenOdd(times(aEven, 1.370705F / 16.0F), times(aOdd, 1.370705F / 16.0F));
    storeBgra(target, _mm256_add_epi16(luma, addedBlue), _mm256_sub_epi16(luma, lostGreen),
              _mm256_add_epi16(luma, addedRed), _mm256_set1_epi16(255));
}

/// 32 pixels from column x of the stretch on.
void convertBlock(const Yv12Stretch& stretch, int x) {
    const Chroma cr = interpolated(stretch.nearCr + x / 2, stretch.farCr + x / 2);
    const Chroma cb = interpolated(stretch.nearCb + x / 2, stretch.farCb + x / 2);
    std::uint8_t* const target = stretch.target + static_cast<std::ptrdiff_t>(x) * 4;
    storeYv12(target, stretch.luma + x, cr, cb);
    storeYv12(target + 64, stretch.luma + x + 16, {highHalf(cr.even), highHalf(cr.odd)},
              {highHalf(cb.even), highHalf(cb.odd)});
}

__m256 byteOf(__m256i words, int shift) {
    return _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(words, shift), _mm256_set1_epi32(0xFF)));
}

/// Both lumas with what chroma adds, of 256, brought to levels. Dividing by 256 and then multiplying with 255
/// is the same, 256 being a power of two.
__m256i storedOf256(__m256 even, __m256 odd) {
    return evenThenOdd(times(even, 255.0F / 256.0F), times(odd, 255.0F / 256.0F));
}

/// 16 pixels from 8 words.
void convertWords(const std::uint8_t* bytes, std::uint8_t* target) {
    const __m256i words = load(bytes);
    const __m256 even = byteOf(words, 0);
    const __m256 odd = byteOf(words, 16);
    const __m256 u = _mm256_sub_ps(byteOf(words, 8), _mm256_set1_ps(128.0F));
    const __m256 v = _mm256_sub_ps(byteOf(words, 24), _mm256_set1_ps(128.0F));
    const __m256 blue = times(u, 1.772F);
    const __m256 greenOfU = times(u, 0.344F);
    const __m256 greenOfV = times(v, 0.714F);
    const __m256 red = times(v, 1.402F);
    storeBgra(target, storedOf256(_mm256_add_ps(even, blue), _mm256_add_ps(odd, blue)),
              storedOf256(_mm256_sub_ps(_mm256_sub_ps(even, greenOfU), greenOfV),
                          _mm256_sub_ps(_mm256_sub_ps(odd, greenOfU), greenOfV)),
              storedOf256(_mm256_add_ps(even, red), _mm256_add_ps(odd, red)), _mm256_set1_epi16(1));
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

std::ptrdiff_t swapReversed24(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels) {
    constexpr std::ptrdiff_t block = 32;
    std::ptrdiff_t done = 0;
    for (; done + block <= pixels; done += block) {
        std::uint8_t* const one = front + done * 3;
        std::uint8_t* const other = backEnd - (done + block) * 3;
        const Pixels24 ofOne = loadPixels24(one);
        const Pixels24 ofOther = loadPixels24(other);
        storeReversed(one, ofOther);
        storeReversed(other, ofOne);
    }
    return done;
}

std::ptrdiff_t swapBytes(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes) {
    constexpr std::ptrdiff_t block = 32;
    std::ptrdiff_t done = 0;
    for (; done + block <= bytes; done += block) {
        const __m256i ofFirst = load(first + done);
        store(first + done, load(second + done));
        store(second + done, ofFirst);
    }
    return done;
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
    constexpr int block = 16;
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

} // namespace tarvo::render::avx2
