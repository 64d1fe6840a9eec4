#pragma once

#include "com/Trace.h"
#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"

namespace tarvo::render::d3d11 {

/// Logs the failures of one operation, for the macros of com/Trace.h.
struct FailureTrace {
    diagnostics::ObjectLog log;
    const char* place; ///< class and function, "CThing::Open()"

    void operator()(HRESULT result, int line) const noexcept { log.failedCall(place, line, result); }
};

} // namespace tarvo::render::d3d11
