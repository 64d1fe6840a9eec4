#include "geometry/DewarpParameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarvo::geometry {
namespace {

constexpr double pi = 3.1415927410125732;

CDewarpParameters mounted(TiltOrientation orientation) {
    CDewarpParameters parameters;
    parameters.setTiltOrientation(orientation);
    return parameters;
}

TEST(DewarpParameters, startsWithItsDefaults) {
    const CDewarpParameters parameters;
    EXPECT_EQ(parameters.inputWidth(), 2592.0F);
    EXPECT_EQ(parameters.inputHeight(), 1944.0F);
    EXPECT_DOUBLE_EQ(parameters.inputAspect(), 4.0 / 3.0);
    EXPECT_EQ(parameters.outputAspect(), 0.0);
    EXPECT_EQ(parameters.lensProfile(), defaultLensProfile);
    EXPECT_EQ(parameters.tiltOrientation(), TiltOrientation::undef);
    EXPECT_FALSE(parameters.isPtzUserSet());
    EXPECT_EQ(parameters.pan(), 0.0F);
    EXPECT_EQ(parameters.tilt(), 0.0F);
    EXPECT_EQ(parameters.fieldOfView(), 30.0F);
    EXPECT_TRUE(parameters.isEffectEnabled());
    EXPECT_EQ(parameters.effectLevel(), 1.0F);
    EXPECT_EQ(parameters.panoramaMode(), PanoramaMode::singleView);
    const DewarpConstants& constants = parameters.constants();
    EXPECT_EQ(constants.rotateData[0], 0.0F);
    EXPECT_EQ(constants.rotateData[1], 0.0F);
    EXPECT_EQ(constants.rotateData[2], 0.0F);
    EXPECT_EQ(constants.clearColor[0], 0.0F);
    EXPECT_EQ(constants.clearColor[1], 0.0F);
    EXPECT_EQ(constants.clearColor[2], 0.0F);
    EXPECT_EQ(constants.clearColor[3], 1.0F);
    EXPECT_EQ(constants.size[0], 2592.0F);
    EXPECT_EQ(constants.imageCenter[0], 1296.0F);
    EXPECT_EQ(constants.imageCenter[1], 972.0F);
    EXPECT_EQ(constants.lambdaOffset, 1.5707963705062866F);
    for (const float angle : constants.panoramaRectAngles) {
        EXPECT_EQ(angle, 0.0F);
    }
    EXPECT_EQ(parameters.clampTilt(-100.0F), -90.0F);
    EXPECT_EQ(parameters.clampTilt(100.0F), 90.0F);
    EXPECT_EQ(parameters.clampPan(600.0F), 180.0F);
    EXPECT_EQ(parameters.clampPan(-600.0F), -180.0F);
}

TEST(DewarpParameters, inputSidesThatAreNotPositiveKeepTheirValues) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(1920, 1080, defaultLensProfile);
    parameters.setInputGeometry(0, -5, {0.0F, 0.0F, 0.25F});
    EXPECT_EQ(parameters.inputWidth(), 1920.0F);
    EXPECT_EQ(parameters.inputHeight(), 1080.0F);
    EXPECT_DOUBLE_EQ(parameters.inputAspect(), 1920.0 / 1080.0);
    EXPECT_EQ(parameters.lensProfile(), (LensProfile{0.0F, 0.0F, 0.25F}));
    EXPECT_EQ(parameters.constants().lensProfile[2], 270.0F); // 0.25 · 1080

    parameters.setInputGeometry(640, 0, defaultLensProfile); // the aspect belongs to the height
    EXPECT_EQ(parameters.inputWidth(), 640.0F);
    EXPECT_DOUBLE_EQ(parameters.inputAspect(), 1920.0 / 1080.0);
    parameters.setInputGeometry(-1, 480, defaultLensProfile);
    EXPECT_DOUBLE_EQ(parameters.inputAspect(), 640.0 / 480.0);
}

