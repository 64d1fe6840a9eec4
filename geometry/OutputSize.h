#pragma once

#include "geometry/Enumerations.h"
#include "geometry/PanoramaRectangle.h"

#include <cstdint>
#include <optional>

namespace tarvo::geometry {

/// Pixels.
struct PictureSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    friend constexpr bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// What the size of the output picture depends on.
struct OutputSizeRequest {
    PictureSize input;
    ViewType viewType = ViewType::single;
    std::int32_t options = 0; ///< `OptionFlag` bits
    PictureSize wanted;       ///< a side of 0 is left to the component
    bool isWantedSet = false; ///< a side was set at all, if only to 0
    double panoramaFieldOfViewDegrees = defaultPanoramaFieldOfView;
    std::optional<float> customAspect; ///< width / height of the custom view's tables
};

/// Size of the output picture: the wanted one made even, else a missing side from the input's aspect (a
/// panorama's from its field of view), else 1024 pixels wide. A custom view without sizes takes the input's
/// height.
///
/// The height that a panorama derives is not made even. Sides can be 0 where the arithmetic gives that; the
/// caller refuses such a size.
PictureSize deriveOutputSize(const OutputSizeRequest& request);

} // namespace tarvo::geometry
