#include "apps/tarvo-dewarp/HostStill.h"

#include "apps/host/HostError.h"
#include "apps/tarvo-dewarp/ViewTransform.h"

namespace tarvo::apps {
StillFrame drawWithModule(const ModuleSettings& module, const StillJob& job) {
    const host::CModule loaded(module.path());
    CViewTransform transform(loaded, {job.view, job.customView, job.isBypassed, {}});
    transform.setInput(job.input.format);
    const host::VideoFormat format =
        transform.setOutput(job.frames.outputFormat, job.frames.isOutputBottomUp);
    transform.stream().putFrame(job.input.bytes);
    const auto frame = transform.stream().nextFrame();
    if (!frame) {
        throw host::HostError("rendering the frame", S_FALSE, "the component gave no frame");
    }
    const auto contents = frame->buffer->contents();
    return {format, {contents.begin(), contents.end()}};
}

} // namespace tarvo::apps