TEST(DewarpParameters, panWrapsAndIsLimited) {
    CDewarpParameters ceiling = mounted(TiltOrientation::ceiling);
    ceiling.setPan(190.0F);
    EXPECT_EQ(ceiling.pan(), -170.0F);
    ceiling.setPan(-190.0F);
    EXPECT_EQ(ceiling.pan(), 170.0F);
    ceiling.setPan(600.0F);
    EXPECT_EQ(ceiling.pan(), 180.0F);
    EXPECT_EQ(ceiling.clampPan(190.0F), -170.0F);
    EXPECT_EQ(ceiling.pan(), 180.0F);
    CDewarpParameters wall = mounted(TiltOrientation::wall);
    wall.setPan(190.0F);
    EXPECT_EQ(wall.pan(), 90.0F);
}

TEST(DewarpParameters, tiltIsLimitedByTheMounting) {
    CDewarpParameters ceiling = mounted(TiltOrientation::ceiling);
    ceiling.setTilt(10.0F);
    EXPECT_EQ(ceiling.tilt(), 0.0F);
    CDewarpParameters desk = mounted(TiltOrientation::desk);
    desk.setTilt(-10.0F);
    EXPECT_EQ(desk.tilt(), 0.0F);
    EXPECT_EQ(desk.clampTilt(100.0F), 90.0F);
}

TEST(DewarpParameters, fieldOfViewIsLimitedEverywhere) {
    for (const auto orientation :
         {TiltOrientation::undef, TiltOrientation::wall, TiltOrientation::ceiling, TiltOrientation::desk}) {
        CDewarpParameters parameters = mounted(orientation);
        parameters.setFieldOfView(1.0F);
        EXPECT_EQ(parameters.fieldOfView(), 2.0F);
        parameters.setFieldOfView(75.0F);
        EXPECT_EQ(parameters.fieldOfView(), 60.0F);
        EXPECT_EQ(parameters.clampFieldOfView(-7.0F), 2.0F);
    }
}

