#include "accelerator/AcceleratorFilter.h"

#include "accelerator/FrameCopy.h"
#include "diagnostics/LogLine.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace tarvo::accelerator {
namespace {

constexpr const char* moduleTag = "TvVideoTransform";
/// The whole module is configured under the name of its main class.
constexpr const char* configurationKey = "TARVO Dewarping Transform DMO";
constexpr const char* friendlyName = "TARVO Accelerator Filter";

diagnostics::ObjectLog registered(diagnostics::Log& log) {
    const diagnostics::ObjectLog objectLog{log, log.Register(moduleTag, configurationKey)};
    TARVO_LOG(log, diagnostics::LogCategory::information, objectLog.instanceId, friendlyName, "%s",
              "initializing");
    return objectLog;
}

} // namespace

CAcceleratorFilter::CAcceleratorFilter(com::Outer outer, diagnostics::Log& log)
    : CObjectOn(outer), m_log(registered(log)), m_inputPin(*this), m_outputPin(*this, m_log) {
    setPins({&m_inputPin, &m_outputPin});
}

void CAcceleratorFilter::finalRelease() noexcept {
    // A host that forgot it must not leave a thread behind.
    Stop();
    CObjectOn::finalRelease();
}

STDMETHODIMP CAcceleratorFilter::get_Settings(LONG* theSettings) {
    if (theSettings == nullptr)
        return E_POINTER;
    *theSettings = m_settings;
    return S_OK;
}

STDMETHODIMP CAcceleratorFilter::put_Settings(LONG theSettings) {
    m_settings = theSettings;
    return S_OK;
}

void CAcceleratorFilter::inputConnected() {
    m_outputPin.typesChanged();
    if (m_outputPin.isConnected())
        refreshFormats();
}

void CAcceleratorFilter::inputDisconnected() noexcept {
    m_outputPin.typesChanged();
}

void CAcceleratorFilter::outputConnected() {
    if (m_inputPin.isConnected())
        refreshFormats();
}

void CAcceleratorFilter::logUnexpectedType() const noexcept {
    try {
        TARVO_LOG(m_log.log, diagnostics::LogCategory::error, m_log.instanceId, friendlyName, "%s",
                  "Unexpected media type!");
    } catch (...) { // NOLINT(bugprone-empty-catch): logging never fails its caller
    }
}

void CAcceleratorFilter::refreshFormats() {
    const auto input = readFrameFormat(m_inputPin.connectionType());
    const auto output = readFrameFormat(m_outputPin.connectionType());
    if (!input || !output)
        logUnexpectedType();
    const std::lock_guard lock(m_deliveryLock);
    m_input = input.value_or(FrameFormat{});
    m_output = output.value_or(FrameFormat{});
}

HRESULT CAcceleratorFilter::inputTypeChanged(const AM_MEDIA_TYPE& type) {
    const auto input = readFrameFormat(type);
    if (!input) {
        logUnexpectedType();
        return E_FAIL;
    }
    const std::lock_guard lock(m_deliveryLock);
    const HRESULT result = m_newType.assign(type);
    if (FAILED(result))
        return result;
    m_hasNewType = true;
    m_input = *input;
    return S_OK;
}

bool CAcceleratorFilter::takesFrames() const {
    if (isStopped())
        return false;
    const std::lock_guard lock(m_deliveryLock);
    return m_isActive;
}

bool CAcceleratorFilter::acceptsTypeOf(IMediaSample& sample) {
    AM_MEDIA_TYPE* brought = nullptr;
    if (sample.GetMediaType(&brought) != S_OK || brought == nullptr)
        return true;
    dshow::CPinType type;
    type.attachAllocated(brought);
    com::ComPtr<IPin> downstream;
    {
        const std::lock_guard guard(lock());
        downstream = com::ComPtr<IPin>(m_outputPin.connected());
    }
    return downstream && downstream->QueryAccept(&type.get()) == S_OK;
}

HRESULT CAcceleratorFilter::starting() {
    if (!m_outputPin.isConnected() || m_thread.joinable())
        return S_OK;
    const std::lock_guard lock(m_deliveryLock);
    m_lastInputStart.reset();
    m_isSampleWaiting = m_hasNoBuffer = false;
    m_isEndOfStream = m_isEndDelivered = m_isFlushing = false;
    m_held = {};
    m_newSegment.reset();
    m_lateness100ns = 0;
    m_thread = std::thread([this] { deliverFrames(); });
    m_isActive = true;
    return S_OK;
}

void CAcceleratorFilter::stopped() noexcept {
    {
        const std::lock_guard lock(m_deliveryLock);
        m_isActive = false;
        m_sampleArrived.notify_all();
        m_copyDone.notify_all();
        m_bufferReady.notify_all();
    }
    if (std::thread ending = std::exchange(m_thread, {}); ending.joinable())
        ending.join();
    // Who is still in Receive leaves now; the next stream shall not find it waiting.
    const std::lock_guard receive(m_receiveLock);
    Lock lock(m_deliveryLock);
    letGoOfHeld(lock);
}

