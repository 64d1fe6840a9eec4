// Compiled for AVX2.
#include "render/colour/MirrorKernels.h"
#include "render/colour/Rgb32Kernel.h"
#include "render/colour/YuvKernels.h"

namespace tarvo::render {
namespace {

struct Avx2 : VectorTypes<2> {
    static constexpr int chromaParts = 2;
    using V = __m256i;

    static Bytes load(const std::uint8_t* bytes) {
        return Bytes(_mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(bytes)));
    }
    static void store(std::uint8_t* bytes, Bytes value) {
        _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(bytes), V(value));
    }
    static __m128i load16(const std::uint8_t* bytes) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(bytes));
    }
    static void store16(std::uint8_t* bytes, __m128i value) {
        _mm_storeu_si128(reinterpret_cast<__m128i_u*>(bytes), value);
    }
    static Bytes repeated(__m128i lane) { return Bytes(_mm256_broadcastsi128_si256(lane)); }
    static Bytes shuffled(Bytes a, Bytes which) { return Bytes(_mm256_shuffle_epi8(V(a), V(which))); }
    static Bytes packed(Words a, Words b) { return Bytes(_mm256_packus_epi16(V(a), V(b))); }
    static Words packed(Longs a, Longs b) { return Words(_mm256_packus_epi32(V(a), V(b))); }
    static Bytes lowInTurns(Bytes a, Bytes b) { return Bytes(_mm256_unpacklo_epi8(V(a), V(b))); }
    static Bytes highInTurns(Bytes a, Bytes b) { return Bytes(_mm256_unpackhi_epi8(V(a), V(b))); }
    static Words lowInTurns(Words a, Words b) { return Words(_mm256_unpacklo_epi16(V(a), V(b))); }
    static Words highInTurns(Words a, Words b) { return Words(_mm256_unpackhi_epi16(V(a), V(b))); }
    static Longs lowInTurns(Longs a, Longs b) { return Longs(_mm256_unpacklo_epi32(V(a), V(b))); }
    static Longs highInTurns(Longs a, Longs b) { return Longs(_mm256_unpackhi_epi32(V(a), V(b))); }
    static Longs even(Longs a, Longs b) {
        return Longs(_mm256_shuffle_ps(Floats(a), Floats(b), _MM_SHUFFLE(2, 0, 2, 0)));
    }
    static Longs odd(Longs a, Longs b) {
        return Longs(_mm256_shuffle_ps(Floats(a), Floats(b), _MM_SHUFFLE(3, 1, 3, 1)));
    }
    static Words multiplied(Words a, Words b) { return Words(_mm256_mulhrs_epi16(V(a), V(b))); }
    static Words multipliedBytes(Bytes a, Bytes b) { return Words(_mm256_maddubs_epi16(V(a), V(b))); }
    static Longs multipliedPairs(Words a, Words b) { return Longs(_mm256_madd_epi16(V(a), V(b))); }
    static Words rounded(Floats a, Floats b) {
        return Words(_mm256_packs_epi32(_mm256_cvtps_epi32(a), _mm256_cvtps_epi32(b)));
    }

    static void storeFours(std::uint8_t* target, Bytes bytes) {
        store(target,
              Bytes(_mm256_permutevar8x32_epi32(V(bytes), _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))));
    }
    static void storeEights(std::uint8_t* first, std::uint8_t* second, Bytes bytes) {
        // In either lane pairs which the other lane's pairs belong between.
        const __m128i low = _mm256_castsi256_si128(V(bytes));
        const __m128i high = _mm256_extracti128_si256(V(bytes), 1);
        store16(first, _mm_unpacklo_epi16(low, high));
        store16(second, _mm_unpackhi_epi16(low, high));
    }
    static Bytes loadThird(const std::uint8_t* bytes) {
        return Bytes(_mm256_inserti128_si256(_mm256_castsi128_si256(load16(bytes)), load16(bytes + 48), 1));
    }
    static void storeReversedThird(std::uint8_t* bytes, Bytes value) {
        store16(bytes + 48, _mm256_castsi256_si128(V(value)));
        store16(bytes, _mm256_extracti128_si256(V(value), 1));
    }
    static Longs loadApart(const std::uint8_t* bytes) {
        return Longs(_mm256_permute4x64_epi64(V(load(bytes)), _MM_SHUFFLE(3, 1, 2, 0)));
    }
    static Words lumaWords(const std::uint8_t* bytes) {
        return Words(
            shuffled(repeated(load16(bytes)),
                     Bytes(_mm256_setr_epi8(0, -1, 1, -1, 2, -1, 3, -1, 8, -1, 9, -1, 10, -1, 11, -1, //
                                            4, -1, 5, -1, 6, -1, 7, -1, 12, -1, 13, -1, 14, -1, 15, -1))));
    }
    static Bytes chromaPairs(const std::uint8_t* own, int part) {
        constexpr Bytes first{1, 0, 1, 2, 2, 1, 2, 3, 5, 4, 5, 6, 6, 5, 6, 7,
                              3, 2, 3, 4, 4, 3, 4, 5, 7, 6, 7, 8, 8, 7, 8, 9};
        // Loaded from the sample before the first, or up to the one behind the last.
        if (part == 0)
            return shuffled(repeated(load16(own - 1)), first);
        return shuffled(repeated(load16(own + 1)), first + std::uint8_t{6});
    }
};

} // namespace

constinit const ColourKernels avx2Kernels{rgb32ToYv12<Avx2>, swapReversed24<Avx2>, swapBytes<Avx2>,
                                          yv12ToBgra<Avx2>,  yuy2ToBgra<Avx2>,     &sse41Kernels};

} // namespace tarvo::render
