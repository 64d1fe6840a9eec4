#include "transform/DewarpingTransform.h"

#include "diagnostics/LogLine.h"
#include "transform/AcceleratorInjection.h"

namespace tarvo::transform {
namespace {

constexpr const char* moduleTag = "TvVideoTransform";
/// By which hosts and the configuration in the registry know the class.
constexpr const char* friendlyName = "TARVO Dewarping Transform DMO";

diagnostics::ObjectLog registered(diagnostics::Log& log) {
    const diagnostics::ObjectLog objectLog{log, log.Register(moduleTag, friendlyName)};
    TARVO_LOG(log, diagnostics::LogCategory::information, objectLog.instanceId, friendlyName, "%s",
              "initializing");
    return objectLog;
}

} // namespace

CDewarpingTransform::CDewarpingTransform(com::Outer outer, const TransformServices& services)
    : CObjectOn(outer), m_log(registered(services.log)),
      m_renderer(m_settings, m_steering, services.makeDevice(m_log), m_log),
      m_events(connectionPoint<IDewarpingTransformEvents>(), connectionPoint<IImageSourceEvents>(), m_log),
      m_streams(*controllingUnknown(), m_settings, m_streamSettings, m_renderer, m_events, m_log),
      m_view(m_settings, m_renderer, m_log),
      m_output(m_settings, m_streamSettings, m_renderer, m_streams, m_log),
      m_custom(m_settings, m_renderer, m_steering, m_log) {
    m_steering.connect([this] { m_renderer.excludeAreaChanged(); }, [this] { m_settings.markChanged(); });
}

CDewarpingTransform::~CDewarpingTransform() {
    TARVO_LOG(m_log.log, diagnostics::LogCategory::information, m_log.instanceId, friendlyName, "%s",
              "destructor");
}

void CDewarpingTransform::finalRelease() noexcept {
    // The host may keep the rectangle and the controls, and change them on.
    m_steering.disconnect();
    CObjectOn::finalRelease();
}

STDMETHODIMP CDewarpingTransform::InjectAcceleratorFilter(IAccelerator** theAccelerator) {
    if (theAccelerator == nullptr)
        return E_POINTER;
    *theAccelerator = nullptr;
    return com::guarded([&] {
        // Fill frames keep the built-in views in step with the clock; a custom view is not repeated.
        const auto viewType =
            m_settings.ask([](const geometry::CViewState& view) { return view.viewType(); });
        const bool insertsFillFrames = viewType != geometry::ViewType::custom;
        return injectAccelerator(*controllingUnknown(), insertsFillFrames, m_log, theAccelerator);
    });
}

STDMETHODIMP CDewarpingTransform::GetStreamCount(DWORD* inputStreams, DWORD* outputStreams) {
    return CStreamTypes::GetStreamCount(inputStreams, outputStreams);
}

STDMETHODIMP CDewarpingTransform::GetInputStreamInfo(DWORD stream, DWORD* flags) {
    return CStreamTypes::GetInputStreamInfo(stream, flags);
}

STDMETHODIMP CDewarpingTransform::GetOutputStreamInfo(DWORD stream, DWORD* flags) {
    return CStreamTypes::GetOutputStreamInfo(stream, flags);
}

STDMETHODIMP CDewarpingTransform::GetInputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) {
    return m_streams.ask([&](CStreamTypes& types) { return types.GetInputType(stream, index, type); });
}

STDMETHODIMP CDewarpingTransform::GetOutputType(DWORD stream, DWORD index, DMO_MEDIA_TYPE* type) {
    return m_streams.ask([&](CStreamTypes& types) { return types.GetOutputType(stream, index, type); });
}

STDMETHODIMP CDewarpingTransform::SetInputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags) {
    return m_streams.change([&](CStreamTypes& types) { return types.SetInputType(stream, type, flags); });
}

STDMETHODIMP CDewarpingTransform::SetOutputType(DWORD stream, const DMO_MEDIA_TYPE* type, DWORD flags) {
    return m_streams.change([&](CStreamTypes& types) { return types.SetOutputType(stream, type, flags); });
}

STDMETHODIMP CDewarpingTransform::GetInputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) {
    return m_streams.ask([&](CStreamTypes& types) { return types.GetInputCurrentType(stream, type); });
}

STDMETHODIMP CDewarpingTransform::GetOutputCurrentType(DWORD stream, DMO_MEDIA_TYPE* type) {
    return m_streams.ask([&](CStreamTypes& types) { return types.GetOutputCurrentType(stream, type); });
}

STDMETHODIMP CDewarpingTransform::GetInputSizeInfo(DWORD stream, DWORD* bytes, DWORD* lookahead,
                                                   DWORD* alignment) {
    return m_streams.ask(
        [&](CStreamTypes& types) { return types.GetInputSizeInfo(stream, bytes, lookahead, alignment); });
}

STDMETHODIMP CDewarpingTransform::GetOutputSizeInfo(DWORD stream, DWORD* bytes, DWORD* alignment) {
    return m_streams.ask(
        [&](CStreamTypes& types) { return types.GetOutputSizeInfo(stream, bytes, alignment); });
}

STDMETHODIMP CDewarpingTransform::GetInputMaxLatency(DWORD stream, REFERENCE_TIME* latency) {
    return CStreamTypes::GetInputMaxLatency(stream, latency);
}

STDMETHODIMP CDewarpingTransform::SetInputMaxLatency(DWORD stream, REFERENCE_TIME latency) {
    return CStreamTypes::SetInputMaxLatency(stream, latency);
}

STDMETHODIMP CDewarpingTransform::Flush() {
    return m_streams.change([&](CStreamTypes& types) { return types.Flush(); });
}

STDMETHODIMP CDewarpingTransform::Discontinuity(DWORD stream) {
    return m_streams.Discontinuity(stream);
}

STDMETHODIMP CDewarpingTransform::AllocateStreamingResources() {
    return m_streams.ask([&](CStreamTypes& types) { return types.AllocateStreamingResources(); });
}

STDMETHODIMP CDewarpingTransform::FreeStreamingResources() {
    return m_streams.change([&](CStreamTypes& types) { return types.FreeStreamingResources(); });
}

STDMETHODIMP CDewarpingTransform::GetInputStatus(DWORD stream, DWORD* flags) {
    return m_streams.GetInputStatus(stream, flags);
}

STDMETHODIMP CDewarpingTransform::ProcessInput(DWORD stream, IMediaBuffer* buffer, DWORD flags,
                                               REFERENCE_TIME time, REFERENCE_TIME duration) {
    return m_streams.ProcessInput(stream, buffer, flags, time, duration);
}

STDMETHODIMP CDewarpingTransform::ProcessOutput(DWORD flags, DWORD count, DMO_OUTPUT_DATA_BUFFER* buffers,
                                                DWORD* status) {
    return m_streams.ProcessOutput(flags, count, buffers, status);
}

STDMETHODIMP CDewarpingTransform::Lock(LONG isLocking) {
    return m_streams.Lock(isLocking);
}

} // namespace tarvo::transform
