#include "accelerator/VideoInputPin.h"

#include "accelerator/AcceleratorFilter.h"

namespace tarvo::accelerator {

CVideoInputPin::CVideoInputPin(CAcceleratorFilter& filter)
    : CInputPin(filter, OLESTR("input")), m_accelerator(filter) {}

HRESULT CVideoInputPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    const bool isVideo = type.majortype == MEDIATYPE_Video && type.subtype != GUID{};
    return isVideo && (type.formattype == FORMAT_VideoInfo || type.formattype == FORMAT_VideoInfo2) ? S_OK
                                                                                                    : S_FALSE;
}

HRESULT CVideoInputPin::mediaType(LONG position, dshow::CPinType& type) {
    if (position < 0)
        return E_INVALIDARG;
    if (position > 0)
        return VFW_S_NO_MORE_ITEMS;
    AM_MEDIA_TYPE video{};
    video.majortype = MEDIATYPE_Video;
    video.bFixedSizeSamples = TRUE;
    return type.assign(video);
}

HRESULT CVideoInputPin::connectionMade() {
    m_accelerator.inputConnected();
    return S_OK;
}

void CVideoInputPin::connectionEnded() noexcept {
    CInputPin::connectionEnded();
    m_accelerator.inputDisconnected();
}

HRESULT CVideoInputPin::received(IMediaSample& sample) {
    if (m_accelerator.takesFrames() && m_accelerator.acceptsTypeOf(sample) && followType(sample) == S_OK)
        m_accelerator.Receive(sample);
    return S_OK;
}

HRESULT CVideoInputPin::streamEnded() {
    return m_accelerator.streamEnded();
}

HRESULT CVideoInputPin::flushBegan() {
    return m_accelerator.flushBegan();
}

HRESULT CVideoInputPin::flushEnds() {
    return m_accelerator.flushEnds();
}

HRESULT CVideoInputPin::segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    return m_accelerator.segmentBegan(start, stop, rate);
}

HRESULT CVideoInputPin::typeChanged() {
    return m_accelerator.inputTypeChanged(connectionType());
}

} // namespace tarvo::accelerator
