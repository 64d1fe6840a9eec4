#include "geometry/Enumerations.h"
#include "render/reference/ReferenceRenderer.h"
#include "scene/Render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>

// The dewarped views of a room's fisheye pictures against pictures of the same room that no lens ever bent.
// The room is ray-cast by code of its own, so nothing of the projection stands on both sides.

namespace tarvo::render::reference {
namespace {

using geometry::CViewState;
using geometry::TiltOrientation;
using geometry::ViewType;

constexpr TiltOrientation mountings[] = {TiltOrientation::wall, TiltOrientation::ceiling,
                                         TiltOrientation::desk};
constexpr int inputWidth = 1728;
constexpr int inputHeight = 1296;
/// Decibels that every view reaches and that an error of half an output pixel takes away.
constexpr double bound = 36.0;

struct Shift {
    double x = 0.0;
    double y = 0.0;
};

constexpr Shift halfPixelShifts[] = {{0.5, 0.0}, {0.0, 0.5}};

/// A picture of the room through rays that are moved by a part of an output pixel.
Picture truthOf(const scene::CRoom& room, const scene::Vector& position, int width, int height, Shift shift,
                const scene::RayField& rays) {
    const auto moved = [&](double u, double v) { return rays(u + shift.x / width, v + shift.y / height); };
    return scene::renderRays(room, position, width, height, moved, {2, 0});
}

/// Rays of a rectilinear view: the half width and height are tangents.
scene::RayField perspective(double panDegrees, double tiltDegrees, double halfWidth, double halfHeight) {
    const double p = panDegrees * std::numbers::pi / 180.0;
    const double t = tiltDegrees * std::numbers::pi / 180.0;
    return [=](double u, double v) -> std::optional<scene::Vector> {
        const double right = (2.0 * u - 1.0) * halfWidth;
        const double up = (1.0 - 2.0 * v) * halfHeight;
        const double level = std::cos(t) - up * std::sin(t);
        return scene::Vector{right * std::cos(p) + level * std::sin(p),
                             level * std::cos(p) - right * std::sin(p), std::sin(t) + up * std::cos(t)};
    };
}

/// Rays of a strip whose columns are azimuths and whose rows are elevations.
scene::RayField strip(double panStart, double panWidth, double top, double bottom) {
    return [=](double u, double v) -> std::optional<scene::Vector> {
        return scene::direction(panStart + u * panWidth, top + v * (bottom - top));
    };
}

struct Place {
    int left;
    int top;
    int width;
    int height;
};

double decibels(const Picture& view, const Place& place, const Picture& truth) {
    double sum = 0.0;
    for (int y = 0; y < place.height; ++y) {
        for (int x = 0; x < place.width; ++x) {
            const Bgra& seen = view.at(place.left + x, place.top + y);
            const Bgra& real = truth.at(x, y);
            for (const double difference :
                 {seen.red - real.red + 0.0, seen.green - real.green + 0.0, seen.blue - real.blue + 0.0}) {
                sum += difference * difference;
            }
        }
    }
    return 10.0 * std::log10(255.0 * 255.0 * 3.0 * place.width * place.height / sum);
}

/// A part of the rendered output is what the rays see, and clearly not what they see half a pixel aside.
void expectTruth(const Picture& view, const Place& place, const scene::FisheyeCamera& camera,
                 const scene::RayField& rays) {
    const scene::CRoom room;
    const double faultless =
        decibels(view, place, truthOf(room, camera.position, place.width, place.height, {}, rays));
    EXPECT_GT(faultless, bound);
    double shifted = 0.0;
    for (const Shift shift : halfPixelShifts) {
        const Picture aside = truthOf(room, camera.position, place.width, place.height, shift, rays);
        shifted = std::max(shifted, decibels(view, place, aside));
    }
    EXPECT_LT(shifted, bound);
    std::printf("    %.1f dB, half a pixel aside %.1f dB\n", faultless, shifted);
}

class SceneTruth : public testing::TestWithParam<TiltOrientation> {
protected:
    SceneTruth() : m_camera(scene::defaultCamera(GetParam())) {
        m_camera.lens = geometry::LensProfile{-0.01F, 0.005F, 0.31F};
        m_input = scene::renderFisheye(scene::CRoom(), m_camera, inputWidth, inputHeight, {2, 0});
    }

    CViewState viewOf(ViewType viewType, int width, int height) const {
        CViewState view;
        view.setLensProfile(m_camera.lens);
        view.setTiltOrientation(GetParam());
        view.setViewType(viewType);
        view.setInputSize(inputWidth, inputHeight);
        view.setOutputSize(width, height);
        return view;
    }

