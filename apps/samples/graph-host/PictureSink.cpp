#include "apps/samples/graph-host/PictureSink.h"

#include <evcode.h>
#include <utility>

namespace tarvo::samples {

CPictureSink::CPictureSink() : m_pin(*this) {
    setPins({&m_pin});
}

CPictureSink::Pictures CPictureSink::pictures() const {
    const std::lock_guard lock(m_picturesLock);
    return m_pictures;
}

HRESULT CPictureSink::CPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    return type.majortype == MEDIATYPE_Video && type.subtype == MEDIASUBTYPE_RGB32 &&
                   type.formattype == FORMAT_VideoInfo && type.cbFormat >= sizeof(VIDEOINFOHEADER)
               ? S_OK
               : S_FALSE;
}

HRESULT CPictureSink::CPin::mediaType(LONG position, dshow::CPinType&) {
    return position < 0 ? E_INVALIDARG : VFW_S_NO_MORE_ITEMS;
}

HRESULT CPictureSink::CPin::received(IMediaSample& sample) {
    if (filter().isStopped())
        return VFW_E_WRONG_STATE;
    if (isFlushing())
        return S_FALSE;
    const HRESULT result = followType(sample);
    return SUCCEEDED(result) ? m_sink.keep(sample) : result;
}

HRESULT CPictureSink::CPin::streamEnded() {
    {
        const std::lock_guard lock(m_sink.m_picturesLock);
        m_sink.m_isEndToReport = true;
    }
    m_sink.reportEnd();
    return S_OK;
}

STDMETHODIMP CPictureSink::Run(REFERENCE_TIME start) {
    const HRESULT result = CBaseFilter::Run(start);
    if (SUCCEEDED(result))
        reportEnd();
    return result;
}

void CPictureSink::stopped() noexcept {
    const std::lock_guard lock(m_picturesLock);
    m_isEndToReport = false;
}

void CPictureSink::reportEnd() {
    {
        const std::lock_guard lock(m_picturesLock);
        if (state() != State_Running || !std::exchange(m_isEndToReport, false))
            return;
    }
    notifyGraph(EC_COMPLETE, S_OK, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this)));
}

HRESULT CPictureSink::keep(IMediaSample& sample) {
    const auto& format = *reinterpret_cast<const VIDEOINFOHEADER*>(m_pin.connectionType().pbFormat);
    BYTE* bytes = nullptr;
    if (const HRESULT result = sample.GetPointer(&bytes); FAILED(result))
        return result;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample.GetTime(&start, &stop);
    const std::lock_guard lock(m_picturesLock);
    ++m_pictures.count;
    m_pictures.lastStart = SUCCEEDED(times) ? start : -1;
    m_pictures.width = format.bmiHeader.biWidth;
    m_pictures.height = format.bmiHeader.biHeight;
    m_pictures.last.assign(bytes, bytes + sample.GetActualDataLength());
    return S_OK;
}

} // namespace tarvo::samples
