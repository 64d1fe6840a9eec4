#include "dshow/MediaSample.h"

#include "dshow/MemoryAllocator.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tarvo::dshow {

CMediaSample::CMediaSample(CMemoryAllocator& allocator, BYTE* buffer, LONG size) noexcept
    : m_allocator(allocator) {
    m_properties.cbData = sizeof(m_properties);
    m_properties.dwStreamId = AM_STREAM_MEDIA;
    m_properties.pbBuffer = buffer;
    m_properties.cbBuffer = size;
}

STDMETHODIMP CMediaSample::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (iid != __uuidof(IUnknown) && iid != __uuidof(IMediaSample) && iid != __uuidof(IMediaSample2))
        return E_NOINTERFACE;
    *object = static_cast<IMediaSample2*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CMediaSample::AddRef() {
    return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

STDMETHODIMP_(ULONG) CMediaSample::Release() {
    const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
        unmark();
        m_allocator.takeBack(*this);
    }
    return left;
}

void CMediaSample::handOut() noexcept {
    m_properties.lActual = m_properties.cbBuffer;
    m_references.store(1, std::memory_order_relaxed);
    m_allocator.AddRef();
}

void CMediaSample::unmark() noexcept {
    m_type.reset();
    m_properties.pMediaType = nullptr;
    m_properties.dwTypeSpecificFlags = 0;
    m_properties.dwSampleFlags = 0;
    m_properties.dwStreamId = AM_STREAM_MEDIA;
    m_hasMediaTime = false;
}

STDMETHODIMP CMediaSample::GetPointer(BYTE** buffer) {
    if (buffer == nullptr)
        return E_POINTER;
    *buffer = m_properties.pbBuffer;
    return S_OK;
}

STDMETHODIMP_(LONG) CMediaSample::GetSize() {
    return m_properties.cbBuffer;
}

STDMETHODIMP CMediaSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (start == nullptr || stop == nullptr)
        return E_POINTER;
    if (!has(AM_SAMPLE_TIMEVALID))
        return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = m_properties.tStart;
    *stop = has(AM_SAMPLE_STOPVALID) ? m_properties.tStop : m_properties.tStart + 1;
    return has(AM_SAMPLE_STOPVALID) ? S_OK : VFW_S_NO_STOP_TIME;
}

STDMETHODIMP CMediaSample::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (start != nullptr && stop != nullptr && *stop < *start)
        return VFW_E_START_TIME_AFTER_END;
    m_properties.tStart = start != nullptr ? *start : 0;
    m_properties.tStop = start != nullptr && stop != nullptr ? *stop : 0;
    mark(AM_SAMPLE_TIMEVALID, start != nullptr);
    return mark(AM_SAMPLE_STOPVALID, start != nullptr && stop != nullptr);
}

STDMETHODIMP CMediaSample::IsSyncPoint() {
    return has(AM_SAMPLE_SPLICEPOINT) ? S_OK : S_FALSE;
}

STDMETHODIMP CMediaSample::SetSyncPoint(BOOL isSyncPoint) {
    return mark(AM_SAMPLE_SPLICEPOINT, isSyncPoint != FALSE);
}

STDMETHODIMP CMediaSample::IsPreroll() {
    return has(AM_SAMPLE_PREROLL) ? S_OK : S_FALSE;
}

STDMETHODIMP CMediaSample::SetPreroll(BOOL isPreroll) {
    return mark(AM_SAMPLE_PREROLL, isPreroll != FALSE);
}

STDMETHODIMP_(LONG) CMediaSample::GetActualDataLength() {
    return m_properties.lActual;
}

STDMETHODIMP CMediaSample::SetActualDataLength(LONG length) {
    if (length < 0 || length > m_properties.cbBuffer)
        return VFW_E_BUFFER_OVERFLOW;
    m_properties.lActual = length;
    return S_OK;
}

