#include "apps/tarvo-render/RenderRecords.h"

#include "apps/tarvo-dewarp/video/FramePlanes.h"

#include <cstdlib>

namespace tarvo::apps {
namespace {

render::PixelFormat pixelFormatOf(host::FramePixels pixels) {
    switch (pixels) {
    case host::FramePixels::yv12:
        return render::PixelFormat::yv12;
    case host::FramePixels::yuy2:
        return render::PixelFormat::yuy2;
    default:
        return render::PixelFormat::rgb32;
    }
}

std::uint32_t strideOf(const host::VideoFormat& format) {
    const bool isPlanar = format.pixels == host::FramePixels::yv12;
    const video::Plane plane = isPlanar ? video::yv12Planes(format).luma : video::packedPlane(format);
    return static_cast<std::uint32_t>(plane.stride);
}

bool isBottomUp(const host::VideoFormat& format) {
    return format.pixels == host::FramePixels::rgb32 && format.height > 0;
}

} // namespace

render::InputFormat inputFormatOf(const host::VideoFormat& format) {
    return {pixelFormatOf(format.pixels),
            format.width,
            std::abs(format.height),
            strideOf(format),
            format.frameBytes,
            isBottomUp(format)};
}

render::OutputFormat outputFormatOf(const host::VideoFormat& format) {
    return {pixelFormatOf(format.pixels), format.width, std::abs(format.height), strideOf(format),
            isBottomUp(format)};
}

geometry::ExcludeArea excludeAreaOf(const Edges& edges) {
    return {edges.left, edges.top, edges.right, edges.bottom};
}

} // namespace tarvo::apps
