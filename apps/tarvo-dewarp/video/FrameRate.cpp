#include "apps/tarvo-dewarp/video/FrameRate.h"

#include "apps/tarvo-dewarp/OptionValues.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace tarvo::apps::video {
namespace {

constexpr double lowestRate = 0.00001;
constexpr double highestRate = 1000.0;

} // namespace

bool isPlausible(const FrameRate& rate) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    return rate.numerator > 0 && rate.denominator > 0 && rate.numerator <= most && rate.denominator <= most &&
           rate.perSecond() >= lowestRate && rate.perSecond() <= highestRate;
}

std::int64_t startOf(std::int64_t index, const FrameRate& rate) {
    // Whole periods of the fraction first: their product is exact, and what is left is small.
    const std::int64_t periods = index / rate.numerator;
    const auto rest = static_cast<double>(index % rate.numerator);
    return periods * rate.denominator * ticksPerSecond +
           std::llround(rest * static_cast<double>(rate.denominator) / static_cast<double>(rate.numerator) *
                        static_cast<double>(ticksPerSecond));
}

std::int64_t indexAt(std::int64_t ticks, const FrameRate& rate) {
    return std::llround(static_cast<double>(ticks) / static_cast<double>(ticksPerSecond) *
                        static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator));
}

FrameRate readFrameRate(const std::string& option, const std::string& text) {
    const std::string allowed = "frames a second from 0.00001 to 1000, as 12.5 or 30000/1001";
    const auto part = [&](const std::string& number) {
        return readNumber(option, number, 0.0, std::numeric_limits<std::int32_t>::max(), allowed);
    };
    FrameRate rate;
    if (const std::size_t slash = text.find('/'); slash != std::string::npos) {
        const double numerator = part(text.substr(0, slash));
        const double denominator = part(text.substr(slash + 1));
        if (numerator != std::floor(numerator) || denominator != std::floor(denominator)) {
            refuseValue(option, text, allowed);
        }
        rate = {static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator)};
    } else {
        // As many digits as keep both parts below their limit.
        constexpr std::int64_t scale = 100'000;
        rate = {std::llround(std::min(part(text), 2.0 * highestRate) * scale), scale};
    }
    if (!isPlausible(rate)) {
        refuseValue(option, text, allowed);
    }
    const std::int64_t common = std::gcd(rate.numerator, rate.denominator);
    return {rate.numerator / common, rate.denominator / common};
}

} // namespace tarvo::apps::video