STDMETHODIMP CMediaSample::GetMediaType(AM_MEDIA_TYPE** type) {
    if (type == nullptr)
        return E_POINTER;
    *type = nullptr;
    if (!has(AM_SAMPLE_TYPECHANGED))
        return S_FALSE;
    *type = m_type.allocateCopy();
    return *type != nullptr ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP CMediaSample::SetMediaType(AM_MEDIA_TYPE* type) {
    if (type != nullptr) {
        if (const HRESULT result = m_type.assign(*type); FAILED(result))
            return result;
        m_properties.pMediaType = const_cast<AM_MEDIA_TYPE*>(&m_type.get());
    } else {
        m_type.reset();
        m_properties.pMediaType = nullptr;
    }
    return mark(AM_SAMPLE_TYPECHANGED, type != nullptr);
}

STDMETHODIMP CMediaSample::IsDiscontinuity() {
    return has(AM_SAMPLE_DATADISCONTINUITY) ? S_OK : S_FALSE;
}

STDMETHODIMP CMediaSample::SetDiscontinuity(BOOL isDiscontinuity) {
    return mark(AM_SAMPLE_DATADISCONTINUITY, isDiscontinuity != FALSE);
}

STDMETHODIMP CMediaSample::GetMediaTime(LONGLONG* start, LONGLONG* stop) {
    if (start == nullptr || stop == nullptr)
        return E_POINTER;
    if (!m_hasMediaTime)
        return VFW_E_MEDIA_TIME_NOT_SET;
    *start = m_mediaStart;
    *stop = m_mediaStop;
    return S_OK;
}

STDMETHODIMP CMediaSample::SetMediaTime(LONGLONG* start, LONGLONG* stop) {
    if (start != nullptr && stop == nullptr)
        return E_POINTER;
    m_hasMediaTime = start != nullptr;
    if (m_hasMediaTime) {
        m_mediaStart = *start;
        m_mediaStop = *stop;
    }
    return S_OK;
}

STDMETHODIMP CMediaSample::GetProperties(DWORD size, BYTE* properties) {
    if (properties == nullptr)
        return E_POINTER;
    if (size < sizeof(m_properties.cbData))
        return E_INVALIDARG;
    std::memcpy(properties, &m_properties, std::min<std::size_t>(size, sizeof(m_properties)));
    return S_OK;
}

STDMETHODIMP CMediaSample::SetProperties(DWORD size, const BYTE* properties) {
    if (properties == nullptr)
        return E_POINTER;
    if (size < sizeof(m_properties.cbData))
        return E_INVALIDARG;
    AM_SAMPLE2_PROPERTIES wanted = m_properties;
    std::memcpy(&wanted, properties, std::min<std::size_t>(size, sizeof(wanted)));
    if (wanted.lActual < 0 || wanted.lActual > m_properties.cbBuffer)
        return VFW_E_BUFFER_OVERFLOW;
    if (wanted.pbBuffer != m_properties.pbBuffer || wanted.cbBuffer != m_properties.cbBuffer)
        return E_INVALIDARG;
    const bool typeChanged =
        (wanted.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0 && wanted.pMediaType != nullptr;
    if (const HRESULT result = SetMediaType(typeChanged ? wanted.pMediaType : nullptr); FAILED(result))
        return result;
    wanted.cbData = sizeof(m_properties);
    wanted.pMediaType = m_properties.pMediaType;
    wanted.dwSampleFlags = (wanted.dwSampleFlags & ~DWORD{AM_SAMPLE_TYPECHANGED}) |
                           (typeChanged ? DWORD{AM_SAMPLE_TYPECHANGED} : 0);
    m_properties = wanted;
    return S_OK;
}

HRESULT CMediaSample::mark(DWORD flag, bool value) noexcept {
    m_properties.dwSampleFlags =
        value ? m_properties.dwSampleFlags | flag : m_properties.dwSampleFlags & ~flag;
    return S_OK;
}

} // namespace tarvo::dshow
