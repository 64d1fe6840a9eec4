#pragma once

#include "apps/tarvo-dewarp/Commands.h"

namespace tarvo::apps {

/// `scene`: a picture or video of the test room, without the module. Throws as the commands of Commands.h do;
/// a video also QuietEnd.
Command addSceneCommand(CLI::App& program);

} // namespace tarvo::apps
