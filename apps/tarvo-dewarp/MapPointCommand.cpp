#include "apps/host/HostError.h"
#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/ModuleOption.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/ViewTransform.h"

#include <cmath>
#include <iomanip>
#include <memory>
#include <ostream>
#include <sstream>

namespace tarvo::apps {
namespace {

struct MapPointSettings {
    double x = 0.0;
    double y = 0.0;
    ModuleSettings module;
    ViewSettings view;
    // The frame that the component assumes until it knows better.
    PictureSize inputSize{2592, 1944};
    bool goesToOverview = false;
    bool ignoresOverview = false;
};

/// With six decimals, a zero without sign.
std::string decimalText(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(6) << value;
    return text.str() == "-0.000000" ? "0.000000" : text.str();
}

void printPair(std::ostream& out, const char* firstName, double first, const char* secondName,
               double second) {
    if (!std::isfinite(first) || !std::isfinite(second)) {
        throw UsageError("with this lens and view nothing is seen at that point");
    }
    out << firstName << ' ' << decimalText(first) << ' ' << secondName << ' ' << decimalText(second) << '\n';
}

void mapOnePoint(const MapPointSettings& settings, std::ostream& out) {
    if (settings.view.viewType != ViewType::single && settings.view.viewType != ViewType::singleOverview) {
        throw UsageError("Point mapping only supported in single dewarp view.");
    }
    const CustomViewSettings customView;
    const host::CModule module(settings.module.path());
    CViewTransform view(module, {settings.view, customView, false, {}});
    const auto width = static_cast<std::int32_t>(settings.inputSize.width);
    const auto height = static_cast<std::int32_t>(settings.inputSize.height);
    view.setInput(host::makeVideoFormat(host::FramePixels::rgb32, width, -height));
    view.setOutput(host::FramePixels::rgb32);
    double first = 0.0;
    double second = 0.0;
    if (settings.goesToOverview) {
        host::requireStep(view.transform().MapPointToOverview(settings.x, settings.y, &first, &second, 0),
                          "mapping the point to the overview");
        printPair(out, "x", first, "y", second);
        return;
    }
    const LONG flags = settings.ignoresOverview ? TarvoVideoTransformLib::ignoreOverviewMap : 0;
    host::requireStep(view.transform().MapPoint(settings.x, settings.y, &first, &second, flags),
                      "mapping the point");
    printPair(out, "pan", first, "tilt", second);
}

} // namespace

Command addMapPointCommand(CLI::App& program) {
    const auto settings = std::make_shared<MapPointSettings>();
    CLI::App& command = *program.add_subcommand(
        "map-point", "Print the direction that is seen at a point of a view, degrees.");
    addValue(command, "X", settings->x, readFraction, "FRACTION",
             "Place in the output picture: 0 at its left, 1 at its right edge.")
        ->required();
    addValue(command, "Y", settings->y, readFraction, "FRACTION", "0 at its upper, 1 at its lower edge.")
        ->required();
    addValue(command, "--input-size", settings->inputSize, readSize, "WIDTHxHEIGHT",
             "Size of the fisheye picture, pixels. Default 2592x1944.");
    CLI::Option* const toOverview =
        command.add_flag("--to-overview", settings->goesToOverview,
                         "Print where the point lies in the overview instead, the square in the\n"
                         "middle of the fisheye picture: x and y from 0 to 1 from its top-left\n"
                         "corner, beyond that outside of it.");
    command
        .add_flag("--ignore-overview-map", settings->ignoresOverview,
                  "In singleOverview, look past the overview that covers the view.")
        ->excludes(toOverview);
    addViewOptions(command, settings->view, CustomView::refused);
    addModuleOption(command, settings->module);
    command.footer("Works in the view types single and singleOverview.\n"
                   "Example: where the middle of the left edge looks\n"
                   "  tarvo-dewarp map-point 0 0.5 --tilt-orientation wall --pan 30 --input-size 1920x1080\n"
                   "prints\n"
                   "  pan -22.252432 tilt 0.000000");
    return {&command, [settings](std::ostream& out) { mapOnePoint(*settings, out); }};
}

} // namespace tarvo::apps
