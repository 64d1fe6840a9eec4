#include "apps/tarvo-dewarp/TarvoDewarp.h"

#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/FrameRun.h"
#include "apps/tarvo-dewarp/ModuleCommands.h"
#include "apps/tarvo-dewarp/tables/TableCommands.h"

namespace tarvo::apps {

int runTarvoDewarp(std::span<const std::string> arguments, std::ostream& out, std::ostream& err) {
    const Program program{"tarvo-dewarp", "Shows fisheye pictures as a virtual pan-tilt-zoom camera would.",
                          [](CLI::App& app) {
                              return std::vector{addStillCommand(app, makeUsualDevice),
                                                 addMapPointCommand(app),
                                                 addSceneCommand(app),
                                                 addTablesCommand(app),
                                                 addTablesFromRemapCommand(app),
                                                 addTablesToRemapCommand(app),
                                                 addInfoCommand(app),
                                                 addRegisterCommand(app),
                                                 addUnregisterCommand(app)};
                          }};
    return runProgram(program, arguments, out, err);
}

} // namespace tarvo::apps
