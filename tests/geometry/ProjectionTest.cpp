#include "geometry/Projection.h"

#include "geometry/DewarpParameters.h"
#include "geometry/PanoramaRectangle.h"
#include "tests/geometry/TrueCamera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace tarvo::geometry {
namespace {

using tests::ImagePoint;
using tests::toRadians;
using tests::Vector;

constexpr int width = 1600;
constexpr int height = 1200;
constexpr TiltOrientation mountings[] = {TiltOrientation::wall, TiltOrientation::ceiling,
                                         TiltOrientation::desk};

/// Constants are stored in single precision; their rounding moves a point by less than this many pixels.
constexpr double constantsRounding = 2e-3;
/// The programs' own arithmetic in single precision: its arc cosine is ill-conditioned near the lens axis.
constexpr double singlePrecision = 0.3;
/// Away from the axis nothing is left but the rounding of single precision.
constexpr double singlePrecisionOffAxis = 0.02;
constexpr double nearAxisPixels = 100.0; // some 13 degrees

struct View {
    float pan;
    float tilt;
    float fieldOfView;
};

std::vector<View> viewsOf(TiltOrientation orientation) {
    if (orientation == TiltOrientation::wall) {
        return {{0, 0, 36}, {-45, 20, 25}, {70, -30, 40}, {0, 60, 10}, {-90, -90, 5}};
    }
    const float sign = orientation == TiltOrientation::ceiling ? -1.0F : 1.0F;
    return {
        {0, sign * 28, 29}, {135, sign * 50, 40}, {-100, sign * 5, 12}, {180, sign * 90, 45}, {30, 0, 20}};
}

CDewarpParameters parametersOf(TiltOrientation orientation, const View& view) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(width, height, defaultLensProfile);
    parameters.setOutputAspect(4.0 / 3.0);
    parameters.setTiltOrientation(orientation);
    parameters.setPanTiltFieldOfView(view.pan, view.tilt, view.fieldOfView);
    return parameters;
}

ImagePoint inPixels(ImagePoint image) {
    return {width * 0.5 + image.x * height, height * 0.5 + image.y * height};
}

/// Where a camera of this mounting pictures a direction.
ImagePoint pixelOf(TiltOrientation orientation, const Vector& ray) {
    return inPixels(tests::Mounting::of(orientation).image(defaultLensProfile, ray));
}

template<typename Real>
void expectNear(InputPosition<Real> seen, ImagePoint expected, double tolerance) {
    EXPECT_NEAR(static_cast<double>(seen.x), expected.x, tolerance);
    EXPECT_NEAR(static_cast<double>(seen.y), expected.y, tolerance);
}

TEST(Projection, singleViewSeesWhatTheVectorsSay) {
    for (const auto orientation : mountings) {
        for (const View& view : viewsOf(orientation)) {
            const CDewarpParameters parameters = parametersOf(orientation, view);
            const double tangent = std::tan(toRadians(static_cast<double>(view.fieldOfView)));
            for (const double u : {0.0, 0.21, 0.5, 0.83, 1.0}) {
                for (const double v : {0.0, 0.37, 0.5, 0.9, 1.0}) {
                    SCOPED_TRACE(testing::Message() << static_cast<int>(orientation) << " pan " << view.pan
                                                    << " tilt " << view.tilt << " at " << u << ' ' << v);
                    const Vector ray =
                        tests::viewRay(static_cast<double>(view.pan), static_cast<double>(view.tilt),
                                       (2.0 * u - 1.0) * 4.0 / 3.0 * tangent, (1.0 - 2.0 * v) * tangent);
                    const ImagePoint expected = pixelOf(orientation, ray);
                    expectNear(projectSingleView(parameters.constants(), u, v), expected, constantsRounding);
                    expectNear(projectSingleView(parameters.constants(), static_cast<float>(u),
                                                 static_cast<float>(v)),
                               expected,
                               std::hypot(expected.x - width / 2, expected.y - height / 2) > nearAxisPixels
                                   ? singlePrecisionOffAxis
                                   : singlePrecision);
                }
            }
        }
    }
}

TEST(Projection, centreOfTheViewSamplesPanAndTilt) {
    for (const auto orientation : mountings) {
        for (const View& view : viewsOf(orientation)) {
            const CDewarpParameters parameters = parametersOf(orientation, view);
            const Vector direction =
                tests::lookingAt(static_cast<double>(view.pan), static_cast<double>(view.tilt));
            expectNear(projectSingleView(parameters.constants(), 0.5F, 0.5F), pixelOf(orientation, direction),
                       singlePrecision);
        }
    }
}

