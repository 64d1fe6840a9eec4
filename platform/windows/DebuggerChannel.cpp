#include "platform/DebuggerChannel.h"

#include <windows.h>

namespace tarvo::platform {

void writeToDebugger(const char* text) {
    if (text == nullptr || *text == '\0')
        return;
    // The text travels as an exception, whose handlers may change it.
    const DWORD saved = GetLastError();
    OutputDebugStringA(text);
    SetLastError(saved);
}

} // namespace tarvo::platform