HRESULT CAcceleratorFilter::streamEnded() {
    const std::lock_guard lock(m_deliveryLock);
    m_isEndOfStream = true;
    m_sampleArrived.notify_all();
    m_copyDone.notify_all();
    return S_OK;
}

HRESULT CAcceleratorFilter::flushBegan() {
    {
        const std::lock_guard lock(m_deliveryLock);
        m_isFlushing = true;
        ++m_flushes;
        m_newSegment.reset();
        m_sampleArrived.notify_all();
        m_bufferReady.notify_all();
    }
    // Frees the delivery thread if it is held up downstream.
    return m_outputPin.isConnected() ? m_outputPin.deliverBeginFlush() : S_OK;
}

HRESULT CAcceleratorFilter::flushEnds() {
    const std::lock_guard delivering(m_deliveringLock);
    const HRESULT result = m_outputPin.isConnected() ? m_outputPin.deliverEndFlush() : S_OK;
    const std::lock_guard lock(m_deliveryLock);
    m_isFlushing = false;
    // What comes next is a stream of its own, with its own end.
    m_isEndOfStream = m_isEndDelivered = false;
    m_lastInputStart.reset();
    m_sampleArrived.notify_all();
    return result;
}

HRESULT CAcceleratorFilter::segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    {
        const std::lock_guard lock(m_deliveryLock);
        if (m_isActive) {
            // Behind the frames that are still to be delivered.
            m_newSegment = Segment{start, stop, rate};
            return S_OK;
        }
    }
    return m_outputPin.isConnected() ? m_outputPin.deliverNewSegment(start, stop, rate) : S_OK;
}

void CAcceleratorFilter::Receive(IMediaSample& sample) {
    const std::lock_guard receive(m_receiveLock);
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = sample.GetTime(&start, &stop);
    const auto known = [](bool isKnown, REFERENCE_TIME time) {
        return isKnown ? std::optional<std::int64_t>(time) : std::nullopt;
    };

    Lock lock(m_deliveryLock);
    if (!m_isActive || m_isFlushing || m_isEndOfStream)
        return;
    if (SUCCEEDED(times))
        m_lastInputStart = start;
    m_isSampleWaiting = true;
    m_sampleArrived.notify_all();
    const auto isReady = [&] { return m_held.sample && !m_held.isCopied; };
    m_bufferReady.wait(lock, [&] { return !m_isActive || m_isFlushing || m_hasNoBuffer || isReady(); });
    m_isSampleWaiting = false;
    if (!m_isActive || m_isFlushing || !isReady())
        return;
    copyInto(m_held, sample, known(SUCCEEDED(times), start),
             known(SUCCEEDED(times) && times != VFW_S_NO_STOP_TIME, stop));
    m_copyDone.notify_all();
}

void CAcceleratorFilter::copyInto(Held& held, IMediaSample& sample, std::optional<std::int64_t> start,
                                  std::optional<std::int64_t> stop) {
    IMediaSample& target = *held.sample;
    target.SetTime(start ? &*start : nullptr, stop ? &*stop : nullptr);
    target.SetSyncPoint(sample.IsSyncPoint() == S_OK);
    target.SetPreroll(sample.IsPreroll() == S_OK);
    target.SetDiscontinuity(sample.IsDiscontinuity() == S_OK);

    // What follows may want its rows otherwise from this buffer on; else the source's new type is passed on.
    dshow::CPinType newType;
    AM_MEDIA_TYPE* wanted = nullptr;
    if (target.GetMediaType(&wanted) == S_OK)
        newType.attachAllocated(wanted);
    if (wanted == nullptr && m_hasNewType && SUCCEEDED(newType.assign(m_newType.get())))
        target.SetMediaType(const_cast<AM_MEDIA_TYPE*>(&newType.get()));
    if (wanted != nullptr || m_hasNewType) {
        if (const auto output = readFrameFormat(newType.get()); output)
            m_output = *output;
        else
            logUnexpectedType();
    }
    m_hasNewType = false;

    BYTE* from = nullptr;
    BYTE* to = nullptr;
    const LONG available = std::min(sample.GetActualDataLength(), sample.GetSize());
    const LONG room = target.GetSize();
    if (SUCCEEDED(sample.GetPointer(&from)) && SUCCEEDED(target.GetPointer(&to)) && from != nullptr &&
        to != nullptr && available > 0 && room > 0) {
        copyFrame(std::as_bytes(std::span(from, static_cast<std::size_t>(available))), m_input,
                  std::as_writable_bytes(std::span(to, static_cast<std::size_t>(room))), m_output);
    }
    target.SetActualDataLength(static_cast<LONG>(std::min<std::int64_t>(m_output.imageBytes, room)));

    held.isCopied = true;
    held.flushes = m_flushes;
    held.start = start;
    held.segment = std::exchange(m_newSegment, std::nullopt);
}

} // namespace tarvo::accelerator