TEST(Projection, ceilingLookingStraightDownIsCentred) {
    const CDewarpParameters parameters = parametersOf(TiltOrientation::ceiling, {0, -90, 30});
    const auto centre = projectSingleView(parameters.constants(), 0.5F, 0.5F);
    EXPECT_EQ(centre.x, 800.0F);
    EXPECT_EQ(centre.y, 600.0F);
}

TEST(Projection, noEffectShowsTheFisheyePictureItself) {
    // Level 0 on a ceiling at pan 0: the linear lens maps the view's edge to half the height, so what is seen
    // at angle θ off the view's centre lies at radius 0.5 · θ / k of the picture, straight in its own
    // direction.
    CDewarpParameters parameters = parametersOf(TiltOrientation::ceiling, {0, -30, 30});
    parameters.setEffectLevel(0.0F);
    const double edge = std::atan(std::tan(toRadians(30.0)));
    for (const double u : {0.1, 0.5, 0.7}) {
        const double theta = std::atan(std::fabs(2.0 * u - 1.0) * 4.0 / 3.0 * std::tan(toRadians(30.0)));
        const double radius = 0.5 * theta / edge * height * (u < 0.5 ? -1.0 : 1.0);
        expectNear(projectSingleView(parameters.constants(), u, 0.5), {width * 0.5 + radius, height * 0.5},
                   constantsRounding);
    }
}

TEST(Projection, sidesOfTheInputAreTested) {
    const DewarpConstants constants = parametersOf(TiltOrientation::wall, {0, 0, 36}).constants();
    EXPECT_TRUE(isInsideInput(constants, InputPosition<float>{0.0F, 0.0F}));
    EXPECT_TRUE(isInsideInput(constants, InputPosition<float>{1599.9F, 1199.9F}));
    EXPECT_FALSE(isInsideInput(constants, InputPosition<float>{1600.0F, 5.0F}));
    EXPECT_FALSE(isInsideInput(constants, InputPosition<float>{5.0F, 1200.0F}));
    EXPECT_FALSE(isInsideInput(constants, InputPosition<float>{-0.01F, 5.0F}));
    EXPECT_FALSE(isInsideInput(constants, InputPosition<float>{5.0F, -0.01F}));
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(isInsideInput(constants, InputPosition<float>{none, 5.0F}));
    EXPECT_FALSE(isInsideInput(constants, InputPosition<float>{5.0F, none}));
}

TEST(Projection, neverGivesWhatIsNoNumber) {
    for (const auto orientation : mountings) {
        for (const View& view : viewsOf(orientation)) {
            const DewarpConstants constants = parametersOf(orientation, view).constants();
            // 63 columns and 47 rows: the centre falls on a pixel, its separation is exactly 0.
            for (int y = 0; y < 47; ++y) {
                for (int x = 0; x < 63; ++x) {
                    const auto u = (static_cast<float>(x) + 0.5F) / 63.0F;
                    const auto v = (static_cast<float>(y) + 0.5F) / 47.0F;
                    const auto position = projectSingleView(constants, u, v);
                    ASSERT_TRUE(std::isfinite(position.x) && std::isfinite(position.y)) << u << ' ' << v;
                }
            }
        }
    }
}

TEST(Projection, arcCosineOfAHairMoreThanOneIsTheAxis) {
    // Rays within rounding of the lens axis: there the rotated z comes out a hair above 1 now and then.
    for (const float tilt : {-89.0F, -86.0F, -80.0F, -69.0F, -60.0F}) {
        const DewarpConstants constants = parametersOf(TiltOrientation::ceiling, {0, tilt, 45}).constants();
        const double below =
            std::tan(toRadians(90.0 + static_cast<double>(tilt))) / std::tan(toRadians(45.0));
        auto v = static_cast<float>(0.5 + 0.5 * below);
        for (int i = 0; i < 300; ++i) {
            v = std::nextafter(v, 0.0F);
        }
        for (int i = 0; i < 600; ++i) {
            v = std::nextafter(v, 1.0F);
            const auto position = projectSingleView(constants, 0.5F, v);
            ASSERT_NEAR(position.x, 800.0F, 0.5F) << tilt << ' ' << v;
            ASSERT_NEAR(position.y, 600.0F, 0.5F) << tilt << ' ' << v;
        }
    }
}

