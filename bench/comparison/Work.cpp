#include "bench/comparison/Work.h"

#include <array>
#include <cmath>

namespace tarvo::bench {
namespace {

using geometry::TiltOrientation;
using geometry::ViewType;

constexpr double stepDegrees = 0.25;
constexpr int sweepSteps = 40;

constexpr const char* v360Flat = "FFmpeg v360 fisheye to flat, linear";
constexpr const char* openCvPlain = "OpenCV convert, remap with stored fixed-point maps, convert";

const std::array works{
    Work{.name = "rest-1024x768-v360",
         .text = "view at rest, 1024x768",
         .peer = Peer::v360,
         .peerText = v360Flat,
         .wanted = 2.5,
         .hoped = 3.5},
    Work{.name = "rest-1920x1080-v360",
         .text = "view at rest, 1920x1080",
         .peer = Peer::v360,
         .peerText = v360Flat,
         .outputWidth = 1920,
         .outputHeight = 1080,
         .wanted = 3.5,
         .hoped = 5.0},
    Work{.name = "panorama-1920x720-v360",
         .text = "ceiling panorama, 180 degrees, 1920x720",
         .peer = Peer::v360,
         .peerText = "FFmpeg v360 fisheye to cylindrical, linear",
         .mounting = TiltOrientation::ceiling,
         .viewType = ViewType::panoramaSingle,
         .outputWidth = 1920,
         .outputHeight = 720,
         .wanted = 2.5,
         .hoped = 4.0},
    Work{.name = "rest-1024x768-opencv",
         .text = "view at rest, 1024x768",
         .peer = Peer::openCv,
         .peerText = openCvPlain,
         .wanted = 5.0,
         .hoped = 8.0},
    Work{.name = "rest-1920x1080-opencv",
         .text = "view at rest, 1920x1080",
         .peer = Peer::openCv,
         .peerText = openCvPlain,
         .outputWidth = 1920,
         .outputHeight = 1080,
         .wanted = 5.0,
         .hoped = 6.5},
    Work{.name = "moving-1024x768-v360",
         .text = "view moving every frame, 1024x768",
         .peer = Peer::v360,
         .peerText = "FFmpeg v360 with a yaw command a frame",
         .isMoving = true,
         .wanted = 50.0,
         .hoped = 100.0},
    Work{.name = "moving-1024x768-opencv",
         .text = "view moving every frame, 1024x768",
         .peer = Peer::openCv,
         .peerText = "OpenCV with fisheye maps made anew each frame",
         .isMoving = true,
         .wanted = 8.0,
         .hoped = 16.0},
    Work{.name = "quad-v360",
         .text = "quad, four views at rest, 1024x768",
         .peer = Peer::v360,
         .peerText = "four FFmpeg v360 outputs of 512x384 from one frame",
         .mounting = TiltOrientation::ceiling,
         .viewType = ViewType::quad,
         .panDegrees = 0.0,
         .tiltDegrees = -35.0,
         .wanted = 2.5,
         .hoped = 4.0},
    Work{.name = "rgb32-1024x768-opencv",
         .text = "RGB32 in and out at rest, 1024x768",
         .peer = Peer::openCv,
         .peerText = "OpenCV remap of BGRA with stored fixed-point maps",
         .isRgb32 = true,
         .wanted = 2.0,
         .hoped = 4.5},
};

} // namespace

std::span<const Work> comparedWorks() {
    return works;
}

bool isPanorama(const Work& work) {
    return geometry::isPanorama(work.viewType);
}

std::vector<View> viewsOf(const Work& work) {
    const double tanHalfWidth =
        std::tan(fieldOfViewDegrees * std::numbers::pi / 180.0) * work.inputWidth / work.inputHeight;
    const auto view = [&](double panDegrees, int width, int height) {
        return View{panDegrees, work.tiltDegrees, tanHalfWidth, tanHalfWidth * height / width, width, height};
    };
    if (work.viewType != ViewType::quad) {
        return {view(work.panDegrees, work.outputWidth, work.outputHeight)};
    }
    std::vector<View> views;
    for (const double panDegrees : {-45.0, 45.0, 135.0, 225.0}) {
        views.push_back(view(work.panDegrees + panDegrees, work.outputWidth / 2, work.outputHeight / 2));
    }
    return views;
}

double sweepDegrees(int frame) {
    const int place = frame % (2 * sweepSteps);
    return stepDegrees * (place < sweepSteps ? place : 2 * sweepSteps - place);
}

} // namespace tarvo::bench
