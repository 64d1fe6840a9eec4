#include "apps/tarvo-dewarp/program/TarvoDewarp.h"

#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/HostStill.h"
#include "apps/tarvo-dewarp/ModuleCommands.h"
#include "apps/tarvo-dewarp/ModuleOption.h"
#include "apps/tarvo-dewarp/scene/SceneCommand.h"
#include "apps/tarvo-dewarp/tables/TableCommands.h"

#include <memory>

namespace tarvo::apps {
namespace {

Command addModuleStill(CLI::App& app) {
    const auto module = std::make_shared<ModuleSettings>();
    const Command still =
        addStillCommand(app, [module](const StillJob& job) { return drawWithModule(*module, job); });
    addModuleOption(*still.arguments, *module);
    return still;
}

} // namespace

int runTarvoDewarp(std::span<const std::string> arguments, std::ostream& out, std::ostream& err) {
    const Program program{"tarvo-dewarp", "Shows fisheye pictures as a virtual pan-tilt-zoom camera would.",
                          [](CLI::App& app) {
                              return std::vector{addModuleStill(app),          addVideoCommand(app),
                                                 addMapPointCommand(app),      addSceneCommand(app),
                                                 addTablesCommand(app),        addTablesFromRemapCommand(app),
                                                 addTablesToRemapCommand(app), addInfoCommand(app),
                                                 addRegisterCommand(app),      addUnregisterCommand(app)};
                          }};
    return runProgram(program, arguments, out, err);
}

} // namespace tarvo::apps