TEST(Projection, programsTakeTheCosineFromTheSine) {
    // Beyond a right angle that cosine is the mirror's: 2 radians turn the view as π − 2 do.
    DewarpConstants constants = parametersOf(TiltOrientation::wall, {0, 0, 36}).constants();
    constants.rotateData[1] = 2.0F;
    const auto beyond = projectSingleView(constants, 0.3, 0.6);
    const ForwardProjection forward = projectForward(constants, -0.4, -0.2);
    constants.rotateData[1] = static_cast<float>(3.14159265358979 - 2.0);
    const auto mirror = projectSingleView(constants, 0.3, 0.6);
    EXPECT_NEAR(beyond.x, mirror.x, 1e-3);
    EXPECT_NEAR(beyond.y, mirror.y, 1e-3);
    // The forward projection of the same point takes the true cosine: 2 radians are a pan of 114.59 degrees.
    const double tangent = std::tan(toRadians(36.0));
    const Vector ray =
        tests::viewRay(2.0 * 180.0 / 3.14159265358979, 0.0, -0.4 * 4.0 / 3.0 * tangent, -0.2 * tangent);
    const ImagePoint image = tests::Mounting::of(TiltOrientation::wall).image(defaultLensProfile, ray);
    EXPECT_NEAR(forward.offsetX, image.x * height, constantsRounding);
    EXPECT_NEAR(forward.offsetY, image.y * height, constantsRounding);
}

TEST(Projection, panoramasAreLinearInAzimuthAndElevation) {
    struct Case {
        TiltOrientation orientation;
        InputPosition<double> (*project)(const DewarpConstants&, double, double);
        double firstRow; // v of the strip's top and bottom
        double lastRow;
        double top; // elevation there, degrees
        double bottom;
    };
    constexpr double panOffset = -80.0;
    constexpr double panoramaWidth = 150.0;
    constexpr double panoramaHeight = 60.0;
    const Case cases[] = {
        {TiltOrientation::wall, projectPanoramaWall<double>, 0.0, 1.0, 30.0, -30.0},
        {TiltOrientation::ceiling, projectPanoramaCeiling<double>, 0.0, 0.5, 0.0, -60.0},
        {TiltOrientation::desk, projectPanoramaDesk<double>, 0.0, 0.5, 60.0, 0.0},
    };
    for (const Case& c : cases) {
        CDewarpParameters parameters = parametersOf(c.orientation, {0, 0, 30});
        parameters.selectPanoramaMode(panoramaMode(ViewType::panoramaSingle, c.orientation));
        parameters.setPanoramaRectangle({panoramaWidth, panoramaHeight, panOffset, 0.0});
        for (const double across : {0.0, 0.3, 0.5, 1.0}) {
            for (const double down : {0.01, 0.4, 0.99}) {
                const Vector ray =
                    tests::lookingAt(panOffset + across * panoramaWidth, c.top + down * (c.bottom - c.top));
                const double v = c.firstRow + down * (c.lastRow - c.firstRow);
                SCOPED_TRACE(testing::Message()
                             << static_cast<int>(c.orientation) << ' ' << across << ' ' << v);
                expectNear(c.project(parameters.constants(), across, v), pixelOf(c.orientation, ray),
                           constantsRounding);
            }
        }
    }
}

TEST(Projection, lowerStripGoesOnWhereTheUpperEnds) {
    for (const auto orientation : {TiltOrientation::ceiling, TiltOrientation::desk}) {
        CDewarpParameters parameters = parametersOf(orientation, {0, 0, 30});
        parameters.selectPanoramaMode(panoramaMode(ViewType::panoramaDouble, orientation));
        parameters.setPanoramaRectangle({170.0, 60.0, -90.0, 0.0});
        const auto project = orientation == TiltOrientation::ceiling ? projectPanoramaCeiling<double>
                                                                     : projectPanoramaDesk<double>;
        for (const double down : {0.2, 0.8}) {
            const double elevation =
                orientation == TiltOrientation::ceiling ? -60.0 * down : 60.0 * (1.0 - down);
            for (const double across : {0.0, 0.6, 1.0}) {
                const Vector upper = tests::lookingAt(-90.0 + 170.0 * across, elevation);
                const Vector lower = tests::lookingAt(-90.0 + 170.0 * (1.0 + across), elevation);
                expectNear(project(parameters.constants(), across, 0.5 * down), pixelOf(orientation, upper),
                           constantsRounding);
                expectNear(project(parameters.constants(), across, 0.5 + 0.5 * down),
                           pixelOf(orientation, lower), constantsRounding);
            }
        }
    }
}

