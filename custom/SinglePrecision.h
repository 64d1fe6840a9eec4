#pragma once

#include <algorithm>
#include <limits>

namespace tarvo::custom {

/// A value as the drawing programs hold it: limited to what single precision can, and what is no number stays
/// none.
inline float single(double value) {
    constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(value, -largest, largest));
}

} // namespace tarvo::custom
