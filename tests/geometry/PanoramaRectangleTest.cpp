#include "geometry/PanoramaRectangle.h"

#include <gtest/gtest.h>

namespace tarvo::geometry {
namespace {

constexpr TiltOrientation mountings[] = {TiltOrientation::wall, TiltOrientation::ceiling,
                                         TiltOrientation::desk};

TEST(PanoramaRectangle, unknownAspectGivesTheSameHeightForEveryMounting) {
    for (const auto orientation : mountings) {
        EXPECT_EQ(derivePanoramaRectangle(orientation, 180.0, -90.0, 0.0).heightDegrees, 67.5);
    }
}

TEST(PanoramaRectangle, heightIsCappedByTheMounting) {
    EXPECT_EQ(derivePanoramaRectangle(TiltOrientation::wall, 360.0, 0.0, 4.0).heightDegrees, 90.0);
    EXPECT_EQ(derivePanoramaRectangle(TiltOrientation::ceiling, 360.0, 0.0, 4.0).heightDegrees, 67.5);
    EXPECT_EQ(derivePanoramaRectangle(TiltOrientation::desk, 360.0, 0.0, 4.0).heightDegrees, 67.5);
    EXPECT_EQ(derivePanoramaRectangle(TiltOrientation::wall, 360.0, 0.0, 2.0).heightDegrees, 100.0);
    EXPECT_EQ(derivePanoramaRectangle(TiltOrientation::ceiling, 180.0, 0.0, 4.0).heightDegrees, 45.0);
}

TEST(PanoramaRectangle, carriesWidthAndOffset) {
    const PanoramaRectangle rectangle = derivePanoramaRectangle(TiltOrientation::desk, 170.0, -30.0, 2.0);
    EXPECT_EQ(rectangle.widthDegrees, 170.0);
    EXPECT_EQ(rectangle.panOffsetDegrees, -30.0);
    EXPECT_EQ(rectangle.tiltOffsetDegrees, 0.0);
}

TEST(PanoramaMode, isChosenByViewTypeAndMounting) {
    for (const auto viewType : {ViewType::panoramaSingle, ViewType::panoramaDouble}) {
        EXPECT_EQ(panoramaMode(viewType, TiltOrientation::wall), PanoramaMode::wall);
        EXPECT_EQ(panoramaMode(viewType, TiltOrientation::ceiling), PanoramaMode::ceiling);
        EXPECT_EQ(panoramaMode(viewType, TiltOrientation::desk), PanoramaMode::desk);
    }
    for (const auto viewType :
         {ViewType::single, ViewType::quad, ViewType::singleOverview, ViewType::custom}) {
        for (const auto orientation : mountings) {
            EXPECT_EQ(panoramaMode(viewType, orientation), PanoramaMode::singleView);
        }
    }
    EXPECT_EQ(static_cast<int>(PanoramaMode::ceiling), 1);
    EXPECT_EQ(static_cast<int>(PanoramaMode::desk), 2);
    EXPECT_EQ(static_cast<int>(PanoramaMode::wall), 3);
}

} // namespace
} // namespace tarvo::geometry
