#include "scene/Render.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

namespace tarvo::scene {
namespace {

using geometry::TiltOrientation;
using render::Picture;

constexpr Vector middle{0.0, 0.0, 1.6};
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(Render, bytesDoNotDependOnThreadsOrRuns) {
    const CRoom room(1.0);
    const FisheyeCamera camera = defaultCamera(TiltOrientation::ceiling);
    const Picture alone = renderFisheye(room, camera, 101, 77, {2, 1});
    for (const int threads : {0, 2, 5, 64, 1000}) {
        EXPECT_EQ(renderFisheye(room, camera, 101, 77, {2, threads}).pixels, alone.pixels) << threads;
    }
    EXPECT_EQ(renderFisheye(CRoom(1.0), camera, 101, 77, {2, 1}).pixels, alone.pixels);
}

TEST(Render, anySizeWorks) {
    const CRoom room;
    for (const auto& [width, height] :
         {std::pair{1, 1}, std::pair{7, 5}, std::pair{1, 9}, std::pair{16384, 1}, std::pair{1, 16384}}) {
        const FisheyeCamera camera = defaultCamera(TiltOrientation::wall);
        const std::array pictures{
            renderFisheye(room, camera, width, height, {1, 0}),
            renderPerspective(room, {middle, 0.0, 0.0, 1.0, 1.0}, width, height, {1, 0}),
            renderStrip(room, {middle, -180.0, 360.0, 20.0, -20.0}, width, height, {1, 0})};
        for (const Picture& picture : pictures) {
            EXPECT_EQ(picture.width, width);
            EXPECT_EQ(picture.height, height);
            ASSERT_EQ(picture.pixels.size(),
                      static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
            EXPECT_EQ(picture.at(width - 1, height - 1).alpha, 255);
        }
        EXPECT_NE(pictures[1].at(width - 1, height - 1), render::opaqueBlack);
        EXPECT_NE(pictures[2].at(width - 1, height - 1), render::opaqueBlack);
    }
}

TEST(Render, stripColumnsAreAzimuthsAndRowsElevations) {
    const CRoom room;
    // Centres of the columns: -45°, 45°, 135°, 225°; of the rows: 30°, 0°, -30°.
    const Picture strip = renderStrip(room, {middle, -90.0, 360.0, 45.0, -45.0}, 4, 3, {1, 1});
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            const PerspectiveView view{middle, -45.0 + 90.0 * column, 30.0 - 30.0 * row, 0.001, 0.001};
            const render::Bgra truth = renderPerspective(room, view, 1, 1, {1, 1}).at(0, 0);
            const render::Bgra seen = strip.at(column, row);
            EXPECT_LE(std::abs(seen.red - truth.red), 1);
            EXPECT_LE(std::abs(seen.green - truth.green), 1);
            EXPECT_LE(std::abs(seen.blue - truth.blue), 1);
        }
    }
}

TEST(Render, aPixelIsTheMeanOfItsSamples) {
    const CRoom room;
    const PerspectiveView view{middle, 20.0, 10.0, 1.0, 1.0};
    const Picture fine = renderPerspective(room, view, 4, 4, {1, 1});
    const Picture coarse = renderPerspective(room, view, 2, 2, {2, 1});
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 2; ++x) {
            const double mean = (fine.at(2 * x, 2 * y).green + fine.at(2 * x + 1, 2 * y).green +
                                 fine.at(2 * x, 2 * y + 1).green + fine.at(2 * x + 1, 2 * y + 1).green) /
                                4.0;
            // Each of the five values is rounded by at most one half.
            EXPECT_NEAR(coarse.at(x, y).green, mean, 1.0);
        }
    }
}

TEST(Render, raysWithoutDirectionAreBlack) {
    const auto leftHalf = [](double u, double) {
        return u < 0.5 ? std::optional<Vector>(Vector{1.0, 0.0, 0.0}) : std::nullopt;
    };
    const Picture picture = renderRays(CRoom(), middle, 4, 2, leftHalf);
    EXPECT_NE(picture.at(1, 0), render::opaqueBlack);
    EXPECT_EQ(picture.at(2, 1), render::opaqueBlack);
}

