#pragma once

#include "apps/tarvo-dewarp/Still.h"

#include <functional>
#include <iosfwd>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// One command of the program.
struct Command {
    CLI::App* arguments; ///< owned by the program; knows whether the command was chosen
    /// What the command does once its arguments are known; results go to the stream.
    std::function<void(std::ostream& out)> carryOut;
};

// Each of these adds a command with its options to the program. Reading the arguments and carrying the
// command out throw UsageError, FileError or std::bad_alloc.

/// `still`: one picture in, one view of it out, drawn by whatever is given.
Command addStillCommand(CLI::App& program, const StillRenderer& draw);

/// `video`: a video in, views of it out; the module draws. Throws also host::HostError, QuietEnd.
Command addVideoCommand(CLI::App& program);

/// `map-point`: the direction seen at a point of a view, as the module tells. Throws also host::HostError.
Command addMapPointCommand(CLI::App& program);

} // namespace tarvo::apps
