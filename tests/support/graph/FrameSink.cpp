#include "tests/support/graph/FrameSink.h"

#include <chrono>
#include <evcode.h>
#include <utility>

namespace tarvo::tests {

CFrameSink::CFrameSink(const GUID& subtype) : m_subtype(subtype), m_pin(*this) {
    setPins({&m_pin});
}

HRESULT CFrameSink::CPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    return type.majortype == MEDIATYPE_Video && type.subtype == m_sink.m_subtype && type.pbFormat != nullptr
               ? S_OK
               : S_FALSE;
}

HRESULT CFrameSink::CPin::mediaType(LONG position, dshow::CPinType&) {
    return position < 0 ? E_INVALIDARG : VFW_S_NO_MORE_ITEMS;
}

HRESULT CFrameSink::CPin::received(IMediaSample& sample) {
    if (filter().isStopped())
        return VFW_E_WRONG_STATE;
    if (isFlushing())
        return S_FALSE;
    if (const HRESULT result = followType(sample); FAILED(result))
        return result;
    BYTE* bytes = nullptr;
    if (const HRESULT result = sample.GetPointer(&bytes); FAILED(result))
        return result;
    Delivery frame;
    frame.bytes.assign(bytes, bytes + sample.GetActualDataLength());
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample.GetTime(&start, &stop);
    if (SUCCEEDED(times))
        frame.start = start;
    if (times == S_OK)
        frame.stop = stop;
    m_sink.keep(frame);
    return S_OK;
}

HRESULT CFrameSink::CPin::streamEnded() {
    {
        const std::lock_guard lock(m_sink.m_framesLock);
        ++m_sink.m_ends;
        m_sink.m_isEndToReport = true;
    }
    m_sink.reportEnd();
    return S_OK;
}

HRESULT CFrameSink::CPin::flushEnds() {
    const std::lock_guard lock(m_sink.m_framesLock);
    m_sink.m_frames.clear();
    m_sink.m_isEndToReport = false;
    return S_OK;
}

STDMETHODIMP CFrameSink::Run(REFERENCE_TIME start) {
    const HRESULT result = CBaseFilter::Run(start);
    if (SUCCEEDED(result))
        reportEnd();
    return result;
}

void CFrameSink::stopped() noexcept {
    const std::lock_guard lock(m_framesLock);
    m_isEndToReport = false;
}

void CFrameSink::reportEnd() {
    {
        const std::lock_guard lock(m_framesLock);
        if (state() != State_Running || !std::exchange(m_isEndToReport, false))
            return;
    }
    notifyGraph(EC_COMPLETE, S_OK, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this)));
}

void CFrameSink::keep(const Delivery& frame) {
    {
        const std::lock_guard lock(m_framesLock);
        m_frames.push_back(frame);
        m_changed.notify_all();
    }
    if (onFrame)
        onFrame(frame);
}

std::vector<Delivery> CFrameSink::takeFrames() {
    const std::lock_guard lock(m_framesLock);
    return std::exchange(m_frames, {});
}

bool CFrameSink::waitForFrames(std::size_t count) const {
    std::unique_lock lock(m_framesLock);
    return m_changed.wait_for(lock, std::chrono::seconds(60), [&] { return m_frames.size() >= count; });
}

int CFrameSink::ends() const {
    const std::lock_guard lock(m_framesLock);
    return m_ends;
}

} // namespace tarvo::tests
