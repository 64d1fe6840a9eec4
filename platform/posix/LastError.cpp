#include "platform/LastError.h"

#include <cerrno>

namespace tarvo::platform {

std::uint32_t lastError() {
    return static_cast<std::uint32_t>(errno);
}

void setLastError(std::uint32_t value) {
    errno = static_cast<int>(value);
}

} // namespace tarvo::platform
