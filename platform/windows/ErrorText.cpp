#include "platform/ErrorText.h"

#include <memory>
#include <windows.h>

namespace tarvo::platform {

std::optional<std::string> systemErrorText(std::int32_t code) {
    char* buffer = nullptr;
    const DWORD length = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        static_cast<DWORD>(code), 0, reinterpret_cast<char*>(&buffer), 0, nullptr);
    const std::unique_ptr<char, decltype(&LocalFree)> owner(buffer, &LocalFree);
    if (length == 0 || buffer == nullptr)
        return std::nullopt;
    return std::string(buffer, length);
}

} // namespace tarvo::platform
