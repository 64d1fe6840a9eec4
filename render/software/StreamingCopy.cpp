#include "render/software/StreamingCopy.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>

namespace tarvo::render::software {
namespace {

constexpr std::size_t cacheLine = 64;
// What processors guess of a stream ends with each page: the next one is fetched while this one is copied.
constexpr std::uintptr_t bytesAhead = 4096;

void fetchAhead(const std::uint8_t* place) {
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(place) + bytesAhead),
                 _MM_HINT_T0);
}

} // namespace

void copyPastCaches(std::uint8_t* target, const std::uint8_t* source, std::size_t count) noexcept {
    // Stores past the caches want whole lines.
    const std::size_t misplaced = reinterpret_cast<std::uintptr_t>(target) % cacheLine;
    const std::size_t first = std::min(count, misplaced == 0 ? 0 : cacheLine - misplaced);
    std::copy_n(source, first, target);
    std::size_t i = first;
    for (; count - i >= cacheLine; i += cacheLine) {
        fetchAhead(source + i);
        for (std::size_t k = i; k < i + cacheLine; k += sizeof(__m128i)) {
            __m128i bytes;
            std::memcpy(&bytes, source + k, sizeof(bytes));
            _mm_stream_si128(static_cast<__m128i*>(static_cast<void*>(target + k)), bytes);
        }
    }
    std::copy_n(source + i, count - i, target + i);
    _mm_sfence();
}

} // namespace tarvo::render::software