TEST(DewarpParameters, whatIsNoNumberKeepsThePosition) {
    CDewarpParameters parameters = mounted(TiltOrientation::ceiling);
    parameters.setPanTiltFieldOfView(10.0F, -20.0F, 30.0F);
    const float none = std::numeric_limits<float>::quiet_NaN();
    parameters.setPanTiltFieldOfView(none, none, none);
    EXPECT_EQ(parameters.pan(), 10.0F);
    EXPECT_EQ(parameters.tilt(), -20.0F);
    EXPECT_EQ(parameters.fieldOfView(), 30.0F);
    parameters.setPan(std::numeric_limits<float>::infinity());
    EXPECT_EQ(parameters.pan(), 180.0F);
    parameters.setOutputAspect(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(parameters.outputAspect(), 0.0);
}

TEST(DewarpParameters, aspectDerivesDefaultsUntilThePositionIsSet) {
    CDewarpParameters parameters = mounted(TiltOrientation::ceiling);
    EXPECT_EQ(parameters.fieldOfView(), 30.0F);
    EXPECT_EQ(parameters.tilt(), -30.0F);
    parameters.setOutputAspect(16.0 / 9.0);
    EXPECT_NEAR(parameters.fieldOfView(), 39.1111F, 1e-4F);
    EXPECT_NEAR(parameters.tilt(), -28.0F, 1e-4F);
    EXPECT_FALSE(parameters.isPtzUserSet());

    parameters.setPan(12.0F);
    EXPECT_TRUE(parameters.isPtzUserSet());
    parameters.setOutputAspect(1.0);
    EXPECT_NEAR(parameters.fieldOfView(), 39.1111F, 1e-4F);
    EXPECT_EQ(parameters.pan(), 12.0F);

    parameters.setTiltOrientation(TiltOrientation::desk); // a new mounting starts afresh
    EXPECT_FALSE(parameters.isPtzUserSet());
    EXPECT_EQ(parameters.pan(), 0.0F);
    EXPECT_NEAR(parameters.tilt(), 28.0F, 1e-4F);
    EXPECT_EQ(parameters.fieldOfView(), 22.0F);
}

TEST(DewarpParameters, defaultsAreLimitedToo) {
    CDewarpParameters parameters = mounted(TiltOrientation::desk);
    parameters.setOutputAspect(4.0); // 22 · 4 = 88 is more than the view can open
    EXPECT_EQ(parameters.fieldOfView(), 60.0F);
}

TEST(DewarpParameters, undefinedMountingKeepsLimitsAndRotation) {
    CDewarpParameters parameters = mounted(TiltOrientation::ceiling);
    parameters.setPanTiltFieldOfView(20.0F, -40.0F, 25.0F);
    const float rotation = parameters.constants().rotateData[2];
    parameters.setTiltOrientation(TiltOrientation::undef);
    EXPECT_FALSE(parameters.isPtzUserSet());
    EXPECT_EQ(parameters.pan(), 20.0F);
    EXPECT_EQ(parameters.clampTilt(5.0F), 0.0F);
    parameters.setPan(50.0F);
    EXPECT_EQ(parameters.constants().rotateData[2], rotation);
}

TEST(DewarpParameters, rotationFollowsTheMounting) {
    CDewarpParameters wall = mounted(TiltOrientation::wall);
    wall.setPanTiltFieldOfView(30.0F, -20.0F, 25.0F);
    EXPECT_NEAR(wall.constants().rotateData[0], 20.0 * pi / 180.0, 1e-7);
    EXPECT_NEAR(wall.constants().rotateData[1], 30.0 * pi / 180.0, 1e-7);
    EXPECT_EQ(wall.constants().rotateData[2], 0.0F);
    EXPECT_EQ(wall.constants().lambdaOffset, 3.1415927410125732F);

    CDewarpParameters desk = mounted(TiltOrientation::desk);
    desk.setPanTiltFieldOfView(30.0F, 20.0F, 25.0F);
    EXPECT_EQ(desk.constants().rotateData[0], 0.0F);
    EXPECT_NEAR(desk.constants().rotateData[1], 70.0 * pi / 180.0, 1e-6);
    EXPECT_NEAR(desk.constants().rotateData[2], -120.0 * pi / 180.0, 1e-6);
    EXPECT_EQ(desk.constants().lambdaOffset, 1.5707963705062866F);
    EXPECT_NEAR(desk.constants().tangentOfFieldOfView, 0.4663077, 1e-6); // tan 25°
}

TEST(DewarpParameters, ceilingLookingStraightDownNeedsNoTilt) {
    CDewarpParameters ceiling = mounted(TiltOrientation::ceiling);
    ceiling.setPanTiltFieldOfView(0.0F, -90.0F, 30.0F);
    EXPECT_EQ(ceiling.constants().rotateData[1], 0.0F);
    EXPECT_NEAR(ceiling.constants().rotateData[2], pi / 2.0, 1e-6);
}

TEST(DewarpParameters, fullEffectScalesTheProfileByTheHeightAlone) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(800, 600, {-0.02F, 0.01F, 0.35F});
    EXPECT_NEAR(parameters.constants().lensProfile[0], -12.0F, 1e-4F);
    EXPECT_NEAR(parameters.constants().lensProfile[1], 6.0F, 1e-4F);
    EXPECT_NEAR(parameters.constants().lensProfile[2], 210.0F, 1e-4F);
}

