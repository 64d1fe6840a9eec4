#pragma once

#include <span>
#include <vector>

namespace tarvo::tests {

/// One level of each factor, counted from 0.
using Levels = std::vector<int>;

/// Rows in which any two levels of any two factors meet at least once: nearly as telling as all combinations,
/// and far fewer. The same counts, each at least 1, always give the same rows.
std::vector<Levels> pairwise(std::span<const int> levelCounts);

/// All combinations, the last factor changing fastest.
std::vector<Levels> wholeProduct(std::span<const int> levelCounts);

} // namespace tarvo::tests
