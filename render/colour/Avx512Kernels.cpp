// Compiled for AVX-512 F, BW and VL.
#include "render/colour/Rgb32Kernel.h"
#include "render/colour/YuvKernels.h"

namespace tarvo::render {
namespace {

struct Avx512 : VectorTypes<4> {
    static constexpr int chromaParts = 1;
    using V = __m512i;

    static Bytes load(const std::uint8_t* bytes) { return Bytes(_mm512_loadu_si512(bytes)); }
    static void store(std::uint8_t* bytes, Bytes value) { _mm512_storeu_si512(bytes, V(value)); }
    static __m256i load32(const std::uint8_t* bytes) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(bytes));
    }
    static void store32(std::uint8_t* bytes, __m256i value) {
        _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(bytes), value);
    }
    static __m128i load16(const std::uint8_t* bytes) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(bytes));
    }
    static Bytes repeated(__m128i lane) { return Bytes(_mm512_broadcast_i32x4(lane)); }
    static Bytes shuffled(Bytes a, Bytes which) { return Bytes(_mm512_shuffle_epi8(V(a), V(which))); }
    static Bytes packed(Words a, Words b) { return Bytes(_mm512_packus_epi16(V(a), V(b))); }
    static Words packed(Longs a, Longs b) { return Words(_mm512_packus_epi32(V(a), V(b))); }
    static Bytes lowInTurns(Bytes a, Bytes b) { return Bytes(_mm512_unpacklo_epi8(V(a), V(b))); }
    static Bytes highInTurns(Bytes a, Bytes b) { return Bytes(_mm512_unpackhi_epi8(V(a), V(b))); }
    static Words lowInTurns(Words a, Words b) { return Words(_mm512_unpacklo_epi16(V(a), V(b))); }
    static Words highInTurns(Words a, Words b) { return Words(_mm512_unpackhi_epi16(V(a), V(b))); }
    static Longs lowInTurns(Longs a, Longs b) { return Longs(_mm512_unpacklo_epi32(V(a), V(b))); }
    static Longs highInTurns(Longs a, Longs b) { return Longs(_mm512_unpackhi_epi32(V(a), V(b))); }
    static Longs even(Longs a, Longs b) {
        return Longs(_mm512_shuffle_ps(Floats(a), Floats(b), _MM_SHUFFLE(2, 0, 2, 0)));
    }
    static Longs odd(Longs a, Longs b) {
        return Longs(_mm512_shuffle_ps(Floats(a), Floats(b), _MM_SHUFFLE(3, 1, 3, 1)));
    }
    static Words multiplied(Words a, Words b) { return Words(_mm512_mulhrs_epi16(V(a), V(b))); }
    static Words multipliedBytes(Bytes a, Bytes b) { return Words(_mm512_maddubs_epi16(V(a), V(b))); }
    static Longs multipliedPairs(Words a, Words b) { return Longs(_mm512_madd_epi16(V(a), V(b))); }
    static Words rounded(Floats a, Floats b) {
        return Words(_mm512_packs_epi32(_mm512_cvtps_epi32(a), _mm512_cvtps_epi32(b)));
    }

    static void storeFours(std::uint8_t* target, Bytes bytes) {
        const V order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        store(target, Bytes(_mm512_permutexvar_epi32(order, V(bytes))));
    }
    static void storeEights(std::uint8_t* first, std::uint8_t* second, Bytes bytes) {
        // In each lane four pairs for either, which those of the other lanes belong between.
        const V order = _mm512_set_epi16(31, 23, 15, 7, 30, 22, 14, 6, 29, 21, 13, 5, 28, 20, 12, 4, //
                                         27, 19, 11, 3, 26, 18, 10, 2, 25, 17, 9, 1, 24, 16, 8, 0);
        const V inOrder = _mm512_permutexvar_epi16(order, V(bytes));
        store32(first, _mm512_castsi512_si256(inOrder));
        store32(second, _mm512_extracti64x4_epi64(inOrder, 1));
    }
    static Longs loadApart(const std::uint8_t* bytes) {
        return Longs(_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), V(load(bytes))));
    }
    static Words lumaWords(const std::uint8_t* bytes) {
        const V order = _mm512_setr_epi32(0, 4, 0, 0, 1, 5, 0, 0, 2, 6, 0, 0, 3, 7, 0, 0);
        const V fours = _mm512_permutexvar_epi32(order, _mm512_castsi256_si512(load32(bytes)));
        return Words(lowInTurns(Bytes(fours), Bytes{}));
    }
    static Bytes chromaPairs(const std::uint8_t* own, int /*part*/) {
        // From the sample before the first in three lanes, and up to the one behind the last in the fourth.
        const V samples = _mm512_mask_broadcast_i32x4(V(repeated(load16(own - 1))), 0xF000, load16(own + 1));
        return shuffled(Bytes(samples), Bytes{1, 0, 1, 2, 2, 1, 2, 3, 9,  8,  9,  10, 10, 9,  10, 11,
                                              3, 2, 3, 4, 4, 3, 4, 5, 11, 10, 11, 12, 12, 11, 12, 13,
                                              5, 4, 5, 6, 6, 5, 6, 7, 13, 12, 13, 14, 14, 13, 14, 15,
                                              5, 4, 5, 6, 6, 5, 6, 7, 13, 12, 13, 14, 14, 13, 14, 15});
    }
};

} // namespace

// Mirroring moves bytes and computes nothing; still wider vectors gain nothing there.
constinit const ColourKernels avx512Kernels{rgb32ToYv12<Avx512>, nullptr,     nullptr, yv12ToBgra<Avx512>,
                                            yuy2ToBgra<Avx512>,  &avx2Kernels};

} // namespace tarvo::render
