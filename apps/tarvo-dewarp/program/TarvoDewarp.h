#pragma once

#include "apps/tarvo-dewarp/Program.h"

#include <iosfwd>
#include <span>
#include <string>

namespace tarvo::apps {

/// The whole program `tarvo-dewarp`, as runProgram() does it.
int runTarvoDewarp(std::span<const std::string> arguments, std::ostream& out, std::ostream& err);

} // namespace tarvo::apps
