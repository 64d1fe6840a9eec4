#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/CustomViewSettings.h"
#include "apps/tarvo-dewarp/FrameSettings.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/ViewSettings.h"

#include <memory>
#include <string>

namespace tarvo::apps {
namespace {

struct StillSettings {
    std::filesystem::path input;
    std::filesystem::path output;
    FrameSettings frames;
    ViewSettings view;
    CustomViewSettings customView;
    bool isBypassed = false;
};

void makeStill(const StillSettings& settings, const StillRenderer& draw) {
    checkTablesGiven(settings.customView, settings.view.viewType == ViewType::custom);
    const InputFrame input = readInputFrame(settings.input, settings.frames);
    checkTarget(settings.output);
    const StillFrame frame =
        draw({input, settings.frames, settings.view, settings.customView, settings.isBypassed});
    writeOutputFrame(settings.output, frame.bytes, frame.format);
}

} // namespace

Command addStillCommand(CLI::App& program, const StillRenderer& draw) {
    const std::string name = program.get_name();
    const auto settings = std::make_shared<StillSettings>();
    CLI::App& command = *program.add_subcommand("still", "Dewarp one fisheye picture.");
    addValue(
        command, "INPUT", settings->input,
        [](const std::string&, const std::string& text) { return pathFromText(text); }, "FILE",
        "Fisheye picture: PNG, JPEG, binary PGM or binary PPM, each side up to\n16384 pixels; or a frame's "
        "bytes, in a file whose name ends in .raw.")
        ->required();
    addValue(
        command, "OUTPUT", settings->output, readPictureOrFramePath, "FILE",
        "Picture to write, its name ending in .png, or the delivered bytes, ending\nin .raw. An existing "
        "file is replaced.")
        ->required();
    addViewOptions(command, settings->view, CustomView::offered);
    command
        .add_flag("--bypass", settings->isBypassed,
                  "Only scale the input into the output, with black bars where the shapes\n"
                  "differ.")
        ->group("View");
    addCustomViewOptions(command, settings->customView);
    addFrameOptions(command, settings->frames);
    command.footer("Example: look down to the right from the ceiling\n"
                   "  " +
                   name +
                   " still fisheye.png view.png --tilt-orientation ceiling --pan 45 --tilt -35 "
                   "--field-of-view 25");
    return {&command, [settings, draw](std::ostream&) { makeStill(*settings, draw); }};
}

} // namespace tarvo::apps
