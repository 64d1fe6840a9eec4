#include "geometry/Enumerations.h"

#include <gtest/gtest.h>

namespace tarvo::geometry {
namespace {

template<typename Enumeration>
int value(Enumeration member) {
    return static_cast<int>(member);
}

TEST(Enumerations, valuesAreThoseOfThePublicInterface) {
    EXPECT_EQ(value(TiltOrientation::undef), 0);
    EXPECT_EQ(value(TiltOrientation::wall), 1);
    EXPECT_EQ(value(TiltOrientation::ceiling), 2);
    EXPECT_EQ(value(TiltOrientation::desk), 3);
    EXPECT_EQ(value(ViewType::single), 0);
    EXPECT_EQ(value(ViewType::quad), 1);
    EXPECT_EQ(value(ViewType::panoramaSingle), 2);
    EXPECT_EQ(value(ViewType::panoramaDouble), 3);
    EXPECT_EQ(value(ViewType::singleOverview), 4);
    EXPECT_EQ(value(ViewType::custom), 5);
    EXPECT_EQ(value(View::all), 0);
    EXPECT_EQ(value(View::northWest), 1);
    EXPECT_EQ(value(View::northEast), 2);
    EXPECT_EQ(value(View::southWest), 3);
    EXPECT_EQ(value(View::southEast), 4);
    EXPECT_EQ(value(OptionFlag::overviewMapPlacementLeft), 1);
    EXPECT_EQ(value(OptionFlag::outputFormat_16_9), 2);
    EXPECT_EQ(value(OptionFlag::forceRgbOutput), 4);
    EXPECT_EQ(value(OptionFlag::noOutputFpsDecimation), 8);
    EXPECT_EQ(value(PointMapFlag::ignoreOverviewMap), 1);
    EXPECT_EQ(value(CustomTransformControlType::digitalZoom), 0);
    EXPECT_EQ(value(CustomTransformControlType::virtualPtzFromPanorama), 1);
    EXPECT_EQ(value(AcceleratorSettingFlag::insertFillFrames), 1);
}

TEST(Enumerations, singleDewarpGroupHoldsSingleAndSingleOverviewOnly) {
    for (int i = 0; i <= 5; ++i) {
        EXPECT_EQ(isSingleDewarp(static_cast<ViewType>(i)), i == 0 || i == 4) << i;
    }
}

TEST(Enumerations, undefinedMountingFollowsTheViewType) {
    for (int i = 0; i <= 5; ++i) {
        const auto viewType = static_cast<ViewType>(i);
        const auto usual = i == 1 || i == 3 ? TiltOrientation::ceiling : TiltOrientation::wall;
        EXPECT_EQ(effectiveOrientation(TiltOrientation::undef, viewType), usual) << i;
        EXPECT_EQ(effectiveOrientation(static_cast<TiltOrientation>(7), viewType), usual) << i;
        for (const auto set : {TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
            EXPECT_EQ(effectiveOrientation(set, viewType), set) << i;
        }
    }
}

} // namespace
} // namespace tarvo::geometry
