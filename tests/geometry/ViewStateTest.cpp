#include "geometry/ViewState.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace tarvo::geometry {
namespace {

CViewState stateOf(ViewType viewType, TiltOrientation orientation) {
    CViewState view;
    view.setInputSize(2592, 1944);
    view.setOutputSize(1024, 768);
    view.setTiltOrientation(orientation);
    view.setViewType(viewType);
    return view;
}

TEST(ViewState, startsAsASingleViewOnAWall) {
    const CViewState view;
    EXPECT_EQ(view.viewType(), ViewType::single);
    EXPECT_EQ(view.tiltOrientation(), TiltOrientation::undef);
    EXPECT_EQ(view.orientationInForce(), TiltOrientation::wall);
    EXPECT_EQ(view.inputAspect(), 0.0F);
    EXPECT_EQ(view.outputAspect(), 0.0F);
    EXPECT_EQ(view.panoramaFieldOfView(), 180.0);
    EXPECT_EQ(view.panoramaPanOffset(), -90.0);
    EXPECT_FALSE(view.excludeArea().isActive());
    EXPECT_DOUBLE_EQ(view.layout().inputAspect, 4.0 / 3.0);
    EXPECT_DOUBLE_EQ(view.layout().outputAspect, 4.0 / 3.0);
}

TEST(ViewState, quadViewDrawsTheFourDirections) {
    CViewState view = stateOf(ViewType::quad, TiltOrientation::ceiling);
    view.setTilt(-40.0);
    const float pans[] = {-45.0F, 45.0F, 135.0F, -135.0F};
    for (int i = 0; i < 4; ++i) {
        const CDewarpParameters sub = view.subViewParameters(i);
        EXPECT_EQ(sub.pan(), pans[i]);
        EXPECT_EQ(sub.tilt(), -40.0F);
        EXPECT_EQ(sub.fieldOfView(), view.parameters().fieldOfView());
    }
    EXPECT_EQ(view.parameters().pan(), 0.0F); // drawing leaves the position alone
}

TEST(ViewState, drawingSubViewsDoesNotCountAsSettingThePosition) {
    const CViewState view = stateOf(ViewType::quad, TiltOrientation::ceiling);
    (void)view.subViewParameters(2);
    EXPECT_FALSE(view.parameters().isPtzUserSet());
}

TEST(ViewState, undefinedMountingFollowsTheViewType) {
    CViewState view = stateOf(ViewType::single, TiltOrientation::undef);
    EXPECT_EQ(view.orientationInForce(), TiltOrientation::wall);
    view.setViewType(ViewType::quad);
    EXPECT_EQ(view.orientationInForce(), TiltOrientation::ceiling);
    EXPECT_EQ(view.parameters().tiltOrientation(), TiltOrientation::ceiling);
    view.setViewType(ViewType::panoramaSingle);
    EXPECT_EQ(view.orientationInForce(), TiltOrientation::wall);
    EXPECT_EQ(view.parameters().panoramaMode(), PanoramaMode::wall);
    view.setViewType(ViewType::panoramaDouble);
    EXPECT_EQ(view.parameters().panoramaMode(), PanoramaMode::ceiling);
}

TEST(ViewState, changeOfTheMountingInForceResetsTheOffsets) {
    CViewState view = stateOf(ViewType::quad, TiltOrientation::ceiling);
    view.setSelectedView(View::northEast);
    EXPECT_TRUE(view.setPan(80.0));
    EXPECT_EQ(view.quadViewOffsets()[1].panDegrees, 80.0);
    view.setViewType(ViewType::single); // the mounting stays, so do the offsets
    EXPECT_EQ(view.quadViewOffsets()[1].panDegrees, 80.0);
    EXPECT_TRUE(view.setTiltOrientation(TiltOrientation::desk));
    EXPECT_EQ(view.quadViewOffsets()[0].panDegrees, -45.0);
    EXPECT_EQ(view.quadViewOffsets()[1].panDegrees, 45.0);
    EXPECT_EQ(view.quadViewOffsets()[2].panDegrees, 135.0);
    EXPECT_EQ(view.quadViewOffsets()[3].panDegrees, 225.0);
    EXPECT_FALSE(view.setTiltOrientation(TiltOrientation::desk));
}

TEST(ViewState, selectedViewKeepsTheDifferenceToTheMainView) {
    CViewState view = stateOf(ViewType::quad, TiltOrientation::ceiling);
    view.setPan(30.0);
    view.setSelectedView(View::northEast);
    EXPECT_TRUE(view.setPan(100.0));
    EXPECT_EQ(view.pan(), 100.0);
    EXPECT_EQ(view.quadViewOffsets()[1].panDegrees, 70.0);
    EXPECT_FALSE(view.setPan(100.0));
    EXPECT_TRUE(view.setFieldOfView(1000.0)); // limited before the difference is taken
    EXPECT_EQ(view.fieldOfView(), 60.0);
    view.setSelectedView(View::all);
    EXPECT_EQ(view.pan(), 30.0);
    EXPECT_EQ(view.subViewParameters(1).pan(), 100.0F);
    EXPECT_EQ(view.subViewParameters(1).fieldOfView(), 60.0F);
}

TEST(ViewState, positionSurvivesOnlyWithinTheSingleViews) {
    CViewState view = stateOf(ViewType::single, TiltOrientation::ceiling);
    view.setPtzPosition(20.0, -50.0, 25.0, false);
    view.setViewType(ViewType::singleOverview);
    EXPECT_EQ(view.pan(), 20.0);
    view.setViewType(ViewType::quad);
    EXPECT_EQ(view.pan(), 0.0);
    EXPECT_NEAR(view.tilt(), -28.0, 1e-4);
    view.setPan(50.0);
    view.setViewType(ViewType::panoramaSingle);
    EXPECT_EQ(view.pan(), 0.0);
    view.setPan(50.0);
    view.setViewType(ViewType::panoramaDouble);
    EXPECT_EQ(view.pan(), 0.0);
}

TEST(ViewState, relativeMovesAddAndWrap) {
    CViewState view = stateOf(ViewType::single, TiltOrientation::ceiling);
    view.setPtzPosition(170.0, -40.0, 30.0, false);
    view.setPtzPosition(20.0, -10.0, -5.0, true);
    EXPECT_EQ(view.pan(), -170.0);
    EXPECT_EQ(view.tilt(), -50.0);
    EXPECT_EQ(view.fieldOfView(), 25.0);
    view.setPtzPosition(0.0, 90.0, 90.0, true);
    EXPECT_EQ(view.tilt(), 0.0);
    EXPECT_EQ(view.fieldOfView(), 60.0);
}

TEST(ViewState, outputAspectDerivesDefaultsUntilThePositionIsSet) {
    CViewState view = stateOf(ViewType::single, TiltOrientation::ceiling);
    EXPECT_NEAR(view.fieldOfView(), 22.0 * 4.0 / 3.0, 1e-4);
    view.setOutputSize(1920, 1080);
    EXPECT_NEAR(view.fieldOfView(), 39.1111, 1e-4);
    EXPECT_NEAR(view.tilt(), -28.0, 1e-4);
    view.setPan(5.0);
    view.setOutputSize(500, 500);
    EXPECT_NEAR(view.fieldOfView(), 39.1111, 1e-4);
}

TEST(ViewState, effectActsInSingleViewsOnly) {
    CViewState view = stateOf(ViewType::single, TiltOrientation::ceiling);
    view.setEffectLevel(0.0);
    EXPECT_EQ(view.parameters().constants().lensProfile[0], 0.0F);
    view.setViewType(ViewType::quad);
    EXPECT_FALSE(view.parameters().isEffectEnabled());
    EXPECT_NE(view.parameters().constants().lensProfile[0], 0.0F);
    view.setViewType(ViewType::singleOverview);
    EXPECT_TRUE(view.parameters().isEffectEnabled());
    view.setEffectLevel(1.7);
    EXPECT_EQ(view.parameters().effectLevel(), 1.0F);
    view.setEffectLevel(-3.0);
    EXPECT_EQ(view.parameters().effectLevel(), 0.0F);
}

TEST(ViewState, panoramaRectangleFollowsOutputAndMounting) {
    CViewState view = stateOf(ViewType::panoramaSingle, TiltOrientation::ceiling);
    EXPECT_EQ(view.panoramaRectangle().heightDegrees, 67.5);
    EXPECT_NEAR(view.parameters().constants().panoramaRectAngles[3], 1.1780972, 1e-6); // 67.5 degrees
    view.setPanoramaFieldOfView(40.0);
    EXPECT_NEAR(view.panoramaRectangle().heightDegrees, 30.0, 1e-5); // 40 / (4/3)
    EXPECT_NEAR(view.parameters().constants().panoramaRectAngles[2], 0.6981317, 1e-6);
    view.setPanoramaPanOffset(30.0);
    EXPECT_NEAR(view.parameters().constants().panoramaRectAngles[0], 0.5235988, 1e-6);
    view.setPanoramaFieldOfView(0.2);
    EXPECT_EQ(view.panoramaFieldOfView(), 1.0);
    view.setPanoramaFieldOfView(180.0);
    view.setTiltOrientation(TiltOrientation::wall);
    EXPECT_EQ(view.panoramaRectangle().heightDegrees, 100.0);
}

TEST(ViewState, whatIsNoNumberChangesNothing) {
    CViewState view = stateOf(ViewType::single, TiltOrientation::ceiling);
    view.setPtzPosition(10.0, -20.0, 30.0, false);
    const double none = std::numeric_limits<double>::quiet_NaN();
    view.setPtzPosition(none, none, none, false);
    view.setEffectLevel(none);
    view.setPanoramaFieldOfView(none);
    view.setPanoramaPanOffset(std::numeric_limits<double>::infinity());
    view.setInputSize(0, 100);
    view.setOutputSize(100, -1);
    EXPECT_EQ(view.pan(), 10.0);
    EXPECT_EQ(view.tilt(), -20.0);
    EXPECT_EQ(view.fieldOfView(), 30.0);
    EXPECT_EQ(view.parameters().effectLevel(), 1.0F);
    EXPECT_EQ(view.panoramaFieldOfView(), 180.0);
    EXPECT_EQ(view.panoramaPanOffset(), -90.0);
    EXPECT_EQ(view.inputSize(), (PictureSize{2592, 1944}));
    EXPECT_EQ(view.outputSize(), (PictureSize{1024, 768}));
}

TEST(ViewState, whatIsNoNumberKeepsASubViewsOffset) {
    CViewState view = stateOf(ViewType::quad, TiltOrientation::ceiling);
    view.setSelectedView(View::northEast);
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(view.setPan(none));
    EXPECT_FALSE(view.setTilt(none));
    EXPECT_FALSE(view.setFieldOfView(none));
    EXPECT_EQ(view.quadViewOffsets()[1].panDegrees, 45.0);
    EXPECT_EQ(view.quadViewOffsets()[1].tiltDegrees, 0.0);
    view.setSelectedView(View::all);
    EXPECT_FALSE(view.setPan(none));
    EXPECT_FALSE(view.parameters().isPtzUserSet());
}

TEST(ViewState, viewsThatDoNotExistAreRefused) {
    CViewState view = stateOf(ViewType::quad, TiltOrientation::ceiling);
    view.setSelectedView(View::southWest);
    view.setSelectedView(static_cast<View>(9));
    view.setSelectedView(static_cast<View>(-1));
    EXPECT_EQ(view.selectedView(), View::southWest);
    EXPECT_THROW((void)view.subViewParameters(4), std::out_of_range);
    EXPECT_THROW((void)view.subViewParameters(-1), std::out_of_range);
}

} // namespace
} // namespace tarvo::geometry
