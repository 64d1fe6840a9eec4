#pragma once

#include <cstdint>

namespace tarvo::platform {

/// The calling thread's last-error value: on Windows GetLastError, elsewhere errno.
std::uint32_t lastError();
void setLastError(std::uint32_t value);

} // namespace tarvo::platform
