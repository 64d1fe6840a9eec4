#include "diagnostics/ErrorText.h"

#include "platform/ErrorText.h"

#include <cstdio>

namespace tarvo::diagnostics {
namespace {

bool removeEnd(std::string& text, char character) {
    if (text.empty() || text.back() != character) {
        return false;
    }
    text.pop_back();
    return true;
}

} // namespace

std::string errorText(std::int32_t result) {
    if (auto text = platform::systemErrorText(result)) {
        if (removeEnd(*text, '\n')) {
            removeEnd(*text, '\r');
        }
        return *text;
    }
    const auto code = static_cast<std::uint32_t>(result);
    char text[32];
    if (code > 0x80040200U && code <= 0x8004FFFFU) {
        std::snprintf(text, sizeof text, "IDispatch error #%d", static_cast<int>((code & 0xFFFFU) - 0x200U));
    } else {
        std::snprintf(text, sizeof text, "Unknown error 0x%0lX", static_cast<unsigned long>(code));
    }
    return text;
}

} // namespace tarvo::diagnostics
