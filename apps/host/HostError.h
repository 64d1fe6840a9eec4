#pragma once

#include "platform/InterfaceTypes.h"

#include <stdexcept>
#include <string>

namespace tarvo::host {

/// A step with the module or one of its objects that failed; the text names the step and tells why, and ends
/// in the HRESULT.
class HostError : public std::runtime_error {
public:
    /// `step` reads before "failed", such as "setting the input type". Without a `reason` the system's text
    /// for the result is taken.
    HostError(const std::string& step, HRESULT result, const std::string& reason = {});

    HRESULT result() const noexcept { return m_result; }

private:
    HRESULT m_result;
};

/// Throws HostError when the step failed.
inline void requireStep(HRESULT result, const char* step) {
    if (FAILED(result)) {
        throw HostError(step, result);
    }
}

} // namespace tarvo::host
