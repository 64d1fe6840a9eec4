#pragma once

#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

/// Copies bytes past the caches: what is written displaces nothing there, and nothing is fetched only to be
/// overwritten. Worth it for memory that nobody reads before it would have been displaced anyway. The ranges
/// do not overlap. What was written is there for whoever learns of the return.
void copyPastCaches(std::uint8_t* target, const std::uint8_t* source, std::size_t count) noexcept;

} // namespace tarvo::render::software
