#pragma once

#include "apps/tarvo-dewarp/Commands.h"

namespace tarvo::apps {

// Commands about the module itself, as those of Commands.h; these also throw host::HostError.

/// `info`: what the module offers on this system.
Command addInfoCommand(CLI::App& program);

/// `register`: hosts can create the module's classes by name from now on.
Command addRegisterCommand(CLI::App& program);

/// `unregister`: takes that back.
Command addUnregisterCommand(CLI::App& program);

} // namespace tarvo::apps
