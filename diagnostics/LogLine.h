#pragma once

#include "diagnostics/ErrorText.h"
#include "diagnostics/Log.h"

#include <cstdint>

/// Logs one line; the format and its arguments are evaluated only when somebody wants it. Where an argument
/// throws, the line is dropped and the exception goes on.
#define TARVO_LOG(log, category, instanceId, functionName, ...)                                              \
    do {                                                                                                     \
        if ((log).Begin(::tarvo::diagnostics::usualLogLevel, category, instanceId, functionName)) {          \
            ::tarvo::diagnostics::CBegunLine begunLine_(log);                                                \
            (log).Print(__VA_ARGS__);                                                                        \
            begunLine_.printed();                                                                            \
        }                                                                                                    \
    } while (false)

namespace tarvo::diagnostics {

/// Sees to it that a line which was begun also ends.
class CBegunLine {
public:
    explicit CBegunLine(Log& log) : m_log(&log) {}
    ~CBegunLine() {
        if (m_log != nullptr) {
            m_log->Drop();
        }
    }
    CBegunLine(const CBegunLine&) = delete;
    CBegunLine& operator=(const CBegunLine&) = delete;

    void printed() { m_log = nullptr; }

private:
    Log* m_log;
};

/// The line about a failed platform call. `place` is the class and function,
/// "CDewarpingTransform::InitDirect3D()"; the line bears no id of its own, but names that of the object at
/// work. Without memory for the text it is dropped.
inline void logFailedCall(Log& log, const char* place, std::int32_t instanceId, int line,
                          std::int32_t result) noexcept {
    try {
        TARVO_LOG(log, LogCategory::error, 0, "",
                  "%s [id: %ld]  [line: %d] Erroneous HRESULT on line %d error: %s", place,
                  static_cast<long>(instanceId), line, line, errorText(result).c_str());
    } catch (...) { // NOLINT(bugprone-empty-catch): logging never fails its caller
    }
}

} // namespace tarvo::diagnostics