TEST(DewarpParameters, noEffectMapsTheEdgeOfTheViewToHalfTheHeight) {
    CDewarpParameters parameters = mounted(TiltOrientation::ceiling);
    parameters.setInputGeometry(1600, 1200, {-0.02F, 0.01F, 0.35F});
    parameters.setOutputAspect(16.0 / 9.0);
    parameters.setPanTiltFieldOfView(25.0F, -40.0F, 30.0F);
    parameters.setEffectLevel(0.0F);
    // k = atan(4/3 · tan 30° / (16/9)) = atan(0.75 · 0.57735) = 0.408638
    EXPECT_NEAR(parameters.constants().lensProfile[0], 0.0F, 1e-6F);
    EXPECT_NEAR(parameters.constants().lensProfile[1], 0.0F, 1e-6F);
    EXPECT_NEAR(parameters.constants().lensProfile[2], 0.5 / 0.4086378 * 1200.0, 1e-2);
    // The view looks straight down, whatever the tilt, and still turns with the pan.
    EXPECT_NEAR(parameters.constants().rotateData[1], 0.0F, 1e-6F);
    EXPECT_NEAR(parameters.constants().rotateData[2], 115.0 * pi / 180.0, 1e-6);

    parameters.setEffectLevel(0.5F);
    EXPECT_NEAR(parameters.constants().lensProfile[0], -0.01 * 1200.0, 1e-4);
    EXPECT_NEAR(parameters.constants().lensProfile[2], (0.25 / 0.4086378 + 0.175) * 1200.0, 1e-2);
    EXPECT_NEAR(parameters.constants().rotateData[1], -(0.5 * -90.0 + 0.5 * -40.0 + 90.0) * pi / 180.0, 1e-6);

    parameters.setEffectEnabled(false); // then the level does not act
    EXPECT_NEAR(parameters.constants().lensProfile[2], 420.0F, 1e-3F);
    EXPECT_NEAR(parameters.constants().rotateData[1], -50.0 * pi / 180.0, 1e-6);
}

TEST(DewarpParameters, effectOnAWallScalesPanAndTilt) {
    CDewarpParameters wall = mounted(TiltOrientation::wall);
    wall.setPanTiltFieldOfView(40.0F, 20.0F, 30.0F);
    wall.setEffectLevel(0.25F);
    EXPECT_NEAR(wall.constants().rotateData[0], -5.0 * pi / 180.0, 1e-6);
    EXPECT_NEAR(wall.constants().rotateData[1], 10.0 * pi / 180.0, 1e-6);
}

TEST(DewarpParameters, noEffectOnADeskLooksStraightUp) {
    CDewarpParameters desk = mounted(TiltOrientation::desk);
    desk.setPanTiltFieldOfView(0.0F, 30.0F, 30.0F);
    desk.setEffectLevel(0.0F);
    EXPECT_NEAR(desk.constants().rotateData[1], 0.0F, 1e-6F);
}

TEST(DewarpParameters, unknownAspectBlendsWithAQuarterTurn) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(800, 600, {0.0F, 0.0F, 0.35F});
    parameters.setEffectLevel(0.0F);
    // atan of an infinite ratio is π/2, so c = 0.5 / (π/2) = 1/π
    EXPECT_NEAR(parameters.constants().lensProfile[2], 600.0 / 3.14159265358979, 1e-3);
}

TEST(DewarpParameters, panoramaModeRefreshesOnlyWhatPanoramasRead) {
    CDewarpParameters parameters = mounted(TiltOrientation::ceiling);
    parameters.setPanTiltFieldOfView(10.0F, -40.0F, 25.0F);
    const DewarpConstants before = parameters.constants();
    parameters.setPanoramaRectangle({180.0, 67.5, -90.0, 5.0});
    EXPECT_EQ(parameters.constants().panoramaRectAngles[2], before.panoramaRectAngles[2]);

    parameters.selectPanoramaMode(PanoramaMode::ceiling);
    EXPECT_NEAR(parameters.constants().panoramaRectAngles[0], -pi / 2.0, 1e-6);
    EXPECT_NEAR(parameters.constants().panoramaRectAngles[1], 5.0 * pi / 180.0, 1e-6);
    EXPECT_NEAR(parameters.constants().panoramaRectAngles[2], pi, 1e-6);
    EXPECT_NEAR(parameters.constants().panoramaRectAngles[3], 67.5 * pi / 180.0, 1e-6);
    parameters.setPan(77.0F);
    EXPECT_EQ(parameters.constants().rotateData[2], before.rotateData[2]);

    parameters.selectPanoramaMode(PanoramaMode::singleView);
    EXPECT_NEAR(parameters.constants().rotateData[2], 167.0 * pi / 180.0, 1e-6);
}

} // namespace
} // namespace tarvo::geometry
