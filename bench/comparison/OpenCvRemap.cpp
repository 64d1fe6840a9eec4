#include "bench/comparison/OpenCvRemap.h"

#include "bench/comparison/Pictures.h"
#include "scene/Camera.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

namespace tarvo::bench {
namespace {

cv::Vec3d inCamera(const scene::Vector& vector, const scene::MountingFrame& camera) {
    return {dot(vector, camera.right), dot(vector, camera.down), dot(vector, camera.axis)};
}

/// From the camera's axes into those of a view without roll.
cv::Matx33d rotationTo(double panDegrees, double tiltDegrees, geometry::TiltOrientation mounting) {
    const scene::MountingFrame camera = scene::mountingFrame(mounting);
    const scene::Vector ahead = scene::direction(panDegrees, tiltDegrees);
    const scene::Vector right = scene::direction(panDegrees + 90.0, 0.0);
    const cv::Vec3d rows[] = {inCamera(right, camera), inCamera(cross(ahead, right), camera),
                              inCamera(ahead, camera)};
    return {rows[0][0], rows[0][1], rows[0][2], rows[1][0], rows[1][1],
            rows[1][2], rows[2][0], rows[2][1], rows[2][2]};
}

cv::Matx33d cameraMatrix(double focalX, double focalY, int width, int height) {
    // Places are those of pixel centres here.
    return {focalX, 0.0, 0.5 * (width - 1), 0.0, focalY, 0.5 * (height - 1), 0.0, 0.0, 1.0};
}

} // namespace

struct COpenCvRemap::Matrices {
    cv::Mat inputs[CInputs::count];
    cv::Mat colour;   ///< the input as BGR
    cv::Mat dewarped; ///< BGR or BGRA
    cv::Mat output;   ///< YV12
    cv::Mat mapX;
    cv::Mat mapY;
    cv::Mat fixedMap;
    cv::Mat fractions;
};

void COpenCvRemap::startThreads(int threads) {
    cv::setNumThreads(threads);
    cv::parallel_for_(
        cv::Range(0, 64), [](const cv::Range&) {}, 64);
}

COpenCvRemap::COpenCvRemap(const Work& work, const CInputs& inputs, int threads)
    : m_work(work), m_matrices(std::make_unique<Matrices>()) {
    cv::setNumThreads(threads);
    for (int number = 0; number < CInputs::count; ++number) {
        const int rows = work.isRgb32 ? work.inputHeight : work.inputHeight / 2 * 3;
        m_matrices->inputs[number] =
            cv::Mat(rows, work.inputWidth, work.isRgb32 ? CV_8UC4 : CV_8UC1, inputs.bytes(number));
    }
    makeMaps(work.panDegrees);
}

COpenCvRemap::~COpenCvRemap() = default;

void COpenCvRemap::makeMaps(double panDegrees) {
    const View view = viewsOf(m_work).front();
    const double lensFocal = static_cast<double>(equidistantLens.c) * m_work.inputHeight;
    Matrices& m = *m_matrices;
    cv::fisheye::initUndistortRectifyMap(
        cameraMatrix(lensFocal, lensFocal, m_work.inputWidth, m_work.inputHeight), cv::Vec4d(),
        rotationTo(panDegrees, view.tiltDegrees, m_work.mounting),
        cameraMatrix(view.width / 2.0 / view.tanHalfWidth, view.height / 2.0 / view.tanHalfHeight, view.width,
                     view.height),
        cv::Size(view.width, view.height), CV_32FC1, m.mapX, m.mapY);
    cv::convertMaps(m.mapX, m.mapY, m.fixedMap, m.fractions, CV_16SC2);
}

void COpenCvRemap::frame(int number) {
    Matrices& m = *m_matrices;
    if (m_work.isMoving) {
        makeMaps(m_work.panDegrees + sweepDegrees(number));
    }
    const cv::Mat& input = m.inputs[number % CInputs::count];
    if (m_work.isRgb32) {
        cv::remap(input, m.dewarped, m.fixedMap, m.fractions, cv::INTER_LINEAR);
        return;
    }
    cv::cvtColor(input, m.colour, cv::COLOR_YUV2BGR_YV12);
    cv::remap(m.colour, m.dewarped, m.fixedMap, m.fractions, cv::INTER_LINEAR);
    cv::cvtColor(m.dewarped, m.output, cv::COLOR_BGR2YUV_YV12);
}

render::Picture COpenCvRemap::picture() const {
    render::Picture whole(m_work.outputWidth, m_work.outputHeight);
    const Matrices& m = *m_matrices;
    if (m_work.isRgb32) {
        for (int y = 0; y < whole.height; ++y) {
            const auto* const row = reinterpret_cast<const render::Bgra*>(m.dewarped.ptr(y));
            std::copy_n(row, whole.width, &whole.at(0, y));
        }
        return whole;
    }
    const std::size_t luma = static_cast<std::size_t>(whole.width) * whole.height;
    const std::uint8_t* const bytes = m.output.data;
    pasteYv12({whole.width,
               whole.height,
               {bytes, bytes + luma, bytes + luma + luma / 4},
               {whole.width, whole.width / 2, whole.width / 2}},
              0, 0, whole);
    return whole;
}

} // namespace tarvo::bench
