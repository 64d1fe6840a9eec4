#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/PictureFile.h"
#include "apps/tarvo-dewarp/ViewSettings.h"
#include "render/reference/ReferenceRenderer.h"

#include <memory>
#include <string>

namespace tarvo::apps {
namespace {

struct StillSettings {
    std::string input;
    std::filesystem::path output;
    ViewSettings view;
    bool isBypassed = false;
};

void makeStill(const StillSettings& settings) {
    const render::Picture input = readPicture(pathFromText(settings.input));
    const geometry::CViewState view = makeView(
        settings.view, {static_cast<std::uint32_t>(input.width), static_cast<std::uint32_t>(input.height)});
    checkTarget(settings.output);
    writePng(settings.output, render::reference::renderView(view, input, settings.isBypassed));
}

} // namespace

Command addStillCommand(CLI::App& program) {
    const auto settings = std::make_shared<StillSettings>();
    CLI::App& command = *program.add_subcommand("still", "Dewarp one fisheye picture.");
    command
        .add_option("INPUT", settings->input,
                    "Fisheye picture: PNG, JPEG, binary PGM or binary PPM, each side up to\n16384 pixels.")
        ->type_name("FILE")
        ->required();
    addOutputArgument(command, settings->output);
    addViewOptions(command, settings->view);
    command
        .add_flag("--bypass", settings->isBypassed,
                  "Only scale the input into the output, with black bars where the shapes\n"
                  "differ.")
        ->group("View");
    command.footer("Example: look down to the right from the ceiling\n"
                   "  tarvo-dewarp still fisheye.png view.png --tilt-orientation ceiling --pan 45 --tilt -35 "
                   "--field-of-view 25");
    return {&command, [settings](std::ostream&) { makeStill(*settings); }};
}

} // namespace tarvo::apps
