#include "apps/tarvo-render/TarvoRender.h"

#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-render/DirectStill.h"
#include "apps/tarvo-render/RenderDevices.h"

#include <memory>
#include <vector>

namespace tarvo::apps {
namespace {

/// The command `still` of tarvo-dewarp on a device of one's choice.
std::vector<Command> addCommands(CLI::App& app) {
    const auto makeDevice = std::make_shared<DeviceMaker>(makeUsualDevice);
    const Command still =
        addStillCommand(app, [makeDevice](const StillJob& job) { return drawOnDevice(*makeDevice, job); });
    addValue(*still.arguments, "--device", *makeDevice, readDevice, "NAME",
             "What renders: " + deviceNames() + ".\nBy default what the component would take.")
        ->group("Device");
    return {still};
}

} // namespace

int runTarvoRender(std::span<const std::string> arguments, std::ostream& out, std::ostream& err) {
    const Program program{"tarvo-render", "Renders a picture on one of the component's devices.",
                          addCommands};
    return runProgram(program, arguments, out, err);
}

} // namespace tarvo::apps
