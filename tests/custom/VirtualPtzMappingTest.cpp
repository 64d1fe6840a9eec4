#include "custom/VirtualPtzMapping.h"

#include "tests/custom/VirtualPtzModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarvo::custom {
namespace {

PanoramaDirection map(const VirtualPtzSettings& settings, double x, double y,
                      Straightening straightening = Straightening::none) {
    return mapToPanorama(virtualPtzView(settings), static_cast<float>(x), static_cast<float>(y),
                         straightening);
}

TEST(VirtualPtzView, isInSinglePrecisionRadians) {
    VirtualPtzSettings settings;
    settings.pan = 90.0;
    settings.tilt = -30.0;
    settings.fieldOfView = 60.0;
    settings.cameraPitch = 10.0;
    settings.cameraRoll = -20.0;
    settings.effectLevel = 0.25;
    settings.outputAspect = 1.5F;
    const VirtualPtzView view = virtualPtzView(settings);
    // Of the single-precision number next to pi.
    constexpr double pi = 3.1415927410125732;
    EXPECT_EQ(view.panoramaHorizontalFieldOfView, static_cast<float>(pi));
    EXPECT_EQ(view.panoramaVerticalFieldOfView, static_cast<float>(pi / 2.0));
    EXPECT_EQ(view.pan, static_cast<float>(pi / 2.0));
    EXPECT_EQ(view.tilt, static_cast<float>(-30.0 * pi / 180.0));
    EXPECT_EQ(view.fieldOfView, static_cast<float>(60.0 * pi / 180.0));
    EXPECT_EQ(view.pitch, static_cast<float>(10.0 * pi / 180.0));
    EXPECT_EQ(view.roll, static_cast<float>(-20.0 * pi / 180.0));
    EXPECT_EQ(view.effectLevel, 0.25F);
    EXPECT_EQ(view.outputAspect, 1.5F);
}

TEST(VirtualPtzMapping, seesTheEdgesAtHalfTheFieldOfView) {
    VirtualPtzSettings settings;
    settings.outputAspect = 2.0F;
    const PanoramaDirection right = map(settings, 1.0, 0.5);
    EXPECT_NEAR(right.pan, 45.0, 1e-4);
    EXPECT_NEAR(right.tilt, 0.0, 1e-4);
    EXPECT_NEAR(map(settings, 0.0, 0.5).pan, -45.0, 1e-4);
    // Half the height is half the tangent: 26.565 degrees, upwards at the top.
    EXPECT_NEAR(map(settings, 0.5, 0.0).tilt, 26.5651, 1e-4);
    EXPECT_NEAR(map(settings, 0.5, 1.0).tilt, -26.5651, 1e-4);
    settings.pan = 10.0;
    settings.tilt = -20.0;
    EXPECT_NEAR(map(settings, 0.5, 0.0).tilt, 6.5651, 1e-4);
    EXPECT_NEAR(map(settings, 0.5, 0.0).pan, 10.0, 1e-4);
}

TEST(VirtualPtzMapping, divesByZeroInTheCentre) {
    VirtualPtzSettings settings;
    settings.pan = 33.0;
    settings.tilt = -20.0;
    // The tilt is no number there, and so 0; the pan is one.
    EXPECT_NEAR(map(settings, 0.5, 0.5).pan, 33.0, 1e-4);
    EXPECT_EQ(map(settings, 0.5, 0.5).tilt, 0.0F);
    EXPECT_EQ(map(settings, 0.5, 0.5, Straightening::applied).pan, 0.0F);
    EXPECT_EQ(map(settings, 0.5, 0.5, Straightening::applied).tilt, 0.0F);
    // Right beside it there is nothing odd.
    EXPECT_NEAR(map(settings, 0.5001, 0.5).tilt, -20.0, 0.01);
    settings.effectLevel = 0.0;
    EXPECT_NEAR(map(settings, 0.5, 0.5).pan, 33.0, 1e-4);
    EXPECT_NEAR(map(settings, 0.5, 0.5).tilt, -20.0, 1e-4);
}

TEST(VirtualPtzMapping, showsAPlainSectionWithoutEffect) {
    VirtualPtzSettings settings;
    settings.effectLevel = 0.0;
    settings.panoramaHorizontalFieldOfView = 200.0;
    settings.outputAspect = 2.0F;
    settings.pan = 5.0;
    settings.tilt = 7.0;
    // A quarter of the width is 50 degrees; the same scale downwards, by the horizontal angle.
    EXPECT_NEAR(map(settings, 0.75, 0.75).pan, 55.0, 1e-4);
    EXPECT_NEAR(map(settings, 0.75, 0.75).tilt, 7.0 - 25.0, 1e-4);
}

TEST(VirtualPtzMapping, blendsHalfWayInBetween) {
    VirtualPtzSettings settings;
    settings.effectLevel = 0.5;
    settings.outputAspect = 1.0F;
    settings.pan = 20.0;
    // True: 20 + 45. Plain: 90, and half of the pan.
    EXPECT_NEAR(map(settings, 1.0, 0.5).pan, 0.5 * 65.0 + 0.5 * 90.0 + 0.5 * 20.0, 1e-4);
}

TEST(VirtualPtzMapping, straightensByRollAndPitch) {
    VirtualPtzSettings settings;
    settings.effectLevel = 0.0;
    settings.cameraPitch = 10.0;
    // What is straight ahead lies below in the picture of a camera that looks up.
    EXPECT_NEAR(map(settings, 0.5, 0.5, Straightening::applied).pan, 0.0, 1e-4);
    EXPECT_NEAR(map(settings, 0.5, 0.5, Straightening::applied).tilt, -10.0, 1e-4);
    settings.cameraPitch = 0.0;
    settings.cameraRoll = 90.0;
    settings.pan = 30.0;
    // What is 30 degrees to the right comes to lie 30 degrees down.
    EXPECT_NEAR(map(settings, 0.5, 0.5, Straightening::applied).pan, 0.0, 1e-4);
    EXPECT_NEAR(map(settings, 0.5, 0.5, Straightening::applied).tilt, -30.0, 1e-4);
    EXPECT_NEAR(map(settings, 0.5, 0.5).pan, 30.0, 1e-4) << "not unless it is asked for";
}

double wrapped(double degrees) {
    return std::remainder(degrees, 360.0);
}

TEST(VirtualPtzMapping, agreesWithPlainVectors) {
    int compared = 0;
    int skipped = 0;
    VirtualPtzSettings s;
    for (const double level : {1.0, 0.0, 0.3}) {
        s.effectLevel = level;
        for (const float aspect : {0.75F, 16.0F / 9.0F}) {
            s.outputAspect = aspect;
            for (const double fieldOfView : {5.0, 60.0, 120.0}) {
                s.fieldOfView = fieldOfView;
                for (double pan = -175.0; pan <= 180.0; pan += 50.0) {
                    s.pan = pan;
                    for (double tilt = -85.0; tilt <= 90.0; tilt += 34.0) {
                        s.tilt = tilt;
                        for (const double pitch : {0.0, -30.0, 65.0}) {
                            s.cameraPitch = pitch;
                            for (const double roll : {0.0, 12.0, -140.0}) {
                                s.cameraRoll = roll;
                                for (int i = 0; i < 24; ++i) {
                                    // Never the centre.
                                    const double x = (i % 6) / 5.0;
                                    const double y = (i / 6) / 3.0;
                                    for (const bool isStraightened : {false, true}) {
                                        const model::Direction expected = model::map(
                                            s, static_cast<float>(x), static_cast<float>(y), isStraightened);
                                        if (expected.conditioning < 0.01) {
                                            ++skipped;
                                            continue;
                                        }
                                        const PanoramaDirection actual = map(
                                            s, x, y,
                                            isStraightened ? Straightening::applied : Straightening::none);
                                        const double tolerance = 4e-4 / expected.conditioning;
                                        const double pan1 = static_cast<double>(actual.pan);
                                        const double panError = isStraightened ? wrapped(pan1 - expected.pan)
                                                                               : pan1 - expected.pan;
                                        ASSERT_NEAR(panError, 0.0, tolerance)
                                            << pan << " " << tilt << " " << x << " " << y;
                                        ASSERT_NEAR(actual.tilt, expected.tilt, tolerance)
                                            << pan << " " << tilt << " " << x << " " << y;
                                        ++compared;
                                    }
                                }
                            }
                        }
                    }
                }
            }
        }
    }
    EXPECT_GT(compared, 300000);
    EXPECT_LT(skipped, compared / 50);
}

TEST(VirtualPtzMapping, makesZeroOfWhatIsNoNumber) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(map({}, nan, 0.25).pan, 0.0F);
    EXPECT_EQ(map({}, nan, 0.25).tilt, 0.0F);
    VirtualPtzSettings settings;
    settings.effectLevel = 0.0;
    settings.pan = 3.0e38;
    settings.panoramaHorizontalFieldOfView = 3.0e38;
    const PanoramaDirection direction = map(settings, 1e30, 0.5);
    EXPECT_TRUE(std::isfinite(direction.pan));
    EXPECT_TRUE(std::isfinite(direction.tilt));
}

} // namespace
} // namespace tarvo::custom
