#pragma once

#include <cstddef>

namespace tarvo::render::conformance {

/// Bytes that the process has allocated and not given back, as far as the platform's heap tells; 0 where a
/// sanitizer has taken the heap's place, which finds leaks itself.
std::size_t heapInUse();

} // namespace tarvo::render::conformance