TEST(Projection, middleRowBelongsToTheUpperStrip) {
    CDewarpParameters parameters = parametersOf(TiltOrientation::ceiling, {0, 0, 30});
    parameters.selectPanoramaMode(PanoramaMode::ceiling);
    parameters.setPanoramaRectangle({180.0, 60.0, -90.0, 0.0});
    expectNear(projectPanoramaCeiling(parameters.constants(), 0.25, 0.5),
               pixelOf(TiltOrientation::ceiling, tests::lookingAt(-45.0, -60.0)), constantsRounding);
}

TEST(Projection, wallPanoramaGoesOnBehindTheWall) {
    CDewarpParameters parameters = parametersOf(TiltOrientation::wall, {0, 0, 30});
    parameters.selectPanoramaMode(PanoramaMode::wall);
    parameters.setPanoramaRectangle({220.0, 60.0, -110.0, 0.0});
    expectNear(projectPanoramaWall(parameters.constants(), 0.0, 0.5),
               pixelOf(TiltOrientation::wall, tests::lookingAt(-110.0, 0.0)), constantsRounding);
}

TEST(ForwardProjection, agreesWithTheVectors) {
    for (const auto orientation : mountings) {
        for (const View& view : viewsOf(orientation)) {
            const DewarpConstants constants = parametersOf(orientation, view).constants();
            const double tangent = std::tan(toRadians(static_cast<double>(view.fieldOfView)));
            for (const double x : {-1.0, -0.2, 0.7}) {
                for (const double y : {-0.8, 0.3, 1.0}) {
                    const Vector ray =
                        tests::viewRay(static_cast<double>(view.pan), static_cast<double>(view.tilt),
                                       x * 4.0 / 3.0 * tangent, y * tangent);
                    const ImagePoint image = tests::Mounting::of(orientation).image(defaultLensProfile, ray);
                    const ForwardProjection seen = projectForward(constants, x, y);
                    EXPECT_NEAR(seen.offsetX, image.x * height, constantsRounding);
                    EXPECT_NEAR(seen.offsetY, image.y * height, constantsRounding);
                    EXPECT_NEAR(seen.x, 2.0 * image.x, 1e-5); // half heights: the smaller half side of 4:3
                    EXPECT_NEAR(seen.y, 2.0 * image.y, 1e-5);
                    const double radius = 2.0 * std::hypot(image.x, image.y);
                    EXPECT_NEAR(seen.radiusRatio, radius, 1e-5);
                    EXPECT_EQ(seen.isOutside, radius >= 1.0);
                }
            }
        }
    }
}

TEST(ForwardProjection, highPicturesScaleTheirVerticalByTheAspect) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(600, 1200, {0.0F, 0.0F, 0.25F});
    parameters.setTiltOrientation(TiltOrientation::wall);
    parameters.setPanTiltFieldOfView(0.0F, 0.0F, 30.0F);
    // One view edge up: 30 degrees, radius 0.25 · π/6 · 1200 = 157.08 pixels.
    const ForwardProjection up = projectForward(parameters.constants(), 0.0, 1.0);
    EXPECT_NEAR(up.y, -157.0796 / 600.0 * 0.5, 1e-5);
    EXPECT_NEAR(up.x, 0.0, 1e-6);
    // One view edge to the right: tan θ = 0.5 · tan 30°, θ = 16.102°, radius 84.31 pixels.
    const ForwardProjection right = projectForward(parameters.constants(), 1.0, 0.0);
    EXPECT_NEAR(right.x, 84.3109 / 300.0, 1e-4);
}

TEST(Projection, aCentreOfAnOddPictureIsARealSample) {
    CDewarpParameters parameters;
    parameters.setInputGeometry(641, 481, defaultLensProfile);
    parameters.setTiltOrientation(TiltOrientation::desk);
    parameters.setPanTiltFieldOfView(0.0F, 90.0F, 30.0F);
    const auto centre = projectSingleView(parameters.constants(), 0.5F, 0.5F);
    EXPECT_EQ(centre.x, 320.5F);
    EXPECT_EQ(centre.y, 240.5F);
}

} // namespace
} // namespace tarvo::geometry
