#pragma once

#include "apps/tarvo-dewarp/Values.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// The virtual camera in a panorama, angles in degrees; what was not given stays as the component has it.
struct VirtualPtzOptions {
    std::optional<double> panoramaHorizontalFieldOfView;
    std::optional<double> panoramaVerticalFieldOfView;
    std::optional<double> cameraPitch;
    std::optional<double> cameraRoll;
    std::optional<double> effectLevel;
    std::optional<double> pan;
    std::optional<double> tilt;
    std::optional<double> fieldOfView;
    bool useStrictBorderMode = false;
};

/// The custom view as the command line describes it.
struct CustomViewSettings {
    std::optional<std::filesystem::path> tables;
    CustomTransformControlType controlType = CustomTransformControlType::digitalZoom;
    std::optional<Edges> viewRectangle;
    VirtualPtzOptions virtualPtz;
};

/// Adds the options that describe the custom view; `settings` must outlive the parsing.
void addCustomViewOptions(CLI::App& command, CustomViewSettings& settings);

/// Throws UsageError when the custom view has no tables, or tables are given to another view.
void checkTablesGiven(const CustomViewSettings& settings, bool isCustomView);

/// The bytes of a file of tables. Throws FileError, std::bad_alloc.
std::vector<std::uint8_t> readTablesFile(const std::filesystem::path& path);

/// Throws FileError, which says what is wrong with the file, when its bytes are no tables or none at all.
void checkTables(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes);

} // namespace tarvo::apps
