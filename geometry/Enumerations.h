#pragma once

#include <cstdint>

namespace tarvo::geometry {

/// How the camera is mounted. `undef` leaves the pan and tilt limits and the rotation as they are.
/// The values of all enumerations in this file belong to the public automation interface and never change.
enum class TiltOrientation : std::int32_t { undef = 0, wall = 1, ceiling = 2, desk = 3 };

/// Composition of the output picture.
enum class ViewType : std::int32_t {
    single = 0,
    quad = 1,
    panoramaSingle = 2,
    panoramaDouble = 3,
    singleOverview = 4,
    custom = 5
};

/// Sub-view of the quad view that the pan, tilt and field of view address; `all` means none is selected.
enum class View : std::int32_t { all = 0, northWest = 1, northEast = 2, southWest = 3, southEast = 4 };

/// Bits of the options word.
enum class OptionFlag : std::int32_t {
    overviewMapPlacementLeft = 1,
    outputFormat_16_9 = 2,
    forceRgbOutput = 4,
    noOutputFpsDecimation = 8
};

/// Bits of the flags of a point mapping.
enum class PointMapFlag : std::int32_t { ignoreOverviewMap = 1 };

/// Which control object steers the custom view type.
enum class CustomTransformControlType : std::int32_t { digitalZoom = 0, virtualPtzFromPanorama = 1 };

/// Bits of the accelerator filter's settings.
enum class AcceleratorSettingFlag : std::int32_t { insertFillFrames = 1 };

/// Which projection the dewarp program evaluates.
enum class PanoramaMode : std::int32_t { singleView = 0, ceiling = 1, desk = 2, wall = 3 };

/// True when `flag` is set in the bit set `bits`.
template<typename Flag>
constexpr bool hasFlag(std::int32_t bits, Flag flag) {
    return (bits & static_cast<std::int32_t>(flag)) != 0;
}

/// True for the view types that show one dewarped view, `single` and `singleOverview`: only in these does the
/// effect level act and can points be mapped, and only between these does a change keep the PTZ position.
constexpr bool isSingleDewarp(ViewType viewType) {
    return viewType == ViewType::single || viewType == ViewType::singleOverview;
}

constexpr bool isPanorama(ViewType viewType) {
    return viewType == ViewType::panoramaSingle || viewType == ViewType::panoramaDouble;
}

/// The mounting in force: the one that was set, else - and for what is no mounting - the usual one of the
/// view type.
constexpr TiltOrientation effectiveOrientation(TiltOrientation asSet, ViewType viewType) {
    if (asSet == TiltOrientation::wall || asSet == TiltOrientation::ceiling ||
        asSet == TiltOrientation::desk) {
        return asSet;
    }
    const bool looksAllRound = viewType == ViewType::quad || viewType == ViewType::panoramaDouble;
    return looksAllRound ? TiltOrientation::ceiling : TiltOrientation::wall;
}

} // namespace tarvo::geometry
