#include "apps/tarvo-render/FrameRun.h"

#include "apps/tarvo-render/RenderRecords.h"
#include "render/DewarpPixelShader.h"
#include "render/FrameRenderer.h"
#ifdef _WIN32
#include "render/d3d11/D3d11Device.h"
#include "render/d3d11/D3d11Library.h"
#else
#include "render/software/SoftwareDevice.h"
#endif

#include <cstdio>
#include <string>

namespace tarvo::apps {

void requireStep(HRESULT result, const char* step) {
    if (FAILED(result)) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(result));
        throw RenderError(std::string(step) + " failed: " + diagnostics::errorText(result) + " (" + code +
                          ")");
    }
}

diagnostics::ObjectLog openRendererLog() {
    return {diagnostics::moduleLog,
            diagnostics::moduleLog.Register("TvVideoTransform", "TARVO Dewarping Transform DMO")};
}

std::unique_ptr<render::IRenderDevice> makeUsualDevice(const diagnostics::ObjectLog& log) {
#ifdef _WIN32
    return std::make_unique<render::d3d11::CD3d11Device>(std::make_unique<render::d3d11::CD3d11Library>(),
                                                         log);
#else
    return std::make_unique<render::software::CSoftwareDevice>(log);
#endif
}

std::vector<std::byte> runFrame(const DeviceMaker& makeDevice, const diagnostics::ObjectLog& log,
                                const FrameJob& job) {
    std::vector<std::byte> delivered(job.output.frameBytes);
    // Both shaders outlive the renderer, which tells its one when the device goes.
    render::CDewarpPixelShader dewarpShader(job.view.parameters(), log);
    render::IShader* shader = &dewarpShader;
    if (job.customShader != nullptr) {
        shader = job.customShader;
    }
    render::CFrameRenderer renderer(makeDevice(log), log);
    if (!renderer.isAvailable()) {
        throw RenderError("DirectX 11 is not installed");
    }
    requireStep(
        renderer.InitDirect3D(inputFormatOf(job.input.format), outputFormatOf(job.output), job.view, *shader),
        "opening the render device");
    requireStep(renderer.UploadInputFrame(job.input.bytes), "handing over the frame");
    requireStep(renderer.RenderFrame(job.view, *shader, job.isBypassed), "rendering");
    requireStep(renderer.ReadBackOutputFrame(delivered, nullptr), "reading the picture back");
    return delivered;
}

} // namespace tarvo::apps
