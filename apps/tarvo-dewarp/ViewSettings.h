#pragma once

#include "apps/tarvo-dewarp/Values.h"

#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// A view as the command line describes it; what was not given stays as the component has it.
struct ViewSettings {
    ViewType viewType = ViewType::single;
    std::optional<TiltOrientation> tiltOrientation;
    std::optional<LensProfile> lensProfile;
    std::optional<double> panDegrees;
    std::optional<double> tiltDegrees;
    std::optional<double> fieldOfViewDegrees;
    std::optional<double> effectLevel;
    std::optional<double> panoramaFieldOfViewDegrees;
    std::optional<double> panoramaPanOffsetDegrees;
    std::optional<Edges> excludeArea;
    std::optional<int> outputWidth;
    std::optional<int> outputHeight;
    bool isOverviewLeft = false;
    bool isOutputWide = false; ///< 16:9
};

/// Whether a command can show the custom view.
enum class CustomView { refused, offered };

/// Adds the options that describe a view; `settings` must outlive the parsing.
void addViewOptions(CLI::App& command, ViewSettings& settings, CustomView customView);

/// Throws UsageError when the output of an input of that size, pixels, has a side of 0 or one beyond
/// maxPictureSide.
void requireOutputSize(const ViewSettings& settings, int inputWidth, int inputHeight, std::int64_t width,
                       std::int64_t height);

/// Throws that error for an output of the size that the text tells.
[[noreturn]] void refuseOutputSize(const ViewSettings& settings, int inputWidth, int inputHeight,
                                   const std::string& size);

} // namespace tarvo::apps
