#include "apps/tarvo-dewarp/video/VideoRun.h"

#include "apps/host/HostError.h"
#include "apps/tarvo-dewarp/video/InputPace.h"
#include "apps/tarvo-dewarp/video/Interruption.h"
#include "apps/tarvo-dewarp/video/Progress.h"

#include <cmath>
#include <utility>

namespace tarvo::apps::video {
namespace {

std::optional<std::int64_t> expectedFrames(const VideoRun& run) {
    const VideoInput& input = run.source.description();
    if (!input.frameCount || !run.outputRate) {
        return input.frameCount;
    }
    return std::llround(static_cast<double>(*input.frameCount) * run.outputRate->perSecond() /
                        input.rate.perSecond());
}

} // namespace

bool isSlower(const std::optional<FrameRate>& outputRate, const FrameRate& inputRate) {
    return outputRate && outputRate->perSecond() < inputRate.perSecond();
}

std::int64_t runVideo(const VideoRun& run) {
    const bool leavesOut = isSlower(run.outputRate, run.source.description().rate);
    CInputPace pace(leavesOut ? run.outputRate : std::nullopt);
    CMover mover(run.moves, run.transform);
    CProgress progress(run.progress, expectedFrames(run));
    std::int64_t count = 0;
    while (std::optional<VideoFrame> frame = run.source.next()) {
        CInterruption::check();
        const std::optional<host::FrameTime> time = pace.place(frame->start, frame->duration);
        if (!time) {
            continue;
        }
        run.stream.putFrame(std::move(frame->bytes), *time);
        // Repeats of a frame have moves of their own, so that the view turns at the output's rate.
        std::int64_t due = time->start.value_or(0);
        for (bool isMore = true; isMore; ++count) {
            CInterruption::check();
            mover.moveTo(due);
            const std::optional<host::OutputFrame> shown = run.stream.nextFrame();
            if (!shown) {
                throw host::HostError("rendering the frame", E_UNEXPECTED,
                                      "the transform has no frame to give");
            }
            const std::int64_t start = shown->time.start.value_or(due);
            std::int64_t duration = shown->time.duration.value_or(time->duration.value_or(0));
            isMore = shown->isIncomplete;
            if (const std::int64_t end = time->start.value_or(0) + time->duration.value_or(0);
                !isMore && end > start) {
                // Whatever the rates are, the last picture of a frame is seen until the next frame.
                duration = end - start;
            }
            run.sink.put(shown->buffer->contents(), start, duration);
            progress.frameDone();
            due = start + duration;
        }
    }
    return count;
}

} // namespace tarvo::apps::video
