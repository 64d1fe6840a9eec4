#include "render/colour/ColourKernels.h"

#include <immintrin.h>

// Compiled for SSSE3 and SSE4.1. The arithmetic is that of the plain rows, operation for operation: integers
// as they are, floats in the same order.

namespace tarvo::render::sse41 {
namespace {

__m128i load(const std::uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(bytes));
}

void store(std::uint8_t* bytes, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i_u*>(bytes), value);
}

__m128i load8(const std::uint8_t* bytes) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(bytes));
}

void store8(std::uint8_t* bytes, __m128i value) {
    _mm_storel_epi64(reinterpret_cast<__m128i_u*>(bytes), value);
}

// ---- 4-byte pixels to YV12

/// Two 16-bit factors, for the low and the high half of each 32 bits.
__m128i factors(int low, int high) {
    return _mm_set1_epi32(
        static_cast<int>((static_cast<unsigned>(high) << 16) | (static_cast<unsigned>(low) & 0xFFFF)));
}

/// Four pixels as 16-bit numbers, ready to be multiplied and added in pairs.
struct Pixels {
    __m128i outer; ///< b0 and b2
    __m128i
        middle; ///< b1 twice, as the factor of luma, 33030, is too large for one number of 16 bits with sign
};

Pixels loadPixels(const std::uint8_t* bytes) {
    const __m128i pixels = load(bytes);
    const __m128i twiceMiddle = _mm_setr_epi8(1, -1, 1, -1, 5, -1, 5, -1, 9, -1, 9, -1, 13, -1, 13, -1);
    return {_mm_and_si128(pixels, _mm_set1_epi32(0x00FF00FF)), _mm_shuffle_epi8(pixels, twiceMiddle)};
}

__m128i luma(const Pixels& pixels) {
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(pixels.outer, factors(16843, 6423)),
                                      _mm_madd_epi16(pixels.middle, factors(16515, 16515)));
    return _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(0x108000)), 16);
}

void storeLuma(std::uint8_t* target, const Pixels (&pixels)[4]) {
    store(target, _mm_packus_epi16(_mm_packus_epi32(luma(pixels[0]), luma(pixels[1])),
                                   _mm_packus_epi32(luma(pixels[2]), luma(pixels[3]))));
}

/// Adds neighbouring pixels of two rows: the sums of the blocks.
__m128i blockSums(__m128i upper0, __m128i upper1, __m128i lower0, __m128i lower1) {
    const __m128 columns0 = _mm_castsi128_ps(_mm_add_epi16(upper0, lower0));
    const __m128 columns1 = _mm_castsi128_ps(_mm_add_epi16(upper1, lower1));
    return _mm_add_epi16(_mm_castps_si128(_mm_shuffle_ps(columns0, columns1, _MM_SHUFFLE(2, 0, 2, 0))),
                         _mm_castps_si128(_mm_shuffle_ps(columns0, columns1, _MM_SHUFFLE(3, 1, 3, 1))));
}

__m128i chroma(const Pixels& sums, __m128i outerFactors, __m128i middleFactor) {
    const __m128i sum =
        _mm_add_epi32(_mm_madd_epi16(sums.outer, outerFactors), _mm_madd_epi16(sums.middle, middleFactor));
    return _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(0x2008000)), 18);
}

void storeChroma(std::uint8_t* target, const Pixels (&sums)[2], __m128i outerFactors, __m128i middleFactor) {
    const __m128i words = _mm_packus_epi32(chroma(sums[0], outerFactors, middleFactor),
                                           chroma(sums[1], outerFactors, middleFactor));
    store8(target, _mm_packus_epi16(words, words));
}