TEST(Render, passesOnWhatTheRaysThrow) {
    const auto failing = [](double, double v) -> std::optional<Vector> {
        if (v > 0.6) {
            throw std::runtime_error("no such ray");
        }
        return Vector{0.0, 1.0, 0.0};
    };
    EXPECT_THROW(renderRays(CRoom(), middle, 8, 64, failing, {1, 4}), std::runtime_error);
    const auto nowhere = [](double, double) -> std::optional<Vector> { return Vector{}; };
    EXPECT_THROW(renderRays(CRoom(), middle, 8, 8, nowhere, {1, 4}), std::invalid_argument);
    EXPECT_THROW(renderRays(CRoom(), middle, 8, 8, RayField()), std::invalid_argument);
}

TEST(Render, refusesImpossibleSizesAndOptions) {
    const CRoom room;
    const FisheyeCamera camera = defaultCamera(TiltOrientation::wall);
    for (const int side : {0, -1, 16385, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_THROW(renderFisheye(room, camera, side, 8), std::invalid_argument) << side;
        EXPECT_THROW(renderFisheye(room, camera, 8, side), std::invalid_argument) << side;
        EXPECT_THROW(renderPerspective(room, {middle}, side, 8), std::invalid_argument) << side;
        EXPECT_THROW(renderStrip(room, {middle}, 8, side), std::invalid_argument) << side;
    }
    for (const int samples : {0, -3, 17}) {
        EXPECT_THROW(renderFisheye(room, camera, 8, 8, {samples, 1}), std::invalid_argument) << samples;
    }
    EXPECT_THROW(renderFisheye(room, camera, 8, 8, {1, -1}), std::invalid_argument);
}

TEST(Render, refusesImpossibleCameras) {
    const CRoom room;
    FisheyeCamera camera = defaultCamera(TiltOrientation::wall);
    camera.position = {0.0, -3.5, 2.0};
    EXPECT_THROW(renderFisheye(room, camera, 8, 8), std::invalid_argument);
    camera.position = {nan, 0.0, 1.0};
    EXPECT_THROW(renderFisheye(room, camera, 8, 8), std::invalid_argument);
    camera = defaultCamera(TiltOrientation::wall);
    camera.orientation = static_cast<TiltOrientation>(17);
    EXPECT_THROW(renderFisheye(room, camera, 8, 8), std::invalid_argument);
    camera = defaultCamera(TiltOrientation::wall);
    camera.maxAngleDegrees = 0.0;
    EXPECT_THROW(renderFisheye(room, camera, 8, 8), std::invalid_argument);
    camera = defaultCamera(TiltOrientation::wall);
    camera.lens = {0.0F, 0.0F, -0.4F};
    EXPECT_THROW(renderFisheye(room, camera, 8, 8), std::invalid_argument);
}

TEST(Render, refusesImpossibleViews) {
    const CRoom room;
    EXPECT_THROW(renderPerspective(room, {middle, nan, 0.0, 1.0, 1.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderPerspective(room, {middle, 0.0, infinite, 1.0, 1.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderPerspective(room, {middle, 0.0, 0.0, 0.0, 1.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderPerspective(room, {middle, 0.0, 0.0, 1.0, -1.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderPerspective(room, {middle, 0.0, 0.0, 1.0, infinite}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderPerspective(room, {{0.0, 0.0, 4.0}}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderStrip(room, {middle, nan, 360.0, 10.0, -10.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderStrip(room, {middle, 0.0, infinite, 10.0, -10.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderStrip(room, {middle, 0.0, 360.0, nan, -10.0}, 8, 8), std::invalid_argument);
    EXPECT_THROW(renderStrip(room, {middle, 0.0, 360.0, 10.0, nan}, 8, 8), std::invalid_argument);
}

} // namespace
} // namespace tarvo::scene
