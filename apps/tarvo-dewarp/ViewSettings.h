#pragma once

#include "geometry/Enumerations.h"
#include "geometry/ExcludeArea.h"
#include "geometry/LensProfile.h"
#include "geometry/PanoramaRectangle.h"
#include "geometry/ViewState.h"

#include <cstdint>
#include <optional>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// A view as the command line describes it; what was not given holds the component's default.
struct ViewSettings {
    geometry::ViewType viewType = geometry::ViewType::single;
    geometry::TiltOrientation tiltOrientation = geometry::TiltOrientation::undef;
    geometry::LensProfile lensProfile = geometry::defaultLensProfile;
    std::optional<double> panDegrees;
    std::optional<double> tiltDegrees;
    std::optional<double> fieldOfViewDegrees;
    double effectLevel = 1.0;
    double panoramaFieldOfViewDegrees = geometry::defaultPanoramaFieldOfView;
    double panoramaPanOffsetDegrees = geometry::defaultPanoramaPanOffset;
    geometry::ExcludeArea excludeArea;
    std::optional<int> outputWidth;
    std::optional<int> outputHeight;
    bool isOverviewLeft = false;
    bool isOutputWide = false; ///< 16:9
};

/// Whether a command can show the custom view.
enum class CustomView { refused, offered };

/// Adds the options that describe a view; `settings` must outlive the parsing.
void addViewOptions(CLI::App& command, ViewSettings& settings, CustomView customView);

/// The view of an input of the given size, with the output size that follows, of a custom view's tables of
/// that shape. Throws UsageError when that output would have a side of 0 or one beyond maxPictureSide.
geometry::CViewState makeView(const ViewSettings& settings, geometry::PictureSize input,
                              std::optional<float> customAspect = {});

} // namespace tarvo::apps
