#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/CustomViewSettings.h"
#include "apps/tarvo-dewarp/FrameCoding.h"
#include "apps/tarvo-dewarp/FrameRun.h"
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

void makeStill(const StillSettings& settings, const DeviceMaker& makeDevice) {
    const bool isCustom = settings.view.viewType == geometry::ViewType::custom;
    checkTablesGiven(settings.customView, isCustom);
    const InputFrame input = readInputFrame(settings.input, settings.frames);
    const diagnostics::ObjectLog log = openRendererLog();
    custom::CCustomTransformShader shader(log);
    if (isCustom) {
        loadTables(shader, *settings.customView.tables, log);
    }
    const geometry::CViewState view = makeView(
        settings.view,
        {static_cast<std::uint32_t>(input.format.width), static_cast<std::uint32_t>(input.format.height)},
        shader.tableAspect());
    if (isCustom) {
        steer(shader, settings.customView, settings.view.effectLevel, view.outputAspect());
    }
    checkTarget(settings.output);
    const geometry::PictureSize size = view.outputSize();
    const render::OutputFormat output =
        outputFrameFormat(settings.frames.outputFormat, static_cast<int>(size.width),
                          static_cast<int>(size.height), settings.frames.isOutputBottomUp);
    const FrameJob job{input, output, view, isCustom ? &shader : nullptr, settings.isBypassed};
    writeOutputFrame(settings.output, runFrame(makeDevice, log, job), output);
}

} // namespace

Command addStillCommand(CLI::App& program, const DeviceMaker& makeDevice) {
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
    return {&command, [settings, makeDevice](std::ostream&) { makeStill(*settings, makeDevice); }};
}

} // namespace tarvo::apps
