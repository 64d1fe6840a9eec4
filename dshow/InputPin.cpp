#include "dshow/InputPin.h"

#include "com/Guarded.h"
#include "dshow/BaseFilter.h"
#include "dshow/MemoryAllocator.h"

namespace tarvo::dshow {

HRESULT CInputPin::queryMore(REFIID iid, void** object) {
    if (iid != __uuidof(IMemInputPin))
        return CPin::queryMore(iid, object);
    *object = static_cast<IMemInputPin*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP CInputPin::Connect(IPin*, const AM_MEDIA_TYPE*) {
    return E_UNEXPECTED;
}

STDMETHODIMP CInputPin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (connector == nullptr || type == nullptr)
        return E_POINTER;
    return com::guarded([&]() -> HRESULT {
        const std::lock_guard lock(filter().lock());
        if (isConnected())
            return VFW_E_ALREADY_CONNECTED;
        if (!filter().isStopped())
            return VFW_E_NOT_STOPPED;
        PIN_DIRECTION direction = PINDIR_INPUT;
        if (FAILED(connector->QueryDirection(&direction)) || direction != PINDIR_OUTPUT)
            return VFW_E_INVALID_DIRECTION;
        if (checkMediaType(*type) != S_OK)
            return VFW_E_TYPE_NOT_ACCEPTED;
        HRESULT result = keepConnection(*connector, *type);
        if (SUCCEEDED(result))
            result = connectionMade();
        if (FAILED(result))
            dropConnection();
        return FAILED(result) ? result : S_OK;
    });
}

STDMETHODIMP CInputPin::EndOfStream() {
    return com::guarded([&]() -> HRESULT {
        if (filter().isStopped())
            return VFW_E_WRONG_STATE;
        // What follows a flush that has not ended is not the end of this stream.
        return isFlushing() ? S_FALSE : streamEnded();
    });
}

STDMETHODIMP CInputPin::BeginFlush() {
    m_isFlushing = true;
    return com::guarded([&] { return flushBegan(); });
}

STDMETHODIMP CInputPin::EndFlush() {
    const HRESULT result = com::guarded([&] { return flushEnds(); });
    m_isFlushing = false;
    return result;
}

STDMETHODIMP CInputPin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    return com::guarded([&] { return segmentBegan(start, stop, rate); });
}

STDMETHODIMP CInputPin::GetAllocator(IMemAllocator** allocator) {
    if (allocator == nullptr)
        return E_POINTER;
    *allocator = nullptr;
    return com::guarded([&]() -> HRESULT {
        const std::lock_guard lock(filter().lock());
        if (!m_allocator)
            m_allocator = com::makeObject<CMemoryAllocator>();
        return m_allocator.copyTo(allocator);
    });
}

STDMETHODIMP CInputPin::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) {
    if (allocator == nullptr)
        return E_POINTER;
    com::ComPtr<IMemAllocator> other(allocator);
    const std::lock_guard lock(filter().lock());
    std::swap(m_allocator, other);
    m_isReadOnly = readOnly != FALSE;
    return S_OK;
}

STDMETHODIMP CInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) {
    return E_NOTIMPL;
}

STDMETHODIMP CInputPin::Receive(IMediaSample* sample) {
    if (sample == nullptr)
        return E_POINTER;
    return com::guarded([&] { return received(*sample); });
}

STDMETHODIMP CInputPin::ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) {
    if (processed == nullptr || (samples == nullptr && count > 0))
        return E_POINTER;
    *processed = 0;
    HRESULT result = S_OK;
    while (*processed < count && result == S_OK) {
        result = Receive(samples[*processed]);
        if (result == S_OK)
            ++*processed;
    }
    return result;
}

STDMETHODIMP CInputPin::ReceiveCanBlock() {
    return S_OK;
}

HRESULT CInputPin::followType(IMediaSample& sample) {
    AM_MEDIA_TYPE* brought = nullptr;
    if (sample.GetMediaType(&brought) != S_OK || brought == nullptr)
        return S_OK;
    CPinType type;
    type.attachAllocated(brought);
    const std::lock_guard lock(filter().lock());
    if (checkMediaType(type.get()) != S_OK)
        return VFW_E_INVALIDMEDIATYPE;
    const HRESULT result = replaceType(type.get());
    return SUCCEEDED(result) ? typeChanged() : result;
}

} // namespace tarvo::dshow
