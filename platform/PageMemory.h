#pragma once

#include <cstddef>

namespace tarvo::platform {

/// Zeroed memory of `bytes`, above 0, straight from the system, beginning with a page; null when there is
/// none. Pages that nobody writes to cost nothing, and released memory goes back at once: the library's heap,
/// once it has grown, would clear recycled blocks by writing to them, and keep them. Any thread.
void* allocatePages(std::size_t bytes) noexcept;
/// Gives it back; the same number of bytes.
void releasePages(void* pages, std::size_t bytes) noexcept;

} // namespace tarvo::platform
