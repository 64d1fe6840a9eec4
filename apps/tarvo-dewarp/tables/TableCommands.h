#pragma once

#include "apps/tarvo-dewarp/Commands.h"

namespace tarvo::apps {

// Commands that make the tables of the component's custom view; they throw as those of Commands.h do.

/// `tables`: a view of a fisheye picture as a lookup table.
Command addTablesCommand(CLI::App& program);

/// `tables-from-remap`: a table out of a pair of remap pictures.
Command addTablesFromRemapCommand(CLI::App& program);

/// `tables-to-remap`: a pair of remap pictures out of a table.
Command addTablesToRemapCommand(CLI::App& program);

} // namespace tarvo::apps
