// Compiled for SSSE3 and SSE4.1.
#include "render/colour/MirrorKernels.h"
#include "render/colour/Rgb32Kernel.h"
#include "render/colour/YuvKernels.h"

namespace tarvo::render {
namespace {

struct Sse41 : VectorTypes<1> {
    static constexpr int chromaParts = 2;
    using V = __m128i;

    static Bytes load(const std::uint8_t* bytes) {
        return Bytes(_mm_loadu_si128(reinterpret_cast<const __m128i_u*>(bytes)));
    }
    static void store(std::uint8_t* bytes, Bytes value) {
        _mm_storeu_si128(reinterpret_cast<__m128i_u*>(bytes), V(value));
    }
    static Bytes load8(const std::uint8_t* bytes) {
        return Bytes(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(bytes)));
    }
    static Bytes repeated(__m128i lane) { return Bytes(lane); }
    static Bytes shuffled(Bytes a, Bytes which) { return Bytes(_mm_shuffle_epi8(V(a), V(which))); }
    static Bytes packed(Words a, Words b) { return Bytes(_mm_packus_epi16(V(a), V(b))); }
    static Words packed(Longs a, Longs b) { return Words(_mm_packus_epi32(V(a), V(b))); }
    static Bytes lowInTurns(Bytes a, Bytes b) { return Bytes(_mm_unpacklo_epi8(V(a), V(b))); }
    static Bytes highInTurns(Bytes a, Bytes b) { return Bytes(_mm_unpackhi_epi8(V(a), V(b))); }
    static Words lowInTurns(Words a, Words b) { return Words(_mm_unpacklo_epi16(V(a), V(b))); }
    static Words highInTurns(Words a, Words b) { return Words(_mm_unpackhi_epi16(V(a), V(b))); }
    static Longs lowInTurns(Longs a, Longs b) { return Longs(_mm_unpacklo_epi32(V(a), V(b))); }
    static Longs highInTurns(Longs a, Longs b) { return Longs(_mm_unpackhi_epi32(V(a), V(b))); }
    static Longs even(Longs a, Longs b) {
        return Longs(_mm_shuffle_ps(Floats(a), Floats(b), _MM_SHUFFLE(2, 0, 2, 0)));
    }
    static Longs odd(Longs a, Longs b) {
        return Longs(_mm_shuffle_ps(Floats(a), Floats(b), _MM_SHUFFLE(3, 1, 3, 1)));
    }
    static Words multiplied(Words a, Words b) { return Words(_mm_mulhrs_epi16(V(a), V(b))); }
    static Words multipliedBytes(Bytes a, Bytes b) { return Words(_mm_maddubs_epi16(V(a), V(b))); }
    static Longs multipliedPairs(Words a, Words b) { return Longs(_mm_madd_epi16(V(a), V(b))); }
    static Words rounded(Floats a, Floats b) {
        return Words(_mm_packs_epi32(_mm_cvtps_epi32(a), _mm_cvtps_epi32(b)));
    }

    static void storeFours(std::uint8_t* target, Bytes bytes) { store(target, bytes); }
    static void storeEights(std::uint8_t* first, std::uint8_t* second, Bytes bytes) {
        _mm_storel_epi64(reinterpret_cast<__m128i_u*>(first), V(bytes));
        _mm_storel_epi64(reinterpret_cast<__m128i_u*>(second), _mm_unpackhi_epi64(V(bytes), V(bytes)));
    }
    static Bytes loadThird(const std::uint8_t* bytes) { return load(bytes); }
    static void storeReversedThird(std::uint8_t* bytes, Bytes value) { store(bytes, value); }
    static Longs loadApart(const std::uint8_t* bytes) { return Longs(load(bytes)); }
    static Words lumaWords(const std::uint8_t* bytes) { return Words(_mm_cvtepu8_epi16(V(load8(bytes)))); }
    static Bytes chromaPairs(const std::uint8_t* own, int part) {
        // Loaded from the sample before the first, or up to the one behind the last.
        if (part == 0)
            return shuffled(load8(own - 1), Bytes{1, 0, 1, 2, 2, 1, 2, 3, 3, 2, 3, 4, 4, 3, 4, 5});
        return shuffled(load8(own + 1), Bytes{3, 2, 3, 4, 4, 3, 4, 5, 5, 4, 5, 6, 6, 5, 6, 7});
    }
};

} // namespace

constinit const ColourKernels sse41Kernels{rgb32ToYv12<Sse41>, swapReversed24<Sse41>, swapBytes<Sse41>,
                                           yv12ToBgra<Sse41>,  yuy2ToBgra<Sse41>,     &plainKernels};

} // namespace tarvo::render
