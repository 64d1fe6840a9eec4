#include "tests/support/graph/DmoWrapper.h"

#include "com/Guarded.h"

#include <algorithm>

namespace tarvo::tests {
namespace {

/// The two records have one layout and are types of their own only to the language.
const DMO_MEDIA_TYPE* asObjects(const AM_MEDIA_TYPE& type) noexcept {
    return reinterpret_cast<const DMO_MEDIA_TYPE*>(&type);
}

/// Asks the object for one of the types that it offers.
template<class Ask>
HRESULT offeredType(LONG position, dshow::CPinType& type, const Ask& ask) {
    if (position < 0)
        return E_INVALIDARG;
    const HRESULT result = ask(static_cast<DWORD>(position), reinterpret_cast<DMO_MEDIA_TYPE*>(type.put()));
    return SUCCEEDED(result) ? S_OK : VFW_S_NO_MORE_ITEMS;
}

/// A sample as the object takes it.
class CSampleBuffer final : public com::CObject<IMediaBuffer> {
public:
    /// An output sample has nothing in it yet.
    CSampleBuffer(IMediaSample& sample, bool isInput)
        : m_sample(&sample), m_length(isInput ? static_cast<DWORD>(sample.GetActualDataLength()) : 0) {}

    STDMETHODIMP SetLength(DWORD length) override {
        const HRESULT result = m_sample->SetActualDataLength(static_cast<LONG>(length));
        if (SUCCEEDED(result))
            m_length = length;
        return result;
    }
    STDMETHODIMP GetMaxLength(DWORD* length) override {
        *length = static_cast<DWORD>(m_sample->GetSize());
        return S_OK;
    }
    STDMETHODIMP GetBufferAndLength(BYTE** bytes, DWORD* length) override {
        if (length != nullptr)
            *length = m_length;
        return bytes != nullptr ? m_sample->GetPointer(bytes) : S_OK;
    }

private:
    com::ComPtr<IMediaSample> m_sample;
    DWORD m_length;
};

} // namespace

CDmoWrapper::CDmoWrapper(IClassFactory& factory) {
    setPins({&m_input, &m_output});
    com::throwIfFailed(factory.CreateInstance(controllingUnknown(), __uuidof(IUnknown), m_inner.putVoid()));
    const auto find = [&](auto*& found, REFIID iid) {
        void* answer = nullptr;
        com::throwIfFailed(m_inner->QueryInterface(iid, &answer));
        found = static_cast<std::remove_reference_t<decltype(found)>>(answer);
        found->Release();
    };
    find(m_media, __uuidof(IMediaObject));
    find(m_quality, __uuidof(IDMOQualityControl));
}

HRESULT CDmoWrapper::queryOwn(REFIID iid, void** object) noexcept {
    const HRESULT result = CObjectOn::queryOwn(iid, object);
    return result == E_NOINTERFACE && m_inner ? m_inner->QueryInterface(iid, object) : result;
}

void CDmoWrapper::finalRelease() noexcept {
    Stop();
    CObjectOn::finalRelease();
}

HRESULT CDmoWrapper::starting() {
    if (!m_input.isConnected() || !m_output.isConnected())
        return S_OK;
    const HRESULT result = m_media->AllocateStreamingResources();
    return SUCCEEDED(result) ? m_quality->SetStatus(DMO_QUALITY_STATUS_ENABLED) : result;
}

void CDmoWrapper::stopped() noexcept {
    flush();
    m_media->FreeStreamingResources();
    m_quality->SetStatus(0);
}

void CDmoWrapper::flush() noexcept {
    const std::lock_guard stream(m_streamLock);
    m_media->Flush();
}

HRESULT CDmoWrapper::processOutput() {
    for (bool isIncomplete = true; isIncomplete;) {
        com::ComPtr<IMediaSample> sample;
        HRESULT result = m_output.deliveryBuffer(sample);
        if (FAILED(result))
            return result;
        const auto buffer = com::makeObject<CSampleBuffer>(*sample, false);
        DMO_OUTPUT_DATA_BUFFER data{};
        data.pBuffer = buffer.get();
        DWORD status = 0;
        result = m_media->ProcessOutput(0, 1, &data, &status);
        // S_FALSE: it needs more input first.
        if (result != S_OK)
            return result == S_FALSE ? S_OK : result;
        const auto has = [&](DWORD flag) { return (data.dwStatus & flag) != 0; };
        isIncomplete = has(DMO_OUTPUT_DATA_BUFFERF_INCOMPLETE);
        REFERENCE_TIME start = data.rtTimestamp;
        REFERENCE_TIME stop = start + data.rtTimelength;
        sample->SetTime(has(DMO_OUTPUT_DATA_BUFFERF_TIME) ? &start : nullptr,
                        has(DMO_OUTPUT_DATA_BUFFERF_TIMELENGTH) ? &stop : nullptr);
        sample->SetSyncPoint(has(DMO_OUTPUT_DATA_BUFFERF_SYNCPOINT));
        result = m_output.deliver(*sample);
        if (result != S_OK)
            return result;
    }
    return S_OK;
}

HRESULT CDmoWrapper::processInput(IMediaSample& sample) {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample.GetTime(&start, &stop);
    DWORD flags = 0;
    if (sample.IsSyncPoint() == S_OK)
        flags |= DMO_INPUT_DATA_BUFFERF_SYNCPOINT;
    if (SUCCEEDED(times))
        flags |= DMO_INPUT_DATA_BUFFERF_TIME;
    if (times == S_OK)
        flags |= DMO_INPUT_DATA_BUFFERF_TIMELENGTH;
    const auto buffer = com::makeObject<CSampleBuffer>(sample, true);
    return m_media->ProcessInput(0, buffer.get(), flags, start, stop - start);
}

HRESULT CDmoWrapper::drain() {
    const HRESULT result = m_media->Discontinuity(0);
    return SUCCEEDED(result) ? processOutput() : result;
}

HRESULT CDmoWrapper::CInput::checkMediaType(const AM_MEDIA_TYPE& type) {
    return SUCCEEDED(m_wrapper.m_media->SetInputType(0, asObjects(type), DMO_SET_TYPEF_TEST_ONLY)) ? S_OK
                                                                                                   : S_FALSE;
}

HRESULT CDmoWrapper::CInput::mediaType(LONG position, dshow::CPinType& type) {
    return offeredType(position, type, [&](DWORD index, DMO_MEDIA_TYPE* offered) {
        return m_wrapper.m_media->GetInputType(0, index, offered);
    });
}

HRESULT CDmoWrapper::CInput::typeChanged() {
    return m_wrapper.m_media->SetInputType(0, asObjects(connectionType()), 0);
}

void CDmoWrapper::CInput::connectionEnded() noexcept {
    CInputPin::connectionEnded();
    m_wrapper.m_media->SetInputType(0, nullptr, DMO_SET_TYPEF_CLEAR);
}

HRESULT CDmoWrapper::CInput::received(IMediaSample& sample) {
    const std::lock_guard stream(m_wrapper.m_streamLock);
    if (filter().isStopped())
        return VFW_E_WRONG_STATE;
    if (isFlushing())
        return S_FALSE;
    HRESULT result = followType(sample);
    // What comes before a gap must not be mixed with what comes behind it.
    if (SUCCEEDED(result) && sample.IsDiscontinuity() == S_OK)
        result = m_wrapper.drain();
    if (SUCCEEDED(result))
        result = m_wrapper.processInput(sample);
    return SUCCEEDED(result) ? m_wrapper.processOutput() : result;
}

HRESULT CDmoWrapper::CInput::streamEnded() {
    const std::lock_guard stream(m_wrapper.m_streamLock);
    m_wrapper.drain();
    m_wrapper.m_media->Flush();
    return m_wrapper.m_output.deliverEndOfStream();
}

HRESULT CDmoWrapper::CInput::flushBegan() {
    // Frees the streaming thread if it is held up downstream.
    const HRESULT result = m_wrapper.m_output.deliverBeginFlush();
    m_wrapper.flush();
    return result;
}

HRESULT CDmoWrapper::CInput::flushEnds() {
    return m_wrapper.m_output.deliverEndFlush();
}

HRESULT CDmoWrapper::CInput::segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    return m_wrapper.m_output.deliverNewSegment(start, stop, rate);
}

