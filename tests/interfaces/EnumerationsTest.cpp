#include "geometry/Enumerations.h"

#include "interfaces/TarvoVideoTransform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

namespace tarvo::interfaces {
namespace {

namespace library = TarvoVideoTransformLib;

// Names that the enumerations' members would take from everybody if they were not kept in their namespace.
[[maybe_unused]] constexpr int single = 0;
[[maybe_unused]] constexpr int custom = 0;
[[maybe_unused]] constexpr int all = 0;

static_assert(library::undef == 0 && library::wall == 1 && library::ceiling == 2 && library::desk == 3);
static_assert(library::single == 0 && library::quad == 1 && library::panoramaSingle == 2 &&
              library::panoramaDouble == 3 && library::singleOverview == 4 && library::custom == 5);
static_assert(library::all == 0 && library::northWest == 1 && library::northEast == 2 &&
              library::southWest == 3 && library::southEast == 4);
static_assert(library::overviewMapPlacementLeft == 1 && library::outputFormat_16_9 == 2 &&
              library::forceRgbOutput == 4 && library::noOutputFpsDecimation == 8);
static_assert(library::ignoreOverviewMap == 1);
static_assert(library::digitalZoom == 0 && library::virtualPtzFromPanorama == 1);
static_assert(library::insertFillFrames == 1);

template<class Inside, class Outside>
void expectSame(std::initializer_list<std::pair<Inside, Outside>> members) {
    // What the interfaces carry as a long.
    static_assert(sizeof(Outside) == sizeof(LONG) && sizeof(Inside) == sizeof(LONG));
    for (const auto& [inside, outside] : members)
        EXPECT_EQ(static_cast<std::int64_t>(inside), static_cast<std::int64_t>(outside));
}

TEST(Enumerations, haveTheValuesThatTheRoomsUse) {
    using namespace geometry;
    expectSame<TiltOrientation, library::TiltOrientation>({{TiltOrientation::undef, library::undef},
                                                           {TiltOrientation::wall, library::wall},
                                                           {TiltOrientation::ceiling, library::ceiling},
                                                           {TiltOrientation::desk, library::desk}});
    expectSame<ViewType, library::ViewType>({{ViewType::single, library::single},
                                             {ViewType::quad, library::quad},
                                             {ViewType::panoramaSingle, library::panoramaSingle},
                                             {ViewType::panoramaDouble, library::panoramaDouble},
                                             {ViewType::singleOverview, library::singleOverview},
                                             {ViewType::custom, library::custom}});
    expectSame<View, library::View>({{View::all, library::all},
                                     {View::northWest, library::northWest},
                                     {View::northEast, library::northEast},
                                     {View::southWest, library::southWest},
                                     {View::southEast, library::southEast}});
    expectSame<OptionFlag, library::OptionFlag>(
        {{OptionFlag::overviewMapPlacementLeft, library::overviewMapPlacementLeft},
         {OptionFlag::outputFormat_16_9, library::outputFormat_16_9},
         {OptionFlag::forceRgbOutput, library::forceRgbOutput},
         {OptionFlag::noOutputFpsDecimation, library::noOutputFpsDecimation}});
    expectSame<PointMapFlag, library::PointMapFlag>(
        {{PointMapFlag::ignoreOverviewMap, library::ignoreOverviewMap}});
    expectSame<CustomTransformControlType, library::CustomTransformControlType>(
        {{CustomTransformControlType::digitalZoom, library::digitalZoom},
         {CustomTransformControlType::virtualPtzFromPanorama, library::virtualPtzFromPanorama}});
    expectSame<AcceleratorSettingFlag, library::AcceleratorSettingFlag>(
        {{AcceleratorSettingFlag::insertFillFrames, library::insertFillFrames}});
}

} // namespace
} // namespace tarvo::interfaces
