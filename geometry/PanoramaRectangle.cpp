#include "geometry/PanoramaRectangle.h"

#include <algorithm>

namespace tarvo::geometry {
namespace {

constexpr double usableHeightOfWallDegrees = 100.0;

} // namespace

PanoramaRectangle derivePanoramaRectangle(TiltOrientation orientation, double fieldOfViewDegrees,
                                          double panOffsetDegrees, double outputAspect) {
    double height = panoramaHeightDegrees;
    if (outputAspect != 0.0) {
        const double usable =
            orientation == TiltOrientation::wall ? usableHeightOfWallDegrees : panoramaHeightDegrees;
        height = std::min(usable, fieldOfViewDegrees / outputAspect);
    }
    return {fieldOfViewDegrees, height, panOffsetDegrees, 0.0};
}

PanoramaMode panoramaMode(ViewType viewType, TiltOrientation orientation) {
    if (!isPanorama(viewType)) {
        return PanoramaMode::singleView;
    }
    switch (orientation) {
    case TiltOrientation::wall:
        return PanoramaMode::wall;
    case TiltOrientation::ceiling:
        return PanoramaMode::ceiling;
    case TiltOrientation::desk:
        return PanoramaMode::desk;
    case TiltOrientation::undef:
        break;
    }
    return PanoramaMode::singleView;
}

} // namespace tarvo::geometry