HRESULT CDmoWrapper::COutput::checkMediaType(const AM_MEDIA_TYPE& type) {
    return SUCCEEDED(m_wrapper.m_media->SetOutputType(0, asObjects(type), DMO_SET_TYPEF_TEST_ONLY)) ? S_OK
                                                                                                    : S_FALSE;
}

HRESULT CDmoWrapper::COutput::mediaType(LONG position, dshow::CPinType& type) {
    return offeredType(position, type, [&](DWORD index, DMO_MEDIA_TYPE* offered) {
        return m_wrapper.m_media->GetOutputType(0, index, offered);
    });
}

HRESULT CDmoWrapper::COutput::connectionMade() {
    const HRESULT result = m_wrapper.m_media->SetOutputType(0, asObjects(connectionType()), 0);
    return SUCCEEDED(result) ? COutputPin::connectionMade() : result;
}

void CDmoWrapper::COutput::connectionEnded() noexcept {
    COutputPin::connectionEnded();
    m_wrapper.m_media->SetOutputType(0, nullptr, DMO_SET_TYPEF_CLEAR);
}

HRESULT CDmoWrapper::COutput::decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) {
    DWORD bytes = 0;
    DWORD alignment = 0;
    HRESULT result = m_wrapper.m_media->GetOutputSizeInfo(0, &bytes, &alignment);
    if (FAILED(result))
        return result;
    wanted.cBuffers = std::max<LONG>(wanted.cBuffers, 1);
    wanted.cbBuffer = std::max<LONG>(wanted.cbBuffer, static_cast<LONG>(bytes));
    wanted.cbAlign = std::max<LONG>(wanted.cbAlign, static_cast<LONG>(alignment));
    ALLOCATOR_PROPERTIES actual{};
    result = allocator.SetProperties(&wanted, &actual);
    return SUCCEEDED(result) && actual.cbBuffer < static_cast<LONG>(bytes) ? E_FAIL : result;
}

HRESULT CDmoWrapper::COutput::passQuality(const Quality& quality) {
    return m_wrapper.m_quality->SetNow(quality.TimeStamp + quality.Late);
}

} // namespace tarvo::tests
