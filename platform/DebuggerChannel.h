#pragma once

namespace tarvo::platform {

/// Sends a text to whoever watches the program's debugging output; it brings its own line feed. Null is no
/// text.
///
/// On Windows that is an attached debugger or a viewer of debugger output. Elsewhere the environment variable
/// TARVO_DEBUG_CHANNEL chooses: "stderr" (and anything unknown, and no variable), "journal" for the system's
/// log, or "none". Each text is one write, so that lines of several processes do not mix. Failures are
/// silent, a standard error whose reader is gone included, and the last-error value stays as it was. Any
/// thread may call.
void writeToDebugger(const char* text);

} // namespace tarvo::platform
