#include "custom/BorderAdjustment.h"

#include "custom/VirtualPtzMapping.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tarvo::custom {
namespace {

/// Degrees by which two opposite borders of the view look past the panorama; negative where there is room.
struct Excess {
    double before; ///< left or top
    double after;  ///< right or bottom
};

template<std::size_t count>
double reduced(const VirtualPtzSettings& settings, const std::array<double, count>& excesses) {
    const auto [smallest, largest] = std::ranges::minmax(excesses);
    const bool takesLargest = settings.useStrictBorderMode && settings.effectLevel >= 1.0;
    return takesLargest ? largest : (smallest + largest) / 2.0;
}

Excess horizontalExcess(const VirtualPtzSettings& settings) {
    const VirtualPtzView view = virtualPtzView(settings);
    const double half = settings.panoramaHorizontalFieldOfView / 2.0;
    std::array<double, 3> left{};
    std::array<double, 3> right{};
    for (std::size_t i = 0; i < left.size(); ++i) {
        const float y = static_cast<float>(i) / 2.0F;
        left[i] = -half - double{mapToPanorama(view, 0.0F, y, Straightening::applied).pan};
        right[i] = double{mapToPanorama(view, 1.0F, y, Straightening::applied).pan} - half;
    }
    return {reduced(settings, left), reduced(settings, right)};
}

/// The signs are deliberate: a border counts as past the panorama's edge of its own name by the tilt, which
/// grows upwards, as the pan does to the right. So it is the view's upper border below the panorama's lower
/// edge, and its lower border above the upper edge, that draw the view back.
Excess verticalExcess(const VirtualPtzSettings& settings) {
    const VirtualPtzView view = virtualPtzView(settings);
    const double half = settings.panoramaVerticalFieldOfView / 2.0;
    std::array<double, 9> top{};
    std::array<double, 9> bottom{};
    for (std::size_t i = 0; i < top.size(); ++i) {
        const float x = static_cast<float>(i) / 8.0F;
        top[i] = -half - double{mapToPanorama(view, x, 0.0F, Straightening::applied).tilt};
        bottom[i] = double{mapToPanorama(view, x, 1.0F, Straightening::applied).tilt} - half;
    }
    return {reduced(settings, top), reduced(settings, bottom)};
}

void adjustHorizontally(VirtualPtzSettings& settings) {
    if (settings.effectLevel == 0.0)
        return;
    const Excess excess = horizontalExcess(settings);
    if (excess.before > 0.0)
        settings.pan += excess.before;
    else if (excess.after > 0.0)
        settings.pan -= excess.after;
}

void adjustVertically(VirtualPtzSettings& settings) {
    if (settings.effectLevel == 0.0)
        return;
    const Excess excess = verticalExcess(settings);
    // Shifting takes from one border what it gives to the other.
    if (excess.before > -excess.after || excess.after > -excess.before) {
        settings.fieldOfView =
            std::max(smallestVirtualFieldOfView, settings.fieldOfView - (excess.before + excess.after));
    }
    if (excess.before > 0.0)
        settings.tilt += std::min(excess.before, -excess.after);
    else if (excess.after > 0.0)
        settings.tilt -= std::min(excess.after, -excess.before);
}

bool isInSingleRange(double value) {
    return std::abs(value) <= double{std::numeric_limits<float>::max()};
}

} // namespace

VirtualPtzSettings adjustedToBorder(const VirtualPtzSettings& settings) {
    VirtualPtzSettings adjusted = settings;
    adjustHorizontally(adjusted);
    adjustVertically(adjusted);
    return isInSingleRange(adjusted.pan) && isInSingleRange(adjusted.tilt) ? adjusted : settings;
}

} // namespace tarvo::custom
