#pragma once

#include "render/colour/VectorTypes.h"

namespace tarvo::render {
namespace {

/// In each lane 16 pixels of 3 bytes.
template<typename Set>
struct Pixels24 {
    Bytes<Set> part[3];
};

template<typename Set>
Pixels24<Set> loadPixels24(const std::uint8_t* bytes) {
    return {{Set::loadThird(bytes), Set::loadThird(bytes + 16), Set::loadThird(bytes + 32)}};
}

template<typename Set>
Bytes<Set> pick(Bytes<Set> bytes, __m128i which) {
    return Set::shuffled(bytes, Set::repeated(which));
}

/// Stores the pixels in reverse order. −1 makes a zero byte, which the part that has the byte fills.
template<typename Set>
void storeReversed(std::uint8_t* target, const Pixels24<Set>& pixels) {
    const Bytes<Set> last =
        pick<Set>(pixels.part[2], _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, -1));
    const Bytes<Set> beforeLast = pick<Set>(
        pixels.part[1], _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 14));
    Set::storeReversedThird(target, last | beforeLast);

    const Bytes<Set> fromLast = pick<Set>(
        pixels.part[2], _mm_setr_epi8(-1, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const Bytes<Set> middle =
        pick<Set>(pixels.part[1], _mm_setr_epi8(15, -1, 11, 12, 13, 8, 9, 10, 5, 6, 7, 2, 3, 4, -1, 0));
    const Bytes<Set> fromFirst = pick<Set>(
        pixels.part[0], _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 15, -1));
    Set::storeReversedThird(target + 16, fromLast | middle | fromFirst);

    const Bytes<Set> afterFirst = pick<Set>(
        pixels.part[1], _mm_setr_epi8(1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const Bytes<Set> first =
        pick<Set>(pixels.part[0], _mm_setr_epi8(-1, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2));
    Set::storeReversedThird(target + 32, afterFirst | first);
}

template<typename Set>
std::ptrdiff_t swapReversed24(std::uint8_t* front, std::uint8_t* backEnd, std::ptrdiff_t pixels) {
    constexpr std::ptrdiff_t block = 16 * Set::lanes;
    std::ptrdiff_t done = 0;
    for (; done + block <= pixels; done += block) {
        std::uint8_t* const one = front + done * 3;
        std::uint8_t* const other = backEnd - (done + block) * 3;
        const Pixels24<Set> ofOne = loadPixels24<Set>(one);
        const Pixels24<Set> ofOther = loadPixels24<Set>(other);
        storeReversed<Set>(one, ofOther);
        storeReversed<Set>(other, ofOne);
    }
    return done;
}

template<typename Set>
std::ptrdiff_t swapBytes(std::uint8_t* first, std::uint8_t* second, std::ptrdiff_t bytes) {
    constexpr std::ptrdiff_t block = 16 * Set::lanes;
    std::ptrdiff_t done = 0;
    for (; done + block <= bytes; done += block) {
        const Bytes<Set> ofFirst = Set::load(first + done);
        Set::store(first + done, Set::load(second + done));
        Set::store(second + done, ofFirst);
    }
    return done;
}

} // namespace
} // namespace tarvo::render
