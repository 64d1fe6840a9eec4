#include "render/software/StreamingCopy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace tarvo::render::software {
namespace {

TEST(StreamingCopy, copiesWhatItIsToldAndNothingElse) {
    std::minstd_rand random(7);
    constexpr std::size_t guard = 130;
    for (int round = 0; round < 400; ++round) {
        // Shorter than a line of the cache, a few lines, some pages.
        const std::size_t count = random() % (round % 4 == 0 ? 20000 : 300);
        const std::size_t sourceOffset = random() % 64;
        const std::size_t targetOffset = random() % 64;
        std::vector<std::uint8_t> source(sourceOffset + count);
        for (std::uint8_t& byte : source)
            byte = static_cast<std::uint8_t>(random() >> 8);
        std::vector<std::uint8_t> target(guard + targetOffset + count + guard, 0xA5);
        std::vector<std::uint8_t> expected = target;
        std::copy(source.begin() + static_cast<std::ptrdiff_t>(sourceOffset), source.end(),
                  expected.begin() + static_cast<std::ptrdiff_t>(guard + targetOffset));
        copyPastCaches(target.data() + guard + targetOffset, source.data() + sourceOffset, count);
        ASSERT_EQ(target, expected) << count << " bytes, offsets " << sourceOffset << ", " << targetOffset;
    }
}

} // namespace
} // namespace tarvo::render::software
