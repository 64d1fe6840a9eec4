#include "tests/support/graph/FrameSource.h"

#include "com/Guarded.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarvo::tests {

CFrameSource::CPin::CPin(CFrameSource& source, const AM_MEDIA_TYPE& type)
    : COutputPin(source, OLESTR("camera")), m_source(source) {
    com::throwIfFailed(m_type.assign(type));
}

HRESULT CFrameSource::CPin::checkMediaType(const AM_MEDIA_TYPE& type) {
    if (m_source.m_refusals > 0) {
        --m_source.m_refusals;
        return S_FALSE;
    }
    return type.majortype == m_type->majortype && type.subtype == m_type->subtype &&
                   type.formattype == m_type->formattype && type.cbFormat == m_type->cbFormat &&
                   std::memcmp(type.pbFormat, m_type->pbFormat, type.cbFormat) == 0
               ? S_OK
               : S_FALSE;
}

HRESULT CFrameSource::CPin::mediaType(LONG position, dshow::CPinType& type) {
    if (position < 0)
        return E_INVALIDARG;
    return position == 0 ? type.assign(m_type.get()) : VFW_S_NO_MORE_ITEMS;
}

HRESULT CFrameSource::CPin::activate() {
    // The thread needs the memory.
    const HRESULT result = COutputPin::activate();
    return SUCCEEDED(result) ? com::guarded([&] { m_source.beginThread(0); }) : result;
}

HRESULT CFrameSource::CPin::decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) {
    const auto frameBytes = static_cast<LONG>(m_type->lSampleSize);
    wanted.cBuffers = std::max<LONG>(wanted.cBuffers, 2);
    wanted.cbBuffer = std::max<LONG>(wanted.cbBuffer, frameBytes);
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT result = allocator.SetProperties(&wanted, &actual);
    return SUCCEEDED(result) && actual.cbBuffer < frameBytes ? E_FAIL : result;
}

HRESULT CFrameSource::CPin::passQuality(const Quality& quality) {
    const std::lock_guard lock(m_source.m_messagesLock);
    m_source.m_messages.push_back(quality);
    return S_OK;
}

CFrameSource::CFrameSource(const AM_MEDIA_TYPE& type, int frameCount,
                           std::function<SourceFrame(int)> makeFrame)
    : m_frameCount(frameCount), m_makeFrame(std::move(makeFrame)), m_pin(*this, type) {
    setPins({&m_pin});
}

std::vector<Quality> CFrameSource::messages() const {
    const std::lock_guard lock(m_messagesLock);
    return m_messages;
}

void CFrameSource::seek(int frame) {
    // Whoever holds the thread up downstream lets go of it now.
    m_pin.deliverBeginFlush();
    endThread();
    m_pin.deliverEndFlush();
    beginThread(frame);
}

void CFrameSource::beginThread(int firstFrame) {
    m_isEnding = false;
    m_thread = std::thread([this, firstFrame] { push(firstFrame); });
}

void CFrameSource::endThread() noexcept {
    m_isEnding = true;
    if (std::thread ending = std::exchange(m_thread, {}); ending.joinable())
        ending.join();
}

void CFrameSource::push(int firstFrame) noexcept {
    HRESULT result = m_pin.deliverNewSegment(firstFrame, m_frameCount, 1.0);
    for (int i = firstFrame; i < m_frameCount && SUCCEEDED(result) && !m_isEnding; ++i)
        result = com::guarded([&] { return pushFrame(m_makeFrame(i)); });
    if (!m_isEnding)
        m_pin.deliverEndOfStream();
}

HRESULT CFrameSource::pushFrame(const SourceFrame& frame) {
    com::ComPtr<IMediaSample> sample;
    BYTE* bytes = nullptr;
    HRESULT result = m_pin.deliveryBuffer(sample);
    if (SUCCEEDED(result))
        result = sample->GetPointer(&bytes);
    if (SUCCEEDED(result))
        result = sample->SetActualDataLength(static_cast<LONG>(frame.bytes.size()));
    if (FAILED(result))
        return result;
    std::ranges::copy(frame.bytes, bytes);
    REFERENCE_TIME start = frame.start;
    REFERENCE_TIME stop = frame.stop;
    sample->SetTime(&start, &stop);
    sample->SetSyncPoint(TRUE);
    sample->SetDiscontinuity(frame.isDiscontinuity);
    return m_pin.deliver(*sample);
}

} // namespace tarvo::tests
