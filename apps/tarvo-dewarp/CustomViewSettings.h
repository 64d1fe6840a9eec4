#pragma once

#include "custom/BoundedRectangle.h"
#include "custom/VirtualPtzSettings.h"
#include "custom/tables/CustomTransformShader.h"
#include "diagnostics/ObjectLog.h"
#include "geometry/Enumerations.h"

#include <filesystem>
#include <optional>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// The custom view as the command line describes it; what was not given holds the component's default.
struct CustomViewSettings {
    std::optional<std::filesystem::path> tables;
    geometry::CustomTransformControlType controlType = geometry::CustomTransformControlType::digitalZoom;
    custom::BoundedRectangle viewRectangle;
    custom::VirtualPtzSettings virtualPtz;
};

/// Adds the options that describe the custom view; `settings` must outlive the parsing.
void addCustomViewOptions(CLI::App& command, CustomViewSettings& settings);

/// Throws UsageError when the custom view has no tables, or tables are given to another view.
void checkTablesGiven(const CustomViewSettings& settings, bool isCustomView);

/// Hands the shader the tables in a file. Throws FileError, which says why, when they cannot be had or are
/// refused or none; std::bad_alloc.
void loadTables(custom::CCustomTransformShader& shader, const std::filesystem::path& path,
                const diagnostics::ObjectLog& log);

/// Sets all else that the shader draws by; `outputAspect` is the output's width / height. The virtual camera
/// is drawn back into the panorama as a put of the same values does it, but once, after all of them are set:
/// on a command line they have no order. Throws RenderError.
void steer(custom::CCustomTransformShader& shader, const CustomViewSettings& settings, double effectLevel,
           float outputAspect);

} // namespace tarvo::apps
