#pragma once

#include "custom/tables/CustomTables.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::custom {

inline constexpr std::size_t wordsPerTexel = 4;

/// What the programs look up: a picture of `width` times `tableCount` x `height` texels, the tables one below
/// the other, four 16-bit words a texel - x, y, weight and one that is not read.
///
/// The effect level, 0 … 1, blends every table between the identity, where each cell looks at its own place
/// with the weight 1 / tableCount, and the table as it is. An entry without weight stays at its own place;
/// below level 1 it contributes the identity's share there. Single precision, what is behind the point is cut
/// off. The tables are not empty. Throws std::bad_alloc.
std::vector<std::uint16_t> lookupTexels(const CustomTables& tables, float effectLevel);

} // namespace tarvo::custom
