#include "render/d3d11/D3d11Device.h"

#include "render/d3d11/FailureTrace.h"
#include "render/d3d11/PipelineStates.h"

#include <utility>

namespace tarvo::render::d3d11 {
namespace {

constexpr const char* initPlace = "CDewarpingTransform::InitDirect3D()";

void logFallback(const diagnostics::ObjectLog& log, int line) noexcept {
    try {
        TARVO_LOG(log.log, diagnostics::LogCategory::error, 0, "",
                  "CDewarpingTransform::InitDirect3D() [id: %ld]  [line: %d] Failed to create device with "
                  "hardware driver type. Using WARP fallback.",
                  static_cast<long>(log.instanceId), line);
    } catch (...) { // NOLINT(bugprone-empty-catch): logging never fails its caller
    }
}

void logHardwareOptions(const diagnostics::ObjectLog& log, bool areSupported) noexcept {
    try {
        TARVO_LOG(log.log, diagnostics::LogCategory::information, 0, "",
                  "D3D11_FEATURE_D3D10_X_HARDWARE_OPTIONS supported:%d", areSupported ? 1 : 0);
    } catch (...) { // NOLINT(bugprone-empty-catch): logging never fails its caller
    }
}

} // namespace

CD3d11Device::CD3d11Device(std::unique_ptr<ID3d11Library> library, diagnostics::ObjectLog log,
                           BytecodeFinder findBytecode)
    : m_library(std::move(library)), m_log(log), m_findBytecode(findBytecode) {}

CD3d11Device::~CD3d11Device() {
    close();
}

bool CD3d11Device::isAvailable() {
    if (!m_isInstalled) {
        m_isInstalled = m_library->isInstalled();
        if (!m_isInstalled)
            m_log.error("DirectX 11 is not installed");
    }
    return m_isInstalled;
}

HRESULT CD3d11Device::open(const InputFormat& input, const OutputFormat& output) {
    close();
    if (!isAvailable())
        return E_FAIL;
    m_held.input = input;
    m_held.output = output;
    const HRESULT result = InitDirect3D();
    if (FAILED(result))
        close();
    return result;
}

HRESULT CD3d11Device::InitDirect3D() {
    RETURN_IF_FAILED(createDevice());
    RETURN_IF_FAILED(queryHardwareOptions());
    RETURN_IF_FAILED(CreateTextures());
    if (m_held.input.format == PixelFormat::yuy2)
        RETURN_IF_FAILED(CreateStructuredBuffer());
    RETURN_IF_FAILED(CreateShadersAndInputLayout());
    m_held.context->VSSetShader(m_held.shaders.vertexShader(), nullptr, 0);
    RETURN_IF_FAILED(CreateIndexBuffer());
    RETURN_IF_FAILED(createVertexRecord());
    return CreateYUY2PSCBuffer();
}

HRESULT CD3d11Device::createDevice() {
    const FailureTrace trace{m_log, initPlace};
    // The lowest first: nothing here needs more, and a device runs at the first level it supports.
    static constexpr std::array levels{D3D_FEATURE_LEVEL_10_0, D3D_FEATURE_LEVEL_10_1,
                                       D3D_FEATURE_LEVEL_11_0};
    DeviceRequest request{D3D_DRIVER_TYPE_HARDWARE, D3D11_CREATE_DEVICE_BGRA_SUPPORT, levels,
                          D3D11_SDK_VERSION};
    if (FAILED(m_library->createDevice(request, m_held.device, m_held.context))) {
        logFallback(m_log, __LINE__);
        request.driverType = D3D_DRIVER_TYPE_WARP;
        RETURN_IF_FAILED_TRACED(trace, m_library->createDevice(request, m_held.device, m_held.context));
        m_held.kind = DeviceKind::fallback;
    }
    m_held.bindings = CBindings(m_held.context);
    return S_OK;
}

HRESULT CD3d11Device::queryHardwareOptions() {
    const FailureTrace trace{m_log, initPlace};
    D3D11_FEATURE_DATA_D3D10_X_HARDWARE_OPTIONS options{};
    RETURN_IF_FAILED_TRACED(trace, m_held.device->CheckFeatureSupport(D3D11_FEATURE_D3D10_X_HARDWARE_OPTIONS,
                                                                      &options, sizeof(options)));
    // Conversion of YUY2 reads a structured buffer; without the option its creation will fail.
    logHardwareOptions(m_log, options.ComputeShaders_Plus_RawAndStructuredBuffers_Via_Shader_4_x != FALSE);
    return S_OK;
}

HRESULT CD3d11Device::openStates() {
    const FailureTrace trace{m_log, initPlace};
    if (!isOpen())
        return TRACE_IF_FAILED(trace, E_FAIL);
    RETURN_IF_FAILED_TRACED(trace, createBlendState(*m_held.device, m_held.blendState));
    RETURN_IF_FAILED_TRACED(trace, createSampler(*m_held.device, m_held.sampler));
    ID3D11SamplerState* const sampler = m_held.sampler.get();
    m_held.context->PSSetSamplers(0, 1, &sampler);
    return S_OK;
}

void CD3d11Device::close() {
    if (m_held.context) {
        // What is bound would live on with the context; and what a closed context has released is only gone
        // once it has been flushed.
        m_held.context->ClearState();
        m_held.context->Flush();
    }
    m_held = {};
}

} // namespace tarvo::render::d3d11
