#include "scene/Render.h"

#include "scene/FisheyeLens.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

namespace tarvo::scene {
namespace {

void checkFinite(bool isFiniteEverywhere) {
    if (!isFiniteEverywhere) {
        throw std::invalid_argument("scene: a parameter is not a finite number");
    }
}

void checkRendering(const Vector& position, int width, int height, const RenderOptions& options) {
    if (width < 1 || width > maxPictureSide || height < 1 || height > maxPictureSide) {
        throw std::invalid_argument("scene: picture sides must lie between 1 and 16384");
    }
    if (options.samplesPerSide < 1 || options.samplesPerSide > maxSamplesPerSide) {
        throw std::invalid_argument("scene: samples per side must lie between 1 and 16");
    }
    if (options.threads < 0) {
        throw std::invalid_argument("scene: the number of threads must not be negative");
    }
    if (!CRoom::contains(position)) {
        throw std::invalid_argument("scene: the camera stands outside the room");
    }
}

std::uint8_t toByte(double value) {
    return static_cast<std::uint8_t>(std::lround(255.0 * std::clamp(value, 0.0, 1.0)));
}

/// One picture being rendered: knows how to fill a row.
struct Job {
    const CRoom& room;
    const Vector& position;
    const RayField& rays;
    int samplesPerSide;

    Colour sample(double u, double v) const {
        const std::optional<Vector> ray = rays(u, v);
        if (!ray) {
            return {};
        }
        return room.shade({position, *ray});
    }

    void fillRow(render::Picture& picture, int row) const {
        const double share = 1.0 / (samplesPerSide * samplesPerSide);
        for (int column = 0; column < picture.width; ++column) {
            Colour sum;
            for (int j = 0; j < samplesPerSide; ++j) {
                const double v = (row + (j + 0.5) / samplesPerSide) / picture.height;
                for (int i = 0; i < samplesPerSide; ++i) {
                    sum = sum + sample((column + (i + 0.5) / samplesPerSide) / picture.width, v);
                }
            }
            picture.at(column, row) = {toByte(share * sum.blue), toByte(share * sum.green),
                                       toByte(share * sum.red), 255};
        }
    }
};

int threadCount(int asked, int rows) {
    const int available = static_cast<int>(std::min(std::thread::hardware_concurrency(), 64U));
    return std::clamp(asked == 0 ? available : asked, 1, std::min(rows, 64));
}

} // namespace

render::Picture renderRays(const CRoom& room, const Vector& position, int width, int height,
                           const RayField& rays, const RenderOptions& options) {
    checkRendering(position, width, height, options);
    if (!rays) {
        throw std::invalid_argument("scene: no rays given");
    }
    render::Picture picture(width, height);
    const Job job{room, position, rays, options.samplesPerSide};

    // Rows are handed out one by one: rows through the disc's middle cost more than black ones.
    std::atomic<int> nextRow{0};
    std::mutex errorMutex;
    std::exception_ptr error;
    const auto work = [&]() noexcept {
        try {
            for (int row = nextRow++; row < height; row = nextRow++) {
                job.fillRow(picture, row);
            }
        } catch (...) {
            nextRow = height;
            const std::scoped_lock lock(errorMutex);
            error = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> helpers;
        const int count = threadCount(options.threads, height);
        helpers.reserve(static_cast<std::size_t>(count));
        try {
            for (int i = 1; i < count; ++i) {
                helpers.emplace_back(work);
            }
        } catch (const std::system_error&) {
            // The machine grants no further thread: those there are share all rows.
        }
        work();
    }
    if (error) {
        std::rethrow_exception(error);
    }
    return picture;
}

render::Picture renderFisheye(const CRoom& room, const FisheyeCamera& camera, int width, int height,
                              const RenderOptions& options) {
    const CFisheyeLens lens(camera.lens, camera.maxAngleDegrees);
    const MountingFrame frame = mountingFrame(camera.orientation);
    const auto ray = [&](double u, double v) -> std::optional<Vector> {
        const double dx = (u - 0.5) * width;
        const double dy = (v - 0.5) * height;
        const double distance = std::sqrt(dx * dx + dy * dy);
        if (distance == 0.0) {
            return frame.axis;
        }
        const std::optional<double> angle = lens.angleAt(distance / height);
        if (!angle) {
            return std::nullopt;
        }
        const double aside = std::sin(*angle) / distance;
        return std::cos(*angle) * frame.axis + (aside * dx) * frame.right + (aside * dy) * frame.down;
    };
    return renderRays(room, camera.position, width, height, ray, options);
}

render::Picture renderPerspective(const CRoom& room, const PerspectiveView& view, int width, int height,
                                  const RenderOptions& options) {
    checkFinite(std::isfinite(view.panDegrees) && std::isfinite(view.tiltDegrees) &&
                std::isfinite(view.tanHalfWidth) && std::isfinite(view.tanHalfHeight));
    if (view.tanHalfWidth <= 0.0 || view.tanHalfHeight <= 0.0) {
        throw std::invalid_argument("scene: the tangents of a view's half angles must be positive");
    }
    const Vector forward = direction(view.panDegrees, view.tiltDegrees);
    // Level for every tilt, and defined even straight up and down, where forward alone would not fix it.
    const Vector right = direction(view.panDegrees + 90.0, 0.0);
    const Vector up = cross(right, forward);
    const auto ray = [&](double u, double v) -> std::optional<Vector> {
        return forward + ((2.0 * u - 1.0) * view.tanHalfWidth) * right +
               ((1.0 - 2.0 * v) * view.tanHalfHeight) * up;
    };
    return renderRays(room, view.position, width, height, ray, options);
}

render::Picture renderStrip(const CRoom& room, const PanoramaStrip& strip, int width, int height,
                            const RenderOptions& options) {
    checkFinite(std::isfinite(strip.panStartDegrees) && std::isfinite(strip.panWidthDegrees) &&
                std::isfinite(strip.elevationTopDegrees) && std::isfinite(strip.elevationBottomDegrees));
    const auto ray = [&](double u, double v) -> std::optional<Vector> {
        return direction(strip.panStartDegrees + u * strip.panWidthDegrees,
                         strip.elevationTopDegrees +
                             v * (strip.elevationBottomDegrees - strip.elevationTopDegrees));
    };
    return renderRays(room, strip.position, width, height, ray, options);
}

} // namespace tarvo::scene
