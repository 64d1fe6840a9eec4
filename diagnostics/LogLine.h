#pragma once

#include "diagnostics/ErrorText.h"
#include "diagnostics/Log.h"

#include <cstdint>

/// Logs one line; the format and its arguments are evaluated only when somebody wants it.
#define TARVO_LOG(log, category, instanceId, functionName, ...)                                              \
    do {                                                                                                     \
        if ((log).Begin(::tarvo::diagnostics::usualLogLevel, category, instanceId, functionName)) {          \
            (log).Print(__VA_ARGS__);                                                                        \
        }                                                                                                    \
    } while (false)

namespace tarvo::diagnostics {

/// The line about a failed platform call. `place` is the class and function,
/// "CDewarpingTransform::InitDirect3D()"; the line bears no id of its own, but names that of the object at
/// work.
inline void logFailedCall(Log& log, const char* place, std::int32_t instanceId, int line,
                          std::int32_t result) {
    TARVO_LOG(log, LogCategory::error, 0, "",
              "%s [id: %ld]  [line: %d] Erroneous HRESULT on line %d error: %s", place,
              static_cast<long>(instanceId), line, line, errorText(result).c_str());
}

} // namespace tarvo::diagnostics
