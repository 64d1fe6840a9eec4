#include "platform/LastError.h"

#include <windows.h>

namespace tarvo::platform {

std::uint32_t lastError() {
    return GetLastError();
}

void setLastError(std::uint32_t value) {
    SetLastError(value);
}

} // namespace tarvo::platform