    scene::FisheyeCamera m_camera;
    Picture m_input;
};

TEST_P(SceneTruth, singleViewIsThePerspectivePicture) {
    struct Aim {
        double pan;
        double tilt;
        double fieldOfView;
    };
    const double down = GetParam() == TiltOrientation::desk ? 1.0 : -1.0;
    const Aim aims[] = {{0.0, 50.0 * down, 28.0}, {-35.0, 25.0 * down, 22.0}, {30.0, 40.0 * down, 36.0}};
    for (const Aim& aim : aims) {
        SCOPED_TRACE(testing::Message() << aim.pan << ' ' << aim.tilt << ' ' << aim.fieldOfView);
        CViewState view = viewOf(ViewType::single, 320, 200);
        view.setPtzPosition(aim.pan, aim.tilt, aim.fieldOfView, false);
        // The projection is as wide as the input's aspect asks; the output crops its height.
        const double halfWidth = 4.0 / 3.0 * std::tan(aim.fieldOfView * std::numbers::pi / 180.0);
        expectTruth(renderView(view, m_input), {0, 0, 320, 200}, m_camera,
                    perspective(aim.pan, aim.tilt, halfWidth, halfWidth * 200.0 / 320.0));
    }
}

TEST_P(SceneTruth, quadShowsItsDirections) {
    CViewState view = viewOf(ViewType::quad, 480, 360);
    const bool isWall = GetParam() == TiltOrientation::wall;
    const double tilt = isWall ? -10.0 : (GetParam() == TiltOrientation::desk ? 45.0 : -45.0);
    // Half as wide as the picture a sub-view spans the projection's width; the high halves of a wall camera
    // see 4/3 · 360 / 240 times as far up and down.
    const double fieldOfView = isWall ? 16.0 : 26.0;
    view.setPtzPosition(0.0, tilt, fieldOfView, false);
    const Picture output = renderView(view, m_input);
    const double halfWidth = 4.0 / 3.0 * std::tan(fieldOfView * std::numbers::pi / 180.0);
    const int height = isWall ? 360 : 180;
    const double pans[] = {-45.0, 45.0, 135.0, 225.0};
    for (int i = 0; i < (isWall ? 2 : 4); ++i) {
        SCOPED_TRACE(i);
        expectTruth(output, {i % 2 * 240, i / 2 * 180, 240, height}, m_camera,
                    perspective(pans[i], tilt, halfWidth, halfWidth * height / 240.0));
    }
}

TEST_P(SceneTruth, panoramasAreLinearInAzimuthAndElevation) {
    CViewState single = viewOf(ViewType::panoramaSingle, 640, 224);
    single.setPanoramaFieldOfView(170.0);
    single.setPanoramaPanOffset(-85.0);
    const double high = 170.0 * 224.0 / 640.0; // 59.5 degrees
    const double top = GetParam() == TiltOrientation::wall   ? high / 2.0
                       : GetParam() == TiltOrientation::desk ? high
                                                             : 0.0;
    expectTruth(renderView(single, m_input), {0, 0, 640, 224}, m_camera,
                strip(-85.0, 170.0, top, top - high));

    // So many pixels that the wall's narrowed strip does not skip any of the input's.
    const int scale = GetParam() == TiltOrientation::wall ? 2 : 1;
    CViewState stacked = viewOf(ViewType::panoramaDouble, 640 * scale, 448 * scale);
    stacked.setPanoramaFieldOfView(170.0);
    stacked.setPanoramaPanOffset(-85.0);
    const Picture output = renderView(stacked, m_input);
    if (GetParam() == TiltOrientation::wall) {
        // 170 · 7 / 10 = 119 degrees are more than the cap of 100: f = 100 / 119, two strips would be 2f
        // = 1.68 of the height, so the strip is narrowed to 1 / 1.68 of the width, in the upper half.
        const double left = 640.0 - 640.0 * 119.0 / 200.0;
        const Place inside{260, 0, 760, 448};
        const double perPixel = 170.0 / (1280.0 * 119.0 / 200.0);
        expectTruth(output, inside, m_camera,
                    strip(-85.0 + (inside.left - left) * perPixel, inside.width * perPixel, 50.0, -50.0));
        return;
    }
    // The cap of 67.5 degrees: f = 67.5 / 119, both strips are 2f = 1.134 of the height, so narrowed.
    const double left = 320.0 - 320.0 * 119.0 / 135.0;
    const Place upper{38, 0, 564, 224};
    const double perPixel = 170.0 / (640.0 * 119.0 / 135.0);
    const double ceiling = GetParam() == TiltOrientation::desk ? 67.5 : 0.0;
    const auto rays = [&](double panStart) {
        return strip(panStart + (upper.left - left) * perPixel, upper.width * perPixel, ceiling,
                     ceiling - 67.5);
    };
    expectTruth(output, upper, m_camera, rays(-85.0));
    expectTruth(output, {upper.left, 224, upper.width, 224}, m_camera, rays(85.0));
}

INSTANTIATE_TEST_SUITE_P(Mountings, SceneTruth, testing::ValuesIn(mountings), [](const auto& tested) {
    return tested.param == TiltOrientation::wall      ? "wall"
           : tested.param == TiltOrientation::ceiling ? "ceiling"
                                                      : "desk";
});

} // namespace
} // namespace tarvo::render::reference
