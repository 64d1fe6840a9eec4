#include "transform/MediaStreams.h"

#include "com/Guarded.h"
#include "com/Trace.h"
#include "transform/streaming/MediaObjectResults.h"

namespace tarvo::transform {

class CMediaStreams::CBusy {
public:
    explicit CBusy(CMediaStreams& streams) : m_streams(streams) { m_streams.m_isBusy = true; }
    ~CBusy() { m_streams.m_isBusy = false; }
    CBusy(const CBusy&) = delete;
    CBusy& operator=(const CBusy&) = delete;

private:
    CMediaStreams& m_streams;
};

HRESULT CMediaStreams::GetInputStatus(DWORD stream, DWORD* flags) {
    const std::lock_guard lock(m_lock);
    return m_types.GetInputStatus(stream, m_producer.isInputHeld(), flags);
}

HRESULT CMediaStreams::Discontinuity(DWORD stream) {
    const std::lock_guard lock(m_lock);
    return m_types.Discontinuity(stream, m_producer.isInputHeld());
}

HRESULT CMediaStreams::ProcessInput(DWORD stream, IMediaBuffer* buffer, DWORD flags, REFERENCE_TIME time,
                                    REFERENCE_TIME duration) {
    constexpr DWORD knownFlags =
        DMO_INPUT_DATA_BUFFERF_SYNCPOINT | DMO_INPUT_DATA_BUFFERF_TIME | DMO_INPUT_DATA_BUFFERF_TIMELENGTH;
    if (buffer == nullptr)
        return E_POINTER;
    if (stream != 0)
        return invalidStreamIndex;
    if ((flags & ~knownFlags) != 0)
        return E_INVALIDARG;
    const std::lock_guard lock(m_lock);
    if (m_isBusy)
        return E_UNEXPECTED;
    RETURN_IF_FAILED(m_types.AllocateStreamingResources());
    if (m_producer.isInputHeld())
        return notAccepting;
    m_types.inputBegun();
    const CBusy busy(*this);
    return m_producer.holdInput(*buffer, flags, time, duration);
}

HRESULT CMediaStreams::ProcessOutput(DWORD flags, DWORD count, DMO_OUTPUT_DATA_BUFFER* buffers,
                                     DWORD* status) {
    constexpr DWORD knownFlags = DMO_PROCESS_OUTPUT_DISCARD_WHEN_NO_BUFFER;
    if (status == nullptr)
        return E_POINTER;
    if (count != 1 || (flags & ~knownFlags) != 0)
        return E_INVALIDARG;
    if (buffers == nullptr)
        return E_POINTER;
    *status = 0;
    const std::lock_guard lock(m_lock);
    if (m_isBusy)
        return E_UNEXPECTED;
    RETURN_IF_FAILED(m_types.AllocateStreamingResources());
    buffers[0].dwStatus = 0;
    const CBusy busy(*this);
    return m_producer.InternalProcessOutput(buffers[0], m_negotiation.formats());
}

HRESULT CMediaStreams::Lock(LONG isLocking) {
    if (isLocking != 0) {
        m_lock.lockForHost();
        return S_OK;
    }
    return m_lock.unlockForHost() ? S_OK : E_FAIL;
}

ViewFacts CMediaStreams::viewFacts() {
    ViewFacts facts = m_settings.ask([](const geometry::CViewState& view) {
        return ViewFacts{view.viewType(), view.panoramaFieldOfView(), {}};
    });
    facts.customAspect = m_renderer.tableAspect();
    return facts;
}

bool CMediaStreams::hasDevice() {
    return m_renderer.isOpen();
}

HRESULT CMediaStreams::createDevice() {
    return com::guarded([&] { return m_renderer.open(m_negotiation.formats()); });
}

void CMediaStreams::releaseRenderResources() {
    m_renderer.close();
}

void CMediaStreams::inputChecked() {
    const NegotiatedFormats formats = m_negotiation.formats();
    m_settings.setSizes({formats.inputWidth, formats.inputHeight},
                        {formats.outputWidth, formats.outputHeight});
    m_renderer.setOutputAspect(formats.outputAspect);
}

void CMediaStreams::outputChecked() {
    m_renderer.setOutputFormat(m_negotiation.formats().renderOutput());
}

void CMediaStreams::flushStream() {
    m_producer.flush();
    m_quality.flush();
}

void CMediaStreams::freeCachedFrame() {
    m_producer.freeCachedFrame();
}

void CMediaStreams::releaseCurrentImage() {
    m_producer.releaseCurrentImage();
}

} // namespace tarvo::transform
