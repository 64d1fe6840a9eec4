#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarvo::platform {

/// The system's message for an HRESULT or Windows error code, in its default language and with the line end
/// it comes with ("\r\n"); none when the system has no text for the code. Natively the English texts of the
/// usual codes.
std::optional<std::string> systemErrorText(std::int32_t code);

} // namespace tarvo::platform
