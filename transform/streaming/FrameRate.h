#pragma once

#include <cstdint>
#include <limits>

namespace tarvo::transform {

/// Times and durations count 100 ns.
inline constexpr double ticksPerSecond = 10'000'000.0;

/// The rate of frames that last so long on average; 0, unknown, for a duration that is not positive.
constexpr double framesPerSecond(std::int64_t ticksPerFrame) {
    return ticksPerFrame > 0 ? ticksPerSecond / static_cast<double>(ticksPerFrame) : 0.0;
}

/// Integer part of a number; 0 for what is negative or no number, the largest value for what is beyond it.
constexpr std::int64_t integerPart(double value) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    if (!(value > 0.0))
        return 0;
    return value >= static_cast<double>(largest) ? largest : static_cast<std::int64_t>(value);
}

/// How long a frame of this rate lasts, in whole ticks; 0 for a rate that is not positive.
constexpr std::int64_t ticksPerFrame(double framesPerSecond) {
    return framesPerSecond > 0.0 ? integerPart(ticksPerSecond / framesPerSecond) : 0;
}

} // namespace tarvo::transform
