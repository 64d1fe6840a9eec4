#pragma once

#include <cstdint>
#include <string>

namespace tarvo::diagnostics {

/// The text of an HRESULT for a log line: the system's message without its line end, else "IDispatch error
/// #n" for codes that a dispatch interface made, else "Unknown error 0x…".
std::string errorText(std::int32_t result);

} // namespace tarvo::diagnostics
