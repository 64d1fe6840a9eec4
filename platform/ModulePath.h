#pragma once

#include <string>

namespace tarvo::platform {

/// Full path of the program or dynamic library that this code is linked into, UTF-8; empty if the system
/// cannot tell.
std::string modulePath();

} // namespace tarvo::platform
