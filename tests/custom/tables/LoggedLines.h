#pragma once

#include "diagnostics/ObjectLog.h"
#include "tests/diagnostics/FakeLogServices.h"

#include <string>
#include <utility>
#include <vector>

namespace tarvo::custom {

/// A log of its own whose lines can be looked at.
class CLoggedLines {
public:
    CLoggedLines() : m_log(m_services) { m_log.SetModule("", 2); }

    diagnostics::ObjectLog objectLog() { return {m_log, 7}; }
    /// What was logged since the last call.
    std::vector<std::string> take() { return std::exchange(m_services.debuggerLines, {}); }

private:
    diagnostics::FakeLogServices m_services;
    diagnostics::Log m_log;
};

} // namespace tarvo::custom
