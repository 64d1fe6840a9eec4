#pragma once

#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"

struct IAccelerator;

namespace tarvo::transform {

/// Puts a new accelerator filter between the filter that `outer` is part of and whoever delivers to its first
/// pin, in the graph that holds them, and gives out the accelerator's settings. It inserts fill frames if
/// that is wanted.
///
/// The HRESULT is that of the step that failed, which the log names. Only when the new connections fail is
/// the old one restored; after any earlier failure the graph is left as it is. The graph must be stopped.
/// Throws std::bad_alloc.
HRESULT injectAccelerator(IUnknown& outer, bool insertsFillFrames, const diagnostics::ObjectLog& log,
                          IAccelerator** accelerator);

} // namespace tarvo::transform
