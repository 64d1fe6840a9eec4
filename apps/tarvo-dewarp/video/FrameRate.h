#pragma once

#include <cstdint>
#include <string>

namespace tarvo::apps::video {

/// Units of the transform's times in a second.
inline constexpr std::int64_t ticksPerSecond = 10'000'000;

/// Frames a second as a fraction, both parts positive: the rates of broadcasting are no decimal numbers.
struct FrameRate {
    std::int64_t numerator = 25;
    std::int64_t denominator = 1;

    double perSecond() const { return static_cast<double>(numerator) / static_cast<double>(denominator); }

    friend constexpr bool operator==(const FrameRate&, const FrameRate&) = default;
};

/// Whether a video can have such a rate: both parts positive and below 2^31, 0.00001 to 1000 a second.
bool isPlausible(const FrameRate& rate);

/// When frame number `index` of a steady stream begins, in units of 100 ns from frame 0, rounded to nearest.
std::int64_t startOf(std::int64_t index, const FrameRate& rate);

/// Which frame of a steady stream begins next to that time.
std::int64_t indexAt(std::int64_t ticks, const FrameRate& rate);

/// Reads an option's text: a decimal number or a fraction as 30000/1001. Throws UsageError.
FrameRate readFrameRate(const std::string& option, const std::string& text);

} // namespace tarvo::apps::video
