#pragma once

#include <windows.h>

namespace tarvo::platform {

/// The program or library that this code is linked into; nothing to be freed.
HMODULE ownModule();

} // namespace tarvo::platform
