#include "apps/tarvo-dewarp/CustomViewSettings.h"

#include "apps/tarvo-dewarp/LookupTable.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/WholeFile.h"

#include <string>

namespace tarvo::apps {
namespace {

// Cells of all tables together; it bounds the memory that the command takes.
constexpr std::uintmax_t largestTablesFile = 8 + 6 * maxTableCells;

double readHorizontalAngle(const std::string& option, const std::string& text) {
    return readNumber(option, text, 1.0, 360.0, "a number of degrees from 1 to 360");
}

double readVerticalAngle(const std::string& option, const std::string& text) {
    return readNumber(option, text, 1.0, 180.0, "a number of degrees from 1 to 180");
}

void addTables(CLI::App& command, CustomViewSettings& settings) {
    const std::string group = "Custom view";
    auto readPath = [](const std::string&, const std::string& text) { return pathFromText(text); };
    addValue(command, "--custom-transform-data", settings.tables, readPath, "FILE",
             "Lookup tables, which --view-type custom needs: as the command tables makes\n"
             "them and the component's SetCustomTransformData takes them.")
        ->group(group);
    addValue(command, "--custom-transform-control-type", settings.controlType, readControlType, "NAME",
             "What steers the view: digitalZoom (default), by --view-rect, or\n"
             "virtualPtzFromPanorama, by the options --virtual-ptz-...: then the tables'\n"
             "picture counts as an equirectangular panorama.")
        ->group(group);
    addValue(command, "--view-rect", settings.viewRectangle, readViewRectangle, "L,T,R,B",
             "Part of the view that fills the output: its edges as fractions 0 to 1.")
        ->group(group);
}

void addVirtualPtz(CLI::App& command, VirtualPtzOptions& ptz) {
    const std::string group = "Custom view";
    addValue(command, "--virtual-ptz-pan", ptz.pan, readAngle, "DEGREES",
             "Direction to the right of the panorama's middle; 0 by default. The view is\n"
             "drawn back where it would look past the panorama.")
        ->group(group);
    addValue(command, "--virtual-ptz-tilt", ptz.tilt, readAngle, "DEGREES",
             "Direction upward from the middle; 0 by default.")
        ->group(group);
    addValue(command, "--virtual-ptz-field-of-view", ptz.fieldOfView, readAngle, "DEGREES",
             "Horizontal angle of the view, limited to 5 to 120. Default 90.")
        ->group(group);
    addValue(command, "--virtual-ptz-panorama-horizontal-field-of-view", ptz.panoramaHorizontalFieldOfView,
             readHorizontalAngle, "DEGREES", "Width of the panorama, 1 to 360. Default 180.")
        ->group(group);
    addValue(command, "--virtual-ptz-panorama-vertical-field-of-view", ptz.panoramaVerticalFieldOfView,
             readVerticalAngle, "DEGREES", "Height of the panorama, 1 to 180. Default 90.")
        ->group(group);
    addValue(command, "--virtual-ptz-camera-pitch", ptz.cameraPitch, readAngle, "DEGREES",
             "How far the camera that took the panorama looked up; 0 by default.")
        ->group(group);
    addValue(command, "--virtual-ptz-camera-roll", ptz.cameraRoll, readAngle, "DEGREES",
             "How far its picture shows the right side too low; 0 by default.")
        ->group(group);
    addValue(command, "--virtual-ptz-effect-level", ptz.effectLevel, readFraction, "LEVEL",
             "From 1, a rectilinear view (default), to 0, the panorama as it is.")
        ->group(group);
    command
        .add_flag("--virtual-ptz-use-strict-border-mode", ptz.useStrictBorderMode,
                  "Draw the view back as soon as one point of its border looks past the\n"
                  "panorama, not only half of it.")
        ->group(group);
}

} // namespace

void addCustomViewOptions(CLI::App& command, CustomViewSettings& settings) {
    addTables(command, settings);
    addVirtualPtz(command, settings.virtualPtz);
}

void checkTablesGiven(const CustomViewSettings& settings, bool isCustomView) {
    if (isCustomView && !settings.tables) {
        throw UsageError("--view-type: \"custom\" needs lookup tables; give --custom-transform-data FILE");
    }
    if (!isCustomView && settings.tables) {
        throw UsageError("--custom-transform-data has a meaning only with --view-type custom");
    }
}

std::vector<std::uint8_t> readTablesFile(const std::filesystem::path& path) {
    const std::uintmax_t size = ordinaryFileSize(path);
    if (size > largestTablesFile) {
        throw FileError(path, "it is larger than any file of tables that can be read");
    }
    return readBeginning(path, static_cast<std::size_t>(size));
}

void checkTables(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
    try {
        const TablesHead head = readTablesHead(bytes);
        if (head.tableCount == 0 || head.width == 0 || head.height == 0) {
            throw CodingError("it holds no tables: its head says " + std::to_string(head.tableCount) +
                              " of " + std::to_string(head.width) + "x" + std::to_string(head.height) +
                              " cells");
        }
    } catch (const CodingError& error) {
        throw FileError(path, error.what());
    }
}

} // namespace tarvo::apps
