#pragma once

#include "platform/InterfaceTypes.h"

// Check, report, return. What a report looks like and where it goes is the trace's own business: anything
// that can be called as trace(HRESULT, int line), noexcept, and that knows by itself the place it speaks for,
// for instance
//
//     const auto trace = [this](HRESULT result, int line) noexcept { … "CThing::open()" … };
//     RETURN_IF_FAILED_TRACED(trace, device->CreateTexture(…));

/// Evaluates an expression once. A failed HRESULT is handed to the trace with the line of this statement and
/// returned unchanged; after any other the function goes on.
#define RETURN_IF_FAILED_TRACED(trace, expression)                                                           \
    do {                                                                                                     \
        if (const HRESULT tracedResult_ = ::tarvo::com::traced((trace), (expression), __LINE__);             \
            FAILED(tracedResult_))                                                                           \
            return tracedResult_;                                                                            \
    } while (false)

/// The same without a return: the value is the expression's HRESULT.
#define TRACE_IF_FAILED(trace, expression) ::tarvo::com::traced((trace), (expression), __LINE__)

/// The same without a report.
#define RETURN_IF_FAILED(expression)                                                                         \
    do {                                                                                                     \
        if (const HRESULT untracedResult_ = (expression); FAILED(untracedResult_))                           \
            return untracedResult_;                                                                          \
    } while (false)

namespace tarvo::com {

/// Reports a failed result with its line; returns the result. What the report throws ends here.
template<class Trace>
HRESULT traced(const Trace& trace, HRESULT result, int line) noexcept {
    if (FAILED(result)) {
        try {
            trace(result, line);
        } catch (
            ...) { // NOLINT(bugprone-empty-catch): a report that fails must not hide the failure it is about
        }
    }
    return result;
}

} // namespace tarvo::com
