#include "custom/BorderAdjustment.h"

#include "tests/custom/VirtualPtzModel.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarvo::custom {
namespace {

VirtualPtzSettings square() {
    // 180 x 90 degrees of panorama, a square view of 90 degrees.
    return {};
}

TEST(BorderAdjustment, leavesAViewInside) {
    VirtualPtzSettings settings = square();
    settings.pan = 44.9;
    for (const bool isStrict : {false, true}) {
        settings.useStrictBorderMode = isStrict;
        const VirtualPtzSettings adjusted = adjustedToBorder(settings);
        EXPECT_EQ(adjusted.pan, 44.9);
        EXPECT_EQ(adjusted.tilt, 0.0);
        EXPECT_EQ(adjusted.fieldOfView, 90.0);
    }
}

TEST(BorderAdjustment, drawsThePanBack) {
    VirtualPtzSettings settings = square();
    // A level camera sees 45 degrees to either side, in each row.
    settings.pan = 80.0;
    EXPECT_NEAR(adjustedToBorder(settings).pan, 45.0, 1e-4);
    settings.pan = -80.0;
    EXPECT_NEAR(adjustedToBorder(settings).pan, -45.0, 1e-4);
}

TEST(BorderAdjustment, takesTheMostOrTheMiddleOfTheRows) {
    VirtualPtzSettings settings = square();
    settings.pan = 80.0;
    settings.tilt = -45.0;
    // Half the width as an angle around the vertical: atan(1 / sqrt 2) = 35.2644 at the upper corner, 54.7356
    // in the middle, 90 at the lower corner, which is straight down.
    EXPECT_NEAR(adjustedToBorder(settings).pan, 90.0 - (35.2644 + 90.0) / 2.0, 1e-3);
    settings.useStrictBorderMode = true;
    EXPECT_NEAR(adjustedToBorder(settings).pan, 0.0, 1e-3);
}

TEST(BorderAdjustment, isStrictWithFullEffectOnly) {
    VirtualPtzSettings settings = square();
    settings.useStrictBorderMode = true;
    settings.effectLevel = 0.5;
    settings.pan = 80.0;
    settings.tilt = -20.0;
    settings.outputAspect = 2.0F;
    // As angles around the vertical the true view's half width is 41.9977 at the upper corner and 52.4511 at
    // the lower one: atan(1 / (cos 20 ± 0.5 sin 20)). The plain section's is 90 everywhere.
    const double upper = 0.5 * 41.9977 + 0.5 * 90.0;
    const double lower = 0.5 * 52.4511 + 0.5 * 90.0;
    EXPECT_NEAR(adjustedToBorder(settings).pan, 90.0 - (upper + lower) / 2.0, 1e-3);
}

TEST(BorderAdjustment, drawsTheTiltBack) {
    VirtualPtzSettings settings = square();
    settings.panoramaHorizontalFieldOfView = 360.0;
    settings.useStrictBorderMode = true;
    settings.fieldOfView = 60.0;
    // The middle of the upper border is 30 degrees above the view's: 5 below the panorama's lower edge.
    settings.tilt = -80.0;
    VirtualPtzSettings adjusted = adjustedToBorder(settings);
    EXPECT_NEAR(adjusted.tilt, -75.0, 1e-3);
    EXPECT_EQ(adjusted.pan, 0.0);
    EXPECT_EQ(adjusted.fieldOfView, 60.0);
    settings.tilt = 80.0;
    EXPECT_NEAR(adjustedToBorder(settings).tilt, 75.0, 1e-3);
    // The upper corners see tilt -43.25, so in the middle between least and most the border is 1.63 below.
    settings.tilt = -80.0;
    settings.useStrictBorderMode = false;
    adjusted = adjustedToBorder(settings);
    EXPECT_NEAR(adjusted.tilt, -80.0 + (5.0 - 1.75) / 2.0, 0.01);
}

TEST(BorderAdjustment, narrowsAViewThatIsTooHigh) {
    VirtualPtzSettings settings = square();
    settings.panoramaHorizontalFieldOfView = 360.0;
    settings.panoramaVerticalFieldOfView = 40.0;
    settings.cameraRoll = 180.0;
    settings.useStrictBorderMode = true;
    settings.fieldOfView = 60.0;
    // Upside down the upper border's middle is at -30, 10 below the lower edge; the lower one's 10 above the
    // upper. Both cannot be had, so the view loses 20 degrees; what the one gives, the other takes.
    const VirtualPtzSettings adjusted = adjustedToBorder(settings);
    EXPECT_NEAR(adjusted.fieldOfView, 40.0, 1e-3);
    EXPECT_NEAR(adjusted.tilt, -10.0, 1e-3);
    settings.panoramaVerticalFieldOfView = 1.0;
    settings.fieldOfView = 30.0;
    EXPECT_EQ(adjustedToBorder(settings).fieldOfView, 5.0) << "never narrower than that";
}

TEST(BorderAdjustment, doesNothingWithoutEffect) {
    VirtualPtzSettings settings = square();
    settings.effectLevel = 0.0;
    settings.cameraRoll = 180.0;
    settings.panoramaVerticalFieldOfView = 10.0;
    for (const double pan : {-170.0, 0.0, 170.0}) {
        for (const double tilt : {-85.0, 85.0}) {
            settings.pan = pan;
            settings.tilt = tilt;
            const VirtualPtzSettings adjusted = adjustedToBorder(settings);
            EXPECT_EQ(adjusted.pan, pan);
            EXPECT_EQ(adjusted.tilt, tilt);
            EXPECT_EQ(adjusted.fieldOfView, 90.0);
        }
    }
}

TEST(BorderAdjustment, staysInTheRangeOfSinglePrecision) {
    VirtualPtzSettings settings = square();
    settings.panoramaHorizontalFieldOfView = -3.4e38;
    settings.pan = 3.3e38;
    const VirtualPtzSettings adjusted = adjustedToBorder(settings);
    EXPECT_EQ(adjusted.pan, 3.3e38);
    EXPECT_EQ(adjusted.tilt, 0.0);
}

/// How often each of the ways was taken.
struct Branches {
    int compared = 0;
    int tooClose = 0;
    int panUp = 0;
    int panDown = 0;
    int tiltUp = 0;
    int tiltDown = 0;
    int narrowed = 0;
};

void compare(const VirtualPtzSettings& settings, Branches& branches) {
    const model::Adjustment expected = model::CAdjuster(settings).run();
    if (expected.isTooClose) {
        ++branches.tooClose;
        return;
    }
    const VirtualPtzSettings actual = adjustedToBorder(settings);
    const auto where = [&] {
        return testing::Message() << "pan " << settings.pan << " tilt " << settings.tilt << " field of view "
                                  << settings.fieldOfView << " pitch " << settings.cameraPitch << " roll "
                                  << settings.cameraRoll << " level " << settings.effectLevel;
    };
    // The steepest of the angles compared is told to a fiftieth of the best precision.
    ASSERT_NEAR(actual.pan, expected.pan, 5e-3) << where();
    ASSERT_NEAR(actual.tilt, expected.tilt, 5e-3) << where();
    ASSERT_NEAR(actual.fieldOfView, expected.fieldOfView, 5e-3) << where();
    ++branches.compared;
    branches.panUp += expected.pan > settings.pan;
    branches.panDown += expected.pan < settings.pan;
    branches.tiltUp += expected.tilt > settings.tilt;
    branches.tiltDown += expected.tilt < settings.tilt;
    branches.narrowed += expected.fieldOfView < settings.fieldOfView;
}

TEST(BorderAdjustment, agreesWithTheModelOverADenseGrid) {
    Branches branches;
    VirtualPtzSettings s;
    for (const double level : {1.0, 0.4}) {
        s.effectLevel = level;
        for (const bool isStrict : {false, true}) {
            s.useStrictBorderMode = isStrict;
            for (const double pitch : {0.0, 20.0, -35.0}) {
                s.cameraPitch = pitch;
                for (const double roll : {0.0, 8.0, -100.0, 180.0}) {
                    s.cameraRoll = roll;
                    for (double pan = -151.0; pan < 180.0; pan += 37.0) {
                        s.pan = pan;
                        for (double tilt = -80.0; tilt <= 80.0; tilt += 20.0) {
                            s.tilt = tilt;
                            for (const double fieldOfView : {5.0, 31.0, 60.0, 95.0, 120.0}) {
                                s.fieldOfView = fieldOfView;
                                for (const int shape : {0, 1, 2}) {
                                    s.outputAspect = shape == 0 ? 0.8F : 16.0F / 9.0F;
                                    s.panoramaHorizontalFieldOfView = shape == 2 ? 90.0 : 180.0;
                                    s.panoramaVerticalFieldOfView = shape == 2 ? 25.0 : 80.0;
                                    compare(s, branches);
                                    if (HasFatalFailure())
                                        return;
                                }
                            }
                        }
                    }
                }
            }
        }
    }
    EXPECT_GT(branches.compared, 50000);
    EXPECT_LT(branches.tooClose, branches.compared / 20);
    EXPECT_GT(branches.panUp, 2000);
    EXPECT_GT(branches.panDown, 2000);
    EXPECT_GT(branches.tiltUp, 2000);
    EXPECT_GT(branches.tiltDown, 2000);
    EXPECT_GT(branches.narrowed, 2000);
}

TEST(BorderAdjustment, bringsAStrictLevelViewThatFitsInside) {
    int drawnBack = 0;
    VirtualPtzSettings s;
    s.useStrictBorderMode = true;
    for (const float aspect : {1.0F, 4.0F / 3.0F, 16.0F / 9.0F}) {
        s.outputAspect = aspect;
        for (const double panorama : {120.0, 180.0, 220.0}) {
            s.panoramaHorizontalFieldOfView = panorama;
            for (double fieldOfView = 10.0; fieldOfView <= 70.0; fieldOfView += 6.0) {
                s.fieldOfView = fieldOfView;
                for (double tilt = -20.0; tilt <= 20.0; tilt += 5.0) {
                    s.tilt = tilt;
                    s.pan = 0.0;
                    // The widest row decides: by symmetry its right end.
                    double halfWidth = 0.0;
                    for (const double y : {0.0, 0.5, 1.0})
                        halfWidth = std::max(halfWidth, model::map(s, 1.0, y, true).pan);
                    ASSERT_LT(halfWidth, panorama / 2.0) << "it fits";
                    // As far as no point of it passes the panorama's back.
                    const double furthest = 179.0 - halfWidth;
                    for (double pan = -furthest; pan <= furthest; pan += furthest / 4.0) {
                        s.pan = pan;
                        const VirtualPtzSettings adjusted = adjustedToBorder(s);
                        ASSERT_EQ(adjusted.tilt, tilt);
                        ASSERT_EQ(adjusted.fieldOfView, fieldOfView);
                        drawnBack += adjusted.pan != pan;
                        for (const double y : {0.0, 0.5, 1.0}) {
                            ASSERT_GE(model::map(adjusted, 0.0, y, true).pan, -panorama / 2.0 - 1e-3);
                            ASSERT_LE(model::map(adjusted, 1.0, y, true).pan, panorama / 2.0 + 1e-3);
                        }
                    }
                }
            }
        }
    }
    EXPECT_GT(drawnBack, 2000);
}

} // namespace
} // namespace tarvo::custom
