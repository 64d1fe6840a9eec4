#pragma once

#include <string>

namespace tarvo::bench {

/// The text that printf would print. Throws std::bad_alloc, std::invalid_argument for a pattern it cannot
/// print.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char* pattern, ...);

} // namespace tarvo::bench
