#include "apps/tarvo-dewarp/FrameRun.h"

#include "apps/tarvo-dewarp/FrameCoding.h"
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
namespace {

void require(HRESULT result, const char* step) {
    if (FAILED(result)) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(result));
        throw RenderError(std::string(step) + " failed: " + diagnostics::errorText(result) + " (" + code +
                          ")");
    }
}

} // namespace

std::unique_ptr<render::IRenderDevice> makeUsualDevice(const diagnostics::ObjectLog& log) {
#ifdef _WIN32
    return std::make_unique<render::d3d11::CD3d11Device>(std::make_unique<render::d3d11::CD3d11Library>(),
                                                         log);
#else
    return std::make_unique<render::software::CSoftwareDevice>(log);
#endif
}

std::vector<std::byte> runFrame(const DeviceMaker& makeDevice, const InputFrame& input,
                                const render::OutputFormat& output, const geometry::CViewState& view,
                                bool isBypassed) {
    const diagnostics::ObjectLog log{
        diagnostics::moduleLog,
        diagnostics::moduleLog.Register("TvVideoTransform", "TARVO Dewarping Transform DMO")};
    std::vector<std::byte> delivered(frameBytes(output));
    // Outlives the renderer, which tells it when the device goes.
    render::CDewarpPixelShader shader(view.parameters(), log);
    render::CFrameRenderer renderer(makeDevice(log), log);
    if (!renderer.isAvailable()) {
        throw RenderError("DirectX 11 is not installed");
    }
    require(renderer.InitDirect3D(input.format, output, view, shader), "opening the render device");
    require(renderer.UploadInputFrame(input.bytes), "handing over the frame");
    require(renderer.RenderFrame(view, shader, isBypassed), "rendering");
    require(renderer.ReadBackOutputFrame(delivered, nullptr), "reading the picture back");
    return delivered;
}

} // namespace tarvo::apps
