#include "apps/tarvo-dewarp/HostStill.h"

#include "apps/host/HostError.h"
#include "apps/tarvo-dewarp/FrameCoding.h"
#include "apps/tarvo-dewarp/ViewTransform.h"

namespace tarvo::apps {
namespace {

host::FramePixels pixelsOf(render::PixelFormat format) {
    switch (format) {
    case render::PixelFormat::yv12:
        return host::FramePixels::yv12;
    case render::PixelFormat::yuy2:
        return host::FramePixels::yuy2;
    default:
        return host::FramePixels::rgb32;
    }
}

host::VideoFormat videoFormatOf(const render::InputFormat& format) {
    const host::FramePixels pixels = pixelsOf(format.format);
    const bool isTopDown = pixels == host::FramePixels::rgb32 && !format.isBottomUp;
    return host::makeVideoFormat(pixels, format.width, isTopDown ? -format.height : format.height, 0,
                                 format.strideBytes);
}

} // namespace

StillFrame drawWithModule(const ModuleSettings& module, const StillJob& job) {
    const host::CModule loaded(module.path());
    CViewTransform transform(loaded, {job.view, job.customView, job.isBypassed, {}});
    const auto [width, height] = transform.setInput(videoFormatOf(job.input.format));
    transform.setOutput(pixelsOf(job.frames.outputFormat), job.frames.isOutputBottomUp);
    transform.stream().putFrame(job.input.bytes);
    const auto frame = transform.stream().nextFrame();
    if (!frame) {
        throw host::HostError("rendering the frame", S_FALSE, "the component gave no frame");
    }
    const auto contents = frame->buffer->contents();
    return {outputFrameFormat(job.frames.outputFormat, static_cast<int>(width), static_cast<int>(height),
                              job.frames.isOutputBottomUp),
            {contents.begin(), contents.end()}};
}

} // namespace tarvo::apps
