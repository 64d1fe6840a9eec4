#pragma once

#include "diagnostics/LogLine.h"

#include <cstdint>

namespace tarvo::diagnostics {

/// The log as one object of the module writes to it: with the id that the object registered under.
struct ObjectLog {
    Log& log;
    std::int32_t instanceId = 0;

    /// The line about a failed platform call; `place` is the class and function, "CThing::Open()".
    void failedCall(const char* place, int line, std::int32_t result) const noexcept {
        logFailedCall(log, place, instanceId, line, result);
    }

    /// A line of fixed text about an error.
    void error(const char* text) const noexcept {
        try {
            TARVO_LOG(log, LogCategory::error, 0, "", "%s", text);
        } catch (...) { // NOLINT(bugprone-empty-catch): logging never fails its caller
        }
    }
};

} // namespace tarvo::diagnostics
