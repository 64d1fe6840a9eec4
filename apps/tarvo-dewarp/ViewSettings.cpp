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

std::int32_t optionsWord(const ViewSettings& settings) {
    std::int32_t options = 0;
    if (settings.isOverviewLeft) {
        options |= static_cast<std::int32_t>(geometry::OptionFlag::overviewMapPlacementLeft);
    }
    if (settings.isOutputWide) {
        options |= static_cast<std::int32_t>(geometry::OptionFlag::outputFormat_16_9);
    }
    return options;
}

geometry::PictureSize outputSize(const ViewSettings& settings, geometry::PictureSize input,
                                 std::optional<float> customAspect) {
    geometry::OutputSizeRequest request;
    request.input = input;
    request.viewType = settings.viewType;
    request.options = optionsWord(settings);
    request.wanted = {static_cast<std::uint32_t>(settings.outputWidth.value_or(0)),
                      static_cast<std::uint32_t>(settings.outputHeight.value_or(0))};
    request.isWantedSet = settings.outputWidth || settings.outputHeight;
    request.panoramaFieldOfViewDegrees = settings.panoramaFieldOfViewDegrees;
    request.customAspect = customAspect;
    const geometry::PictureSize size = geometry::deriveOutputSize(request);
    const auto isSide = [](std::uint32_t side) { return side >= 1 && side <= maxPictureSide; };
    if (!isSide(size.width) || !isSide(size.height)) {
        throw UsageError("for an input of " + std::to_string(input.width) + "x" +
                         std::to_string(input.height) + " pixels the output would have " +
                         std::to_string(size.width) + "x" + std::to_string(size.height) +
                         "; each side must be 1 to " + std::to_string(maxPictureSide) +
                         (settings.isOutputWide && settings.viewType != geometry::ViewType::custom
                              ? ": leave out --output-format-16-9"
                              : ": give --output-width and --output-height"));
    }
    return size;
}

} // namespace

void addViewOptions(CLI::App& command, ViewSettings& settings, CustomView customView) {
    addCameraOptions(command, settings);
    addViewType(command, settings, customView);
    addPositionOptions(command, settings);
    addSizeOptions(command, settings);
}

geometry::CViewState makeView(const ViewSettings& settings, geometry::PictureSize input,
                              std::optional<float> customAspect) {
    const geometry::PictureSize output = outputSize(settings, input, customAspect);
    geometry::CViewState view;
    view.setOptions(optionsWord(settings));
    view.setExcludeArea(settings.excludeArea);
    view.setLensProfile(settings.lensProfile);
    view.setTiltOrientation(settings.tiltOrientation);
    view.setViewType(settings.viewType);
    view.setEffectLevel(settings.effectLevel);
    view.setPanoramaFieldOfView(settings.panoramaFieldOfViewDegrees);
    view.setPanoramaPanOffset(settings.panoramaPanOffsetDegrees);
    view.setInputSize(static_cast<int>(input.width), static_cast<int>(input.height));
    view.setOutputSize(static_cast<int>(output.width), static_cast<int>(output.height));
    // Last, since mounting, view type and output shape bring their own limits and defaults for these.
    if (settings.panDegrees) {
        view.setPan(*settings.panDegrees);
    }
    if (settings.tiltDegrees) {
        view.setTilt(*settings.tiltDegrees);
    }
    if (settings.fieldOfViewDegrees) {
        view.setFieldOfView(*settings.fieldOfViewDegrees);
    }
    return view;
}

} // namespace tarvo::apps