/// 16 columns of two rows from column x on.
void convertBlock(const RowPairToYv12& rows, int x) {
    Pixels upper[4];
    Pixels lower[4];
    for (int i = 0; i < 4; ++i) {
        upper[i] = loadPixels(rows.upper + (static_cast<std::ptrdiff_t>(x) + 4 * i) * 4);
        lower[i] = loadPixels(rows.lower + (static_cast<std::ptrdiff_t>(x) + 4 * i) * 4);
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
    storeChroma(rows.chroma1 + x / 2, sums, factors(28770, -4653), factors(-24117, 0));
    storeChroma(rows.chroma2 + x / 2, sums, factors(-9699, 28770), factors(-19071, 0));
}

// ---- mirroring

/// 16 pixels of 3 bytes.
struct Pixels24 {
    __m128i part[3];
};

Pixels24 loadPixels24(const std::uint8_t* bytes) {
    return {{load(bytes), load(bytes + 16), load(bytes + 32)}};
}

/// Stores the pixels in reverse order. −1 makes a zero byte, which the part that has the byte fills.
void storeReversed(std::uint8_t* target, const Pixels24& pixels) {
    const __m128i last = _mm_shuffle_epi8(
        pixels.part[2], _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, -1));
    const __m128i beforeLast = _mm_shuffle_epi8(
        pixels.part[1], _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 14));
    store(target, _mm_or_si128(last, beforeLast));

    const __m128i fromLast = _mm_shuffle_epi8(
        pixels.part[2], _mm_setr_epi8(-1, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m128i middle = _mm_shuffle_epi8(
        pixels.part[1], _mm_setr_epi8(15, -1, 11, 12, 13, 8, 9, 10, 5, 6, 7, 2, 3, 4, -1, 0));
    const __m128i fromFirst = _mm_shuffle_epi8(
        pixels.part[0], _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 15, -1));
    store(target + 16, _mm_or_si128(_mm_or_si128(fromLast, middle), fromFirst));

    const __m128i afterFirst = _mm_shuffle_epi8(
        pixels.part[1], _mm_setr_epi8(1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m128i first =
        _mm_shuffle_epi8(pixels.part[0], _mm_setr_epi8(-1, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2));
    store(target + 32, _mm_or_si128(afterFirst, first));
}

// ---- YUV to BGRA

/// One channel of eight pixels as the four of even and then the four of odd columns, 16 bits each.
__m128i evenThenOdd(__m128 even, __m128 odd) {
    return _mm_packs_epi32(_mm_cvtps_epi32(even), _mm_cvtps_epi32(odd));
}

/// Saturates eight pixels of such channels and puts them in order.
void storeBgra(std::uint8_t* target, __m128i blue, __m128i green, __m128i red, __m128i alpha) {
    const __m128i blueRed = _mm_packus_epi16(blue, red);
    const __m128i greenAlpha = _mm_packus_epi16(green, alpha);
    const __m128i blueGreen = _mm_unpacklo_epi8(blueRed, greenAlpha);
    const __m128i redAlpha = _mm_unpackhi_epi8(blueRed, greenAlpha);
    const __m128i even = _mm_unpacklo_epi16(blueGreen, redAlpha);
    const __m128i odd = _mm_unpackhi_epi16(blueGreen, redAlpha);
    store(target, _mm_unpacklo_epi32(even, odd));
    store(target + 16, _mm_unpackhi_epi32(even, odd));
}

__m128i threefold(__m128i words) {
    return _mm_add_epi16(words, _mm_add_epi16(words, words));
}

/// Eight samples between two chroma rows, fourfold.
__m128i betweenRows(const std::uint8_t* nearRow, const std::uint8_t* farRow) {
    return _mm_add_epi16(threefold(_mm_cvtepu8_epi16(load8(nearRow))), _mm_cvtepu8_epi16(load8(farRow)));
}

/// The chroma of 16 pixels, sixteenfold, less the half of full scale.
struct Chroma {
    __m128i even;
    __m128i odd;
};

Chroma interpolated(const std::uint8_t* nearRow, const std::uint8_t* farRow) {
    const __m128i own =
        _mm_sub_epi16(threefold(betweenRows(nearRow, farRow)), _mm_set1_epi16(2040)); // 16 · 127.5
    return {_mm_add_epi16(own, betweenRows(nearRow - 1, farRow - 1)),
            _mm_add_epi16(own, betweenRows(nearRow + 1, farRow + 1))};
}

__m128 lowFloats(__m128i words) {
    return _mm_cvtepi32_ps(_mm_cvtepi16_epi32(words));
}

__m128i highHalf(__m128i words) {
    return _mm_unpackhi_epi64(words, words);
}

__m128 times(__m128 values, float factor) {
    return _mm_mul_ps(values, _mm_set1_ps(factor));
}

/// The chroma is sixteenfold; taking the factors' sixteenth instead gives the same bits, 16 being a power of
/// two.
__m128 green(__m128 a, __m128 b) {
    return _mm_add_ps(times(a, 0.698001F / 16.0F), times(b, 0.337633F / 16.0F));
}

/// Eight pixels, of which the low halves hold the chroma.
void storeYv12(std::uint8_t* target, const std::uint8_t* lumaBytes, const Chroma& cr, const Chroma& cb) {
    const __m128i luma = _mm_shuffle_epi8(
        load8(lumaBytes), _mm_setr_epi8(0, -1, 2, -1, 4, -1, 6, -1, 1, -1, 3, -1, 5, -1, 7, -1));
    const __m128 aEven = lowFloats(cr.even);
    const __m128 aOdd = lowFloats(cr.odd);
    const __m128 bEven = lowFloats(cb.even);
    const __m128 bOdd = lowFloats(cb.odd);
    const __m128i addedBlue = evenThenOdd(times(bEven, 1.732446F / 16.0F), times(bOdd, 1.732446F / 16.0F));
    const __m128i lostGreen = evenThenOdd(green(aEven, bEven), green(aOdd, bOdd));
    const __m128i addedRed = evenThenOdd(times(aEven, 1.370705F / 16.0F), times(aOdd, 1.370705F / 16.0F));
    storeBgra(target, _mm_add_epi16(luma, addedBlue), _mm_sub_epi16(luma, lostGreen),
              _mm_add_epi16(luma, addedRed), _mm_set1_epi16(255));
}

/// 16 pixels from column x of the stretch on.
void convertBlock(const Yv12Stretch& stretch, int x) {
    const Chroma cr = interpolated(stretch.nearCr + x / 2, stretch.farCr + x / 2);
    const Chroma cb = interpolated(stretch.nearCb + x / 2, stretch.farCb + x / 2);
    std::uint8_t* const target = stretch.target + static_cast<std::ptrdiff_t>(x) * 4;
    storeYv12(target, stretch.luma + x, cr, cb);
    storeYv12(target + 32, stretch.luma + x + 8, {highHalf(cr.even), highHalf(cr.odd)},
              {highHalf(cb.even), highHalf(cb.odd)});
}

__m128 byteOf(__m128i words, int shift) {
    return _mm_cvtepi32_ps(_mm_and_si128(_mm_srli_epi32(words, shift), _mm_set1_epi32(0xFF)));
}

/// Both lumas with what chroma adds, of 256, brought to levels. Dividing by 256 and then multiplying with 255
/// is the same, 256 being a power of two.
__m128i storedOf256(__m128 even, __m128 odd) {
    return evenThenOdd(times(even, 255.0F / 256.0F), times(odd, 255.0F / 256.0F));
}

/// 8 pixels from 4 words.
void convertWords(const std::uint8_t* bytes, std::uint8_t* target) {
    const __m128i words = load(bytes);
    const __m128 even = byteOf(words, 0);
    const __m128 odd = byteOf(words, 16);
    const __m128 u = _mm_sub_ps(byteOf(words, 8), _mm_set1_ps(128.0F));
    const __m128 v = _mm_sub_ps(byteOf(words, 24), _mm_set1_ps(128.0F));
    const __m128 blue = times(u, 1.772F);
    const __m128 greenOfU = times(u, 0.344F);
    const __m128 greenOfV = times(v, 0.714F);
    const __m128 red = times(v, 1.402F);
    storeBgra(target, storedOf256(_mm_add_ps(even, blue), _mm_add_ps(odd, blue)),
              storedOf256(_mm_sub_ps(_mm_sub_ps(even, greenOfU), greenOfV),
                          _mm_sub_ps(_mm_sub_ps(odd, greenOfU), greenOfV)),
              storedOf256(_mm_add_ps(even, red), _mm_add_ps(odd, red)), _mm_set1_epi16(1));
}

} // namespace

int rgb32ToYv12(const RowPairToYv12& rows) {
    constexpr int block = 16;
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
    constexpr std::ptrdiff_t block = 16;
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
    constexpr std::ptrdiff_t block = 16;
    std::ptrdiff_t done = 0;
    for (; done + block <= bytes; done += block) {
        const __m128i ofFirst = load(first + done);
        store(first + done, load(second + done));
        store(second + done, ofFirst);
    }
    return done;
}

int yv12ToBgra(const Yv12Stretch& stretch) {
    constexpr int block = 16;
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
    constexpr int block = 8;
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

} // namespace tarvo::render::sse41
