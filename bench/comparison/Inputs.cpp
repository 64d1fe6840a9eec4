#include "bench/comparison/Inputs.h"

#include "bench/comparison/Pictures.h"
#include "scene/Render.h"

#include <algorithm>
#include <cmath>

namespace tarvo::bench {
namespace {

// One ray a pixel: the room's textures have no finer features than the pixels of these pictures.
constexpr scene::RenderOptions drawing{.samplesPerSide = 1};

constexpr double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

/// Whether a camera on the ceiling sees that direction: the lens does, and above and below the picture has
/// not ended before.
bool isInPicture(const scene::Vector& direction, double maxAngle) {
    const double aside = std::hypot(direction.x, direction.y);
    const double angle = std::atan2(aside, -direction.z);
    const double rows = angle * static_cast<double>(equidistantLens.c) * std::abs(direction.y) / aside;
    return angle <= maxAngle && rows <= 0.5;
}

} // namespace

CInputs::CInputs(const Work& work)
    : m_mounting(work.mounting),
      m_format(host::makeVideoFormat(work.isRgb32 ? host::FramePixels::rgb32 : host::FramePixels::yv12,
                                     work.inputWidth, work.isRgb32 ? -work.inputHeight : work.inputHeight,
                                     400'000)) {
    const scene::CRoom room;
    for (int number = 0; number < count; ++number) {
        const render::Picture picture =
            scene::renderFisheye(room, camera(number), work.inputWidth, work.inputHeight, drawing);
        m_buffers[index(number)] =
            host::CMediaBuffer::holding(work.isRgb32 ? rgb32Frame(picture) : yv12Frame(picture));
    }
}

std::uint8_t* CInputs::bytes(int number) const {
    BYTE* data = nullptr;
    m_buffers[index(number)]->GetBufferAndLength(&data, nullptr);
    return data;
}

scene::FisheyeCamera CInputs::camera(int number) const {
    scene::FisheyeCamera camera = scene::defaultCamera(m_mounting);
    camera.lens = equidistantLens;
    camera.position.x += index(number) == 0 ? 0.0 : 0.9;
    return camera;
}

render::Picture CInputs::expected(const Work& work, int number) const {
    const scene::CRoom room;
    const scene::Vector position = camera(number).position;
    if (isPanorama(work)) {
        // A camera on the ceiling sees the horizon at the strip's upper edge.
        const scene::PanoramaStrip strip{position, -panoramaWidthDegrees / 2.0, panoramaWidthDegrees, 0.0,
                                         -panoramaHeightDegrees};
        return scene::renderStrip(room, strip, work.outputWidth, work.outputHeight, drawing);
    }
    render::Picture whole(work.outputWidth, work.outputHeight);
    int x = 0;
    int y = 0;
    Work shown = work;
    shown.panDegrees += work.isMoving ? sweepDegrees(number) : 0.0;
    for (const View& view : viewsOf(shown)) {
        paste(scene::renderPerspective(
                  room, {position, view.panDegrees, view.tiltDegrees, view.tanHalfWidth, view.tanHalfHeight},
                  view.width, view.height, drawing),
              x, y, whole);
        x += view.width;
        if (x == work.outputWidth) {
            x = 0;
            y += view.height;
        }
    }
    return whole;
}

render::Picture CInputs::expectedCylinder(const Work& work, int number) const {
    const scene::CRoom room;
    const double tilt = radians(-panoramaHeightDegrees / 2.0);
    const double tanHalfHeight = std::tan(radians(panoramaHeightDegrees / 2.0));
    const double maxAngle = radians(camera(number).maxAngleDegrees);
    const auto ray = [=](double u, double v) -> std::optional<scene::Vector> {
        const double azimuth = radians((u - 0.5) * panoramaWidthDegrees);
        // Ahead and up as the tilted cylinder has them; east stays.
        const double ahead = std::cos(azimuth);
        const double up = (1.0 - 2.0 * v) * tanHalfHeight;
        const scene::Vector direction{std::sin(azimuth), ahead * std::cos(tilt) - up * std::sin(tilt),
                                      ahead * std::sin(tilt) + up * std::cos(tilt)};
        return isInPicture(direction, maxAngle) ? std::optional(direction) : std::nullopt;
    };
    return scene::renderRays(room, camera(number).position, work.outputWidth, work.outputHeight, ray,
                             drawing);
}

} // namespace tarvo::bench
