#include "apps/tarvo-dewarp/ViewSettings.h"

#include "apps/tarvo-dewarp/OptionValues.h"

namespace tarvo::apps {
namespace {

constexpr double panoramaFieldOfViewMinimum = 1.0;
constexpr double panoramaFieldOfViewMaximum = 360.0;

void addCameraOptions(CLI::App& command, ViewSettings& settings) {
    const std::string group = "Camera";
    addValue(command, "--tilt-orientation", settings.tiltOrientation, readTiltOrientation, "NAME",
             "How the camera is mounted: undef, wall, ceiling or desk. undef, the\n"
             "default, is ceiling for quad and panoramaDouble, else wall.")
        ->group(group);
    addValue(command, "--lens-profile", settings.lensProfile, readLensProfile, "A,B,C",
             "Lens polynomial r = A*t^3 + B*t^2 + C*t: t is the angle from the lens\n"
             "axis in radians, r the distance from the picture's centre in picture\n"
             "heights. Default -0.022619,0.014994,0.368175.")
        ->group(group);
    addValue(command, "--exclude-rect", settings.excludeArea, readExcludeArea, "L,T,R,B",
             "Area that is left out of the dewarping and shown as it is: its edges as\n"
             "fractions 0 to 1 of the input, from its top-left corner.")
        ->group(group);
}

void addViewType(CLI::App& command, ViewSettings& settings, CustomView customView) {
    const std::string name = "--view-type";
    CLI::Option* const option =
        customView == CustomView::offered
            ? addValue(command, name, settings.viewType, readViewType, "NAME",
                       "single (default), quad, panoramaSingle, panoramaDouble, singleOverview\n"
                       "or custom.")
            : addValue(command, name, settings.viewType, readBuiltInViewType, "NAME",
                       "single (default), quad, panoramaSingle, panoramaDouble or singleOverview.");
    option->group("View");
}

void addPositionOptions(CLI::App& command, ViewSettings& settings) {
    const std::string group = "View";
    addValue(command, "--pan", settings.panDegrees, readAngle, "DEGREES",
             "Direction to the right; 0 by default. A wall camera pans -90 to 90, the\n"
             "others all round. Pan, tilt and field of view beyond their range are\n"
             "limited to it.")
        ->group(group);
    addValue(command, "--tilt", settings.tiltDegrees, readAngle, "DEGREES",
             "Direction upward: -90 to 90 for a wall camera, -90 to 0 for a ceiling\n"
             "camera, 0 to 90 for a desk camera. The default follows from the mounting.")
        ->group(group);
    addValue(command, "--field-of-view", settings.fieldOfViewDegrees, readAngle, "DEGREES",
             "Half the vertical angle of a view that has the input's shape, 2 to 60.\n"
             "The default follows from the mounting and the output's shape.")
        ->group(group);
    addValue(command, "--effect-level", settings.effectLevel, readFraction, "LEVEL",
             "From 1, fully dewarped (default), to 0, the look of the fisheye picture;\n"
             "acts in single and singleOverview, and in custom from 1, the tables as they\n"
             "are, to 0, the input as it is.")
        ->group(group);
    auto readPanoramaFieldOfView = [](const std::string& option, const std::string& text) {
        return readNumber(option, text, panoramaFieldOfViewMinimum, panoramaFieldOfViewMaximum,
                          "a number of degrees from 1 to 360");
    };
    addValue(command, "--panorama-field-of-view", settings.panoramaFieldOfViewDegrees,
             readPanoramaFieldOfView, "DEGREES", "Width of a panorama, 1 to 360. Default 180.")
        ->group(group);
    addValue(command, "--panorama-pan-offset", settings.panoramaPanOffsetDegrees, readAngle, "DEGREES",
             "Where a panorama begins. Default -90.")
        ->group(group);
    command
        .add_flag("--overview-map-placement-left", settings.isOverviewLeft,
                  "Put the overview of singleOverview to the left instead of the right.")
        ->group(group);
}

void addSizeOptions(CLI::App& command, ViewSettings& settings) {
    const std::string group = "Output size";
    addValue(command, "--output-width", settings.outputWidth, readSide, "PIXELS",
             "1 to 16384; 1024 when neither side is given, the input's height in custom.\n"
             "Both given are rounded up to even. A side that is not given follows from\n"
             "the other one and the input's shape, a panorama's height from its field of\n"
             "view, a side in custom from the shape of the tables.")
        ->group(group);
    addValue(command, "--output-height", settings.outputHeight, readSide, "PIXELS", "Likewise.")
        ->group(group);
    command
        .add_flag("--output-format-16-9", settings.isOutputWide,
                  "As wide as the input, 9/16 of that high; takes precedence over\n"
                  "--output-width and --output-height, but not in custom.")
        ->group(group);
}

} // namespace

void addViewOptions(CLI::App& command, ViewSettings& settings, CustomView customView) {
    addCameraOptions(command, settings);
    addViewType(command, settings, customView);
    addPositionOptions(command, settings);
    addSizeOptions(command, settings);
}

void requireOutputSize(const ViewSettings& settings, int inputWidth, int inputHeight, std::int64_t width,
                       std::int64_t height) {
    const auto isSide = [](std::int64_t side) { return side >= 1 && side <= maxPictureSide; };
    if (!isSide(width) || !isSide(height)) {
        refuseOutputSize(settings, inputWidth, inputHeight,
                         std::to_string(width) + "x" + std::to_string(height));
    }
}

void refuseOutputSize(const ViewSettings& settings, int inputWidth, int inputHeight,
                      const std::string& size) {
    throw UsageError("for an input of " + std::to_string(inputWidth) + "x" + std::to_string(inputHeight) +
                     " pixels the output would have " + size + "; each side must be 1 to " +
                     std::to_string(maxPictureSide) +
                     (settings.isOutputWide && settings.viewType != ViewType::custom
                          ? ": leave out --output-format-16-9"
                          : ": give --output-width and --output-height"));
}

} // namespace tarvo::apps
