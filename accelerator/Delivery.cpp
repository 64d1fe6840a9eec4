// The delivery thread of the accelerator filter.

#include "accelerator/AcceleratorFilter.h"

#include <chrono>
#include <limits>
#include <utility>

namespace tarvo::accelerator {
namespace {

/// How long the thread waits before it asks for a buffer again that it did not get.
constexpr std::chrono::milliseconds retryInterval{5};
/// No fill frames while frames are shown later than this: they would make it worse.
constexpr std::int64_t lateness100nsForFillFrames = 3'500'000;

} // namespace

void CAcceleratorFilter::deliverFrames() noexcept {
    Lock lock(m_deliveryLock);
    m_sampleArrived.wait(lock, [&] { return !m_isActive || m_isSampleWaiting || m_isEndOfStream; });
    while (m_isActive) {
        if (m_isEndOfStream) {
            deliverEnd(lock);
            m_sampleArrived.wait(lock, [&] { return !m_isActive || !m_isEndOfStream; });
            continue;
        }
        com::ComPtr<IMediaSample> buffer;
        lock.unlock();
        const HRESULT result = m_outputPin.deliveryBuffer(buffer);
        lock.lock();
        m_hasNoBuffer = FAILED(result) || !buffer;
        if (m_hasNoBuffer) {
            m_bufferReady.notify_all();
            m_sampleArrived.wait_for(lock, retryInterval, [&] { return !m_isActive; });
            continue;
        }
        m_held = {};
        m_held.sample = std::move(buffer);
        m_bufferReady.notify_all();
        m_copyDone.wait(lock, [&] { return !m_isActive || m_held.isCopied || m_isEndOfStream; });
        // A buffer into which nothing was copied shows something old, or nothing.
        if (m_held.isCopied)
            deliverHeld(lock);
        letGoOfHeld(lock);
    }
}

void CAcceleratorFilter::deliverHeld(Lock& lock) {
    lock.unlock();
    HRESULT result = E_FAIL;
    {
        const std::lock_guard delivering(m_deliveringLock);
        lock.lock();
        const bool isWanted = m_isActive && !isStale(m_held);
        const std::optional<Segment> segment = m_held.segment;
        lock.unlock();
        if (isWanted) {
            if (segment)
                m_outputPin.deliverNewSegment(segment->start, segment->stop, segment->rate);
            result = m_outputPin.deliver(*m_held.sample);
        }
    }
    lock.lock();
    // Who refused a frame does not want it twice.
    if (result == S_OK)
        deliverFillFrame(lock);
}

void CAcceleratorFilter::deliverFillFrame(Lock& lock) {
    const std::int64_t duration = m_input.frameDuration100ns;
    const bool isWanted = (m_settings & TarvoVideoTransformLib::insertFillFrames) != 0;
    if (m_isEndOfStream || m_lateness100ns >= lateness100nsForFillFrames || duration < 1 || !isWanted ||
        !m_held.start)
        return;
    m_sampleArrived.wait(
        lock, [&] { return !m_isActive || m_isSampleWaiting || m_isEndOfStream || isStale(m_held); });
    if (!m_isActive || m_isEndOfStream || isStale(m_held) || !m_lastInputStart)
        return;
    // In halves of a frame, and by floating point: times may be anything.
    REFERENCE_TIME start = *m_held.start;
    REFERENCE_TIME stop = *m_lastInputStart;
    const bool isLate =
        (static_cast<double>(stop) - static_cast<double>(start)) * 2.0 > static_cast<double>(duration) * 3.0;
    if (!isLate || start > std::numeric_limits<std::int64_t>::max() - duration)
        return;
    start += duration;
    m_held.sample->SetTime(&start, &stop);
    lock.unlock();
    {
        const std::lock_guard delivering(m_deliveringLock);
        lock.lock();
        const bool isStillWanted = m_isActive && !isStale(m_held);
        lock.unlock();
        if (isStillWanted)
            m_outputPin.deliver(*m_held.sample);
    }
    lock.lock();
}

void CAcceleratorFilter::deliverEnd(Lock& lock) {
    if (std::exchange(m_isEndDelivered, true))
        return;
    const std::optional<Segment> segment = std::exchange(m_newSegment, std::nullopt);
    const std::uint64_t flushes = m_flushes;
    lock.unlock();
    {
        const std::lock_guard delivering(m_deliveringLock);
        lock.lock();
        const bool isWanted = m_isActive && !m_isFlushing && flushes == m_flushes;
        lock.unlock();
        if (isWanted && segment)
            m_outputPin.deliverNewSegment(segment->start, segment->stop, segment->rate);
        if (isWanted)
            m_outputPin.deliverEndOfStream();
    }
    lock.lock();
}

void CAcceleratorFilter::letGoOfHeld(Lock& lock) {
    // Outside the lock: the buffer's allocator is another's.
    Held ending = std::exchange(m_held, {});
    lock.unlock();
    ending.sample.reset();
    lock.lock();
}

} // namespace tarvo::accelerator
