#pragma once

#include "apps/tarvo-dewarp/Commands.h"

#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

namespace tarvo::apps {

inline constexpr int exitSuccess = 0;
/// A file that cannot be read or written, a frame that cannot be rendered, or too little memory.
inline constexpr int exitFailure = 1;
/// Arguments that are not understood or not allowed; nothing was read or written for an unknown one.
inline constexpr int exitUsage = 2;

/// Thrown to end the program with an exit status and no message, since whoever ended it knows why: nobody
/// reads its output any more, or it was interrupted.
struct QuietEnd {
    int status;
};

/// A program that is a set of commands.
struct Program {
    const char* name;
    const char* purpose;
    std::function<std::vector<Command>(CLI::App& program)> addCommands;
};

/// Carries out the command that the arguments (without the program's own name, UTF-8) ask for and returns the
/// exit status, one of the above. Results go to `out`, messages to `err`. No exception leaves it.
int runProgram(const Program& program, std::span<const std::string> arguments, std::ostream& out,
               std::ostream& err);

/// The arguments of this process, without the program's name, in UTF-8; to be given main()'s.
std::vector<std::string> programArguments(int count, char** values);

} // namespace tarvo::apps
