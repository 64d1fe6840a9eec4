#include "apps/tarvo-dewarp/scene/SceneCommand.h"

#include "apps/tarvo-dewarp/FrameCoding.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/PictureFile.h"
#include "apps/tarvo-dewarp/geometry/GeometryValues.h"
#include "apps/tarvo-dewarp/video/Interruption.h"
#include "apps/tarvo-dewarp/video/Progress.h"
#include "apps/tarvo-dewarp/video/VideoFiles.h"
#include "scene/FisheyeLens.h"
#include "scene/Render.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace tarvo::apps {
namespace {

constexpr PictureSize fisheyeSize{2592, 1944};
constexpr PictureSize perspectiveSize{1024, 768};
constexpr PictureSize clipSize{640, 480};

struct SceneSettings {
    std::string output;
    std::optional<PictureSize> size;
    TiltOrientation tiltOrientation = TiltOrientation::wall;
    std::optional<LensProfile> lensProfile;
    std::optional<double> maxAngleDegrees;
    double timeSeconds = 0.0;
    std::optional<ThreeNumbers> perspective;
    std::optional<double> clipSeconds;
    video::FrameRate clipRate;
};

double readMaxAngle(const std::string& option, const std::string& text) {
    return readNumber(option, text, 1.0, 180.0, "a number of degrees from 1 to 180");
}

double readTime(const std::string& option, const std::string& text) {
    return readNumber(option, text, -1e6, 1e6, "a number of seconds from -1000000 to 1000000");
}

double readClipSeconds(const std::string& option, const std::string& text) {
    return readNumber(option, text, 0.001, 3600.0, "a number of seconds from 0.001 to 3600");
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
LensProfile readSceneLens(const std::string& option, const std::string& text) {
    const LensProfile profile = readLensProfile(option, text);
    try {
        scene::CFisheyeLens(geometryOf(profile), 180.0);
    } catch (const std::invalid_argument&) {
        refuseValue(option, text, "a profile A,B,C whose radius rises at the picture's centre");
    }
    return profile;
}

PictureSize sizeOf(const SceneSettings& settings) {
    if (settings.size) {
        return *settings.size;
    }
    return settings.clipSeconds ? clipSize : settings.perspective ? perspectiveSize : fisheyeSize;
}

/// What the scene is drawn into, as a picture of this program.
Picture pictureOf(const render::Picture& drawn) {
    Picture picture(drawn.width, drawn.height);
    std::ranges::transform(drawn.pixels, picture.pixels.begin(), [](const render::Bgra& pixel) {
        return Bgra{pixel.blue, pixel.green, pixel.red, pixel.alpha};
    });
    return picture;
}

Picture drawScene(const SceneSettings& settings, double timeSeconds) {
    const scene::CRoom room(timeSeconds);
    scene::FisheyeCamera camera = scene::defaultCamera(geometryOf(settings.tiltOrientation));
    const PictureSize size = sizeOf(settings);
    const int width = static_cast<int>(size.width);
    const int height = static_cast<int>(size.height);
    if (settings.perspective) {
        const auto [pan, tilt, fieldOfView] = *settings.perspective;
        const auto view = scene::squarePixelView(camera.position, pan, tilt, fieldOfView, width, height);
        return pictureOf(scene::renderPerspective(room, view, width, height));
    }
    if (settings.lensProfile) {
        camera.lens = geometryOf(*settings.lensProfile);
    }
    camera.maxAngleDegrees = settings.maxAngleDegrees.value_or(camera.maxAngleDegrees);
    return pictureOf(scene::renderFisheye(room, camera, width, height));
}

void writePicture(const SceneSettings& settings) {
    const std::filesystem::path output = readOutputPath("OUTPUT", settings.output);
    checkTarget(output);
    writePng(output, drawScene(settings, settings.timeSeconds));
}

/// In YUV4MPEG2 the colours are those that the component sees again; other files get them as they are.
void writeClip(const SceneSettings& settings, std::ostream& out) {
    const PictureSize size = sizeOf(settings);
    const int width = static_cast<int>(size.width);
    const int height = static_cast<int>(size.height);
    const bool isY4m = video::isY4mName(settings.output);
    const auto pixels = isY4m ? host::FramePixels::yv12 : host::FramePixels::rgb32;
    video::checkVideoTarget(settings.output, pixels, "");
    const video::VideoOutput clip{host::makeVideoFormat(pixels, width, isY4m ? height : -height),
                                  settings.clipRate, true};
    const auto sink = video::createVideo(settings.output, clip, "", out);
    const std::int64_t frames =
        std::max(std::llround(*settings.clipSeconds * settings.clipRate.perSecond()), 1LL);
    video::CProgress progress(video::terminalForProgress(), frames);
    for (std::int64_t i = 0; i < frames; ++i) {
        video::CInterruption::check();
        const std::int64_t start = startOf(i, settings.clipRate);
        const double seconds = static_cast<double>(i) / settings.clipRate.perSecond();
        sink->put(encodeFrame(drawScene(settings, settings.timeSeconds + seconds), clip.format), start,
                  startOf(i + 1, settings.clipRate) - start);
        progress.frameDone();
    }
    sink->finish();
}

} // namespace

Command addSceneCommand(CLI::App& program) {
    const auto settings = std::make_shared<SceneSettings>();
    CLI::App& command = *program.add_subcommand(
        "scene", "Draw the test room as a fisheye or an ideal perspective camera sees it.");
    addValue(
        command, "OUTPUT", settings->output, [](const std::string&, const std::string& text) { return text; },
        "FILE",
        "Picture to write, its name ending in .png, or with --seconds a video, as the\n"
        "command video writes them. An existing file is replaced.")
        ->required();
    addValue(command, "--size", settings->size, readSize, "WIDTHxHEIGHT",
             "Pixels, each side 1 to 16384. Default 2592x1944, in perspective 1024x768, as a\n"
             "video 640x480.");
    addValue(command, "--tilt-orientation", settings->tiltOrientation, readTiltOrientation, "NAME",
             "Where the camera is: wall (default, as is undef), ceiling or desk.");
    addValue(command, "--time", settings->timeSeconds, readTime, "SECONDS",
             "Moment, -1000000 to 1000000; default 0. A ball rolls round the table in 12\nseconds.");
    CLI::Option* const seconds =
        addValue(command, "--seconds", settings->clipSeconds, readClipSeconds, "SECONDS",
                 "Draw a video of that length, 0.001 to 3600, from the moment on.");
    addValue(command, "--frame-rate", settings->clipRate, video::readFrameRate, "FPS",
             "Frames a second of the video, as 12.5 or 30000/1001; 25 by default.")
        ->needs(seconds);
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
    return {&command, [settings](std::ostream& out) {
                if (settings->clipSeconds) {
                    video::interruptibly([&] { writeClip(*settings, out); });
                } else {
                    writePicture(*settings);
                }
            }};
}

} // namespace tarvo::apps
