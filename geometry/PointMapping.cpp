#include "geometry/PointMapping.h"

#include "geometry/Projection.h"

namespace tarvo::geometry {
namespace {

/// A point of the output picture, −1 … 1, x to the right and y upward.
struct ViewPoint {
    double x;
    double y;
};

constexpr ViewPoint viewPoint(double x, double y) {
    return {2.0 * x - 1.0, 1.0 - 2.0 * y};
}

/// The point in the disc's own circle of radius 1, or no value when it lies outside.
std::optional<ViewPoint> onOverviewDisc(const ViewLayout& layout, ViewPoint point) {
    const OverviewPlacement disc = overviewPlacement(layout.outputAspect, layout.isOverviewLeft);
    const ViewPoint onDisc{(point.x - disc.centerX) / disc.halfWidth,
                           (point.y + disc.centerY) / disc.halfHeight};
    if (onDisc.x * onDisc.x + onDisc.y * onDisc.y <= 1.0) {
        return onDisc;
    }
    return std::nullopt;
}

/// Direction for a view whose effect is off: the output then shows the fisheye picture itself.
PanTilt fromUndistortedLook(const CViewState& view, const ViewLayout& layout, ViewPoint point) {
    const double ratio = layout.inputAspect / layout.outputAspect;
    if (ratio < 1.0) {
        point.x /= ratio;
    } else {
        point.y *= ratio;
    }
    const CDewarpParameters& parameters = view.parameters();
    PanTilt result = parameters.ptzCalculator().fromFisheyePoint(point.x * layout.inputAspect, point.y);
    if (parameters.isEffectEnabled()) {
        // The level-0 look still turns with the pan.
        const auto pan = static_cast<double>(parameters.pan());
        if (view.orientationInForce() == TiltOrientation::ceiling) {
            result.panDegrees += pan;
        } else if (view.orientationInForce() == TiltOrientation::desk) {
            result.panDegrees += pan + 180.0;
        }
    }
    return result;
}

} // namespace

std::optional<PanTilt> mapPoint(const CViewState& view, double x, double y, std::int32_t flags) {
    if (!isSingleDewarp(view.viewType())) {
        return std::nullopt;
    }
    const ViewLayout layout = view.layout();
    const CDewarpParameters& parameters = view.parameters();
    const ViewPoint point = viewPoint(x, y);
    if (!parameters.isEffectEnabled() || parameters.effectLevel() == 0.0F) {
        return fromUndistortedLook(view, layout, point);
    }
    if (view.viewType() == ViewType::singleOverview && !hasFlag(flags, PointMapFlag::ignoreOverviewMap)) {
        if (const auto onDisc = onOverviewDisc(layout, point)) {
            return parameters.ptzCalculator().fromFisheyePoint(onDisc->x, onDisc->y);
        }
    }
    return parameters.ptzCalculator().fromDewarpedPoint(point.x,
                                                        point.y * layout.inputAspect / layout.outputAspect);
}

std::optional<OverviewPoint> mapPointToOverview(const CViewState& view, double x, double y) {
    if (!isSingleDewarp(view.viewType())) {
        return std::nullopt;
    }
    const ViewLayout layout = view.layout();
    const ViewPoint point = viewPoint(x, y);
    const ForwardProjection projected = projectForward(view.parameters().constants(), point.x,
                                                       point.y * layout.inputAspect / layout.outputAspect);
    return OverviewPoint{projected.x * 0.5 + 0.5, projected.y * 0.5 + 0.5};
}

} // namespace tarvo::geometry
