#include "apps/host/Module.h"
#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/CustomViewSettings.h"
#include "apps/tarvo-dewarp/ModuleOption.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/ViewSettings.h"
#include "apps/tarvo-dewarp/ViewTransform.h"
#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/video/Interruption.h"
#include "apps/tarvo-dewarp/video/Progress.h"
#include "apps/tarvo-dewarp/video/VideoFiles.h"
#include "apps/tarvo-dewarp/video/VideoRun.h"

#include <memory>
#include <ostream>
#include <string>

namespace tarvo::apps {
namespace {

using host::FramePixels;
using video::FrameRate;

struct VideoSettings {
    std::string input;
    std::string output;
    ModuleSettings module;
    ViewSettings view;
    CustomViewSettings customView;
    bool isBypassed = false;
    FramePixels inputPixels = FramePixels::yv12;
    FramePixels outputPixels = FramePixels::yv12;
    std::optional<FrameRate> outputRate;
    std::filesystem::path moves;
    std::string encoder;
    bool isQuiet = false;
};

FramePixels readInputPixels(const std::string& option, const std::string& text) {
    if (text == "yv12") {
        return FramePixels::yv12;
    }
    if (text == "yuy2") {
        return FramePixels::yuy2;
    }
    if (text == "rgb32") {
        return FramePixels::rgb32;
    }
    refuseValue(option, text, "yv12, yuy2 or rgb32");
}

FramePixels readOutputPixels(const std::string& option, const std::string& text) {
    if (text != "yv12" && text != "rgb32") {
        refuseValue(option, text, "yv12 or rgb32");
    }
    return readInputPixels(option, text);
}

std::string readName(const std::string& option, const std::string& text) {
    if (text.empty()) {
        refuseValue(option, text, "the name of a video");
    }
    return text;
}

void checkMoves(const VideoSettings& settings, const video::CMoves& moves) {
    const bool hasVirtualCamera =
        settings.view.viewType == ViewType::custom &&
        settings.customView.controlType == CustomTransformControlType::virtualPtzFromPanorama;
    if (moves.moveVirtualCamera() && !hasVirtualCamera) {
        throw UsageError("--moves: moves of virtual-ptz properties need --view-type custom and "
                         "--custom-transform-control-type virtualPtzFromPanorama");
    }
}

void makeVideo(const VideoSettings& settings, std::ostream& out) {
    checkTablesGiven(settings.customView, settings.view.viewType == ViewType::custom);
    video::checkVideoTarget(settings.output, settings.outputPixels, settings.encoder);
    const video::CMoves moves = settings.moves.empty() ? video::CMoves() : video::readMoves(settings.moves);
    checkMoves(settings, moves);
    const auto source = video::openVideo(settings.input, settings.inputPixels);
    const video::VideoInput& input = source->description();

    const host::CModule module(settings.module.path());
    CViewTransform transform(
        module, {settings.view, settings.customView, settings.isBypassed,
                 settings.outputRate ? std::optional(settings.outputRate->perSecond()) : std::nullopt});
    transform.setInput(input.format);
    const host::VideoFormat format = transform.setOutput(settings.outputPixels);

    const auto sink = video::createVideo(settings.output, {format, settings.outputRate.value_or(input.rate)},
                                         settings.encoder, out);
    const video::VideoRun run{*source,
                              transform.transform(),
                              transform.stream(),
                              *sink,
                              moves,
                              settings.outputRate,
                              settings.isQuiet ? nullptr : video::terminalForProgress()};
    if (video::runVideo(run) == 0) {
        throw FileError(settings.input == "-" ? "standard input" : pathFromText(settings.input),
                        "it holds no frames");
    }
    sink->finish();
}

void addFileOptions(CLI::App& command, VideoSettings& settings) {
    const std::string group = "Video";
    addValue(command, "--input-format", settings.inputPixels, readInputPixels, "NAME",
             "How the component is given the frames: yv12 (default), yuy2 or rgb32.")
        ->group(group);
    addValue(command, "--output-format", settings.outputPixels, readOutputPixels, "NAME",
             "How the component delivers them: yv12 (default) or rgb32.")
        ->group(group);
    addValue(command, "--output-frame-rate", settings.outputRate, video::readFrameRate, "FPS",
             "Frames a second, as 12.5 or 30000/1001; that of the input by default. For\n"
             "a higher rate frames are repeated, for a lower one left out.")
        ->group(group);
    addValue(
        command, "--moves", settings.moves,
        [](const std::string& option, const std::string& text) {
            return pathFromText(readName(option, text));
        },
        "FILE",
        "What moves when: lines of TIME PROPERTY VALUE [EASING], for instance\n"
        "\"0:05 pan 90\". TIME is seconds or [h:]mm:ss; PROPERTY an option's name\n"
        "without dashes before it, as tilt or virtual-ptz-pan; EASING says how it gets\n"
        "there from its move before: ease-in-out (default), linear or hold. # begins a\n"
        "remark.")
        ->group(group);
    addValue(command, "--encoder", settings.encoder, readName, "NAME",
             "Encoder of FFmpeg's libraries, such as libx264 or ffv1. The kind of file\n"
             "decides by default.")
        ->group(group);
    command.add_flag("--quiet", settings.isQuiet, "Show no progress on a terminal.")->group(group);
}

} // namespace

Command addVideoCommand(CLI::App& program) {
    const auto settings = std::make_shared<VideoSettings>();
    CLI::App& command = *program.add_subcommand("video", "Dewarp a fisheye video.");
    addValue(command, "INPUT", settings->input, readName, "FILE",
             "Fisheye video: YUV4MPEG2 (.y4m, or - for standard input); in a build with\n"
             "FFmpeg's libraries every file and stream (rtsp://...) that they read.")
        ->required();
    addValue(command, "OUTPUT", settings->output, readName, "FILE",
             "Video to write, its kind by the name's ending (.y4m, .mp4, .mkv, ...), or -\n"
             "for YUV4MPEG2 on standard output. An existing file is replaced.")
        ->required();
    addViewOptions(command, settings->view, CustomView::offered);
    command
        .add_flag("--bypass", settings->isBypassed,
                  "Only scale the input into the output, with black bars where the shapes\n"
                  "differ.")
        ->group("View");
    addCustomViewOptions(command, settings->customView);
    addFileOptions(command, *settings);
    addModuleOption(command, settings->module);
    command.footer("Example: a tour from the ceiling\n"
                   "  tarvo-dewarp video fisheye.mp4 tour.mp4 --tilt-orientation ceiling --moves tour.txt");
    return {&command,
            [settings](std::ostream& out) { video::interruptibly([&] { makeVideo(*settings, out); }); }};
}

} // namespace tarvo::apps
