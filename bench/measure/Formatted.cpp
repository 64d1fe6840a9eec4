#include "bench/measure/Formatted.h"

#include <cstdarg>
#include <cstdio>
#include <stdexcept>

namespace tarvo::bench {

std::string formatted(const char* pattern, ...) {
    std::va_list values;
    va_start(values, pattern);
    std::va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(nullptr, 0, pattern, values);
    va_end(values);
    std::string text(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, pattern, again);
    }
    va_end(again);
    if (length < 0) {
        throw std::invalid_argument("a text cannot be printed");
    }
    return text;
}

} // namespace tarvo::bench
