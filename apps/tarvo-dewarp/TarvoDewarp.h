#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace tarvo::apps {

inline constexpr int exitSuccess = 0;
/// A file that cannot be read or written, or too little memory.
inline constexpr int exitFailure = 1;
/// Arguments that are not understood or not allowed; nothing was read or written for an unknown one.
inline constexpr int exitUsage = 2;

/// The whole program `tarvo-dewarp`: carries out the command that the arguments (without the program's own
/// name, UTF-8) ask for and returns the exit status, one of the above. Results go to `out`, messages to
/// `err`. No exception leaves it.
int runTarvoDewarp(std::span<const std::string> arguments, std::ostream& out, std::ostream& err);

} // namespace tarvo::apps
