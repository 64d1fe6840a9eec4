#include "apps/tarvo-dewarp/Commands.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/PictureFile.h"
#include "scene/FisheyeLens.h"
#include "scene/Render.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string>

namespace tarvo::apps {
namespace {

constexpr geometry::PictureSize fisheyeSize{2592, 1944};
constexpr geometry::PictureSize perspectiveSize{1024, 768};

struct SceneSettings {
    std::filesystem::path output;
    std::optional<geometry::PictureSize> size;
    geometry::TiltOrientation tiltOrientation = geometry::TiltOrientation::wall;
    std::optional<geometry::LensProfile> lensProfile;
    std::optional<double> maxAngleDegrees;
    double timeSeconds = 0.0;
    std::optional<ThreeNumbers> perspective;
};

double readMaxAngle(const std::string& option, const std::string& text) {
    return readNumber(option, text, 1.0, 180.0, "a number of degrees from 1 to 180");
}

double readTime(const std::string& option, const std::string& text) {
    return readNumber(option, text, -1e6, 1e6, "a number of seconds from -1000000 to 1000000");
}

ThreeNumbers readPerspective(const std::string& option, const std::string& text) {
    const std::string allowed = "PAN,TILT,FIELD-OF-VIEW in degrees, parted by commas: PAN from -360 to 360, "
                                "TILT from -90 to 90, FIELD-OF-VIEW from 1 to 89";
    const ThreeNumbers view = readThreeNumbers(option, text, allowed);
    if (std::abs(view.first) > 360.0 || std::abs(view.second) > 90.0 || view.third < 1.0 ||
        view.third > 89.0) {
        refuseValue(option, text, allowed);
    }
    return view;
}

/// The lens of a scene must have a picture, unlike that of a view: a profile falling at the centre has none.
geometry::LensProfile readSceneLens(const std::string& option, const std::string& text) {
    const geometry::LensProfile profile = readLensProfile(option, text);
    try {
        scene::CFisheyeLens(profile, 180.0);
    } catch (const std::invalid_argument&) {
        refuseValue(option, text, "a profile A,B,C whose radius rises at the picture's centre");
    }
    return profile;
}

render::Picture drawScene(const SceneSettings& settings) {
    const scene::CRoom room(settings.timeSeconds);
    scene::FisheyeCamera camera = scene::defaultCamera(settings.tiltOrientation);
    const geometry::PictureSize size =
        settings.size.value_or(settings.perspective ? perspectiveSize : fisheyeSize);
    const int width = static_cast<int>(size.width);
    const int height = static_cast<int>(size.height);
    if (settings.perspective) {
        const auto [pan, tilt, fieldOfView] = *settings.perspective;
        return scene::renderPerspective(
            room, scene::squarePixelView(camera.position, pan, tilt, fieldOfView, width, height), width,
            height);
    }
    camera.lens = settings.lensProfile.value_or(camera.lens);
    camera.maxAngleDegrees = settings.maxAngleDegrees.value_or(camera.maxAngleDegrees);
    return scene::renderFisheye(room, camera, width, height);
}

} // namespace

Command addSceneCommand(CLI::App& program) {
    const auto settings = std::make_shared<SceneSettings>();
    CLI::App& command = *program.add_subcommand(
        "scene", "Draw the test room as a fisheye or an ideal perspective camera sees it.");
    addOutputArgument(command, settings->output);
    addValue(command, "--size", settings->size, readSize, "WIDTHxHEIGHT",
             "Pixels, each side 1 to 16384. Default 2592x1944, in perspective 1024x768.");
    addValue(command, "--tilt-orientation", settings->tiltOrientation, readTiltOrientation, "NAME",
             "Where the camera is: wall (default, as is undef), ceiling or desk.");
    addValue(command, "--time", settings->timeSeconds, readTime, "SECONDS",
             "Moment, -1000000 to 1000000; default 0. A ball rolls round the table in 12\nseconds.");
    CLI::Option* const lens =
        addValue(command, "--lens-profile", settings->lensProfile, readSceneLens, "A,B,C",
                 "Lens polynomial r = A*t^3 + B*t^2 + C*t: t is the angle from the lens axis in\n"
                 "radians, r the distance from the picture's centre in picture heights.\n"
                 "Default -0.022619,0.014994,0.368175.");
    CLI::Option* const maxAngle =
        addValue(command, "--max-angle", settings->maxAngleDegrees, readMaxAngle, "DEGREES",
                 "Angle from the lens axis where the fisheye picture ends, 1 to 180. Default 100.");
    addValue(command, "--perspective", settings->perspective, readPerspective, "PAN,TILT,FOV",
             "A perspective picture instead, from where the camera is. Degrees: PAN from\n"
             "north, positive to the east, -360 to 360; TILT upward, -90 to 90; FOV half the\n"
             "vertical angle, 1 to 89.")
        ->excludes(lens)
        ->excludes(maxAngle);
    command.footer("Example: what a ceiling camera sees, and the truth to the south below it\n"
                   "  tarvo-dewarp scene fisheye.png --tilt-orientation ceiling\n"
                   "  tarvo-dewarp scene truth.png --tilt-orientation ceiling --perspective 180,-35,25");
    return {&command, [settings](std::ostream&) {
                checkTarget(settings->output);
                writePng(settings->output, drawScene(*settings));
            }};
}

} // namespace tarvo::apps
