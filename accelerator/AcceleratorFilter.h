#pragma once

#include "accelerator/FrameFormat.h"
#include "accelerator/VideoInputPin.h"
#include "accelerator/VideoOutputPin.h"
#include "com/OwnTypeLibrary.h"
#include "diagnostics/Log.h"
#include "diagnostics/ObjectLog.h"
#include "dshow/BaseFilter.h"
#include "interfaces/TarvoVideoTransform.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

namespace tarvo::accelerator {

/// A filter that copies each frame into a buffer of whoever follows and delivers it from a thread of its own,
/// so that a source goes on while the frame is worked on. It changes no pixel, only how rows are padded and
/// ordered. With `insertFillFrames` a frame is delivered once more when the next comes late by more than half
/// a frame.
///
/// Three threads meet. The source's (Receive) and the delivery thread take turns over the one buffer: a frame
/// arrived, the buffer is ready, the copy is done. A third changes the state. All that they share is guarded
/// by the delivery lock, each wait is for a condition under it, and stopping makes every such condition true:
/// nobody stays behind. Order of locks: the filter's, the one of Receive, the one of delivering, the delivery
/// lock; nothing is called outside the filter under the last.
class CAcceleratorFilter final
    : public com::CObject<com::Dual<IAccelerator>,
                          com::Implementing<dshow::CBaseFilter, IBaseFilter, IMediaFilter, IPersist>> {
public:
    explicit CAcceleratorFilter(com::Outer outer = {}, diagnostics::Log& log = diagnostics::moduleLog);

    STDMETHODIMP get_Settings(LONG* theSettings) override;
    STDMETHODIMP put_Settings(LONG theSettings) override;

    // For the pins.

    const dshow::CPin& inputPin() const noexcept { return m_inputPin; }

    void inputConnected();
    void inputDisconnected() noexcept;
    void outputConnected();
    HRESULT inputTypeChanged(const AM_MEDIA_TYPE& type);

    /// Whether there is a stream to put a frame into.
    bool takesFrames() const;
    /// Whether a type that the sample brings, if it brings one, is welcome downstream.
    bool acceptsTypeOf(IMediaSample& sample);
    /// Copies the frame once there is a buffer; it is dropped when the stream ends, is flushed or has no
    /// buffer to give.
    void Receive(IMediaSample& sample);
    HRESULT streamEnded();
    HRESULT flushBegan();
    HRESULT flushEnds();
    HRESULT segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

protected:
    ~CAcceleratorFilter() override = default;

    CLSID classId() const noexcept override { return CLSID_AcceleratorFilter; }
    HRESULT starting() override;
    void stopped() noexcept override;
    void finalRelease() noexcept override;

private:
    using Lock = std::unique_lock<std::mutex>;

    struct Segment {
        REFERENCE_TIME start, stop;
        double rate;
    };

    /// The buffer that the delivery thread has, and what is in it.
    struct Held {
        com::ComPtr<IMediaSample> sample;
        bool isCopied = false;
        std::uint64_t flushes = 0; ///< how many there had been when the frame was copied
        std::optional<std::int64_t> start;
        std::optional<Segment> segment; ///< that begins with the frame
    };

    void logUnexpectedType() const noexcept;
    void refreshFormats();

    void copyInto(Held& held, IMediaSample& sample, std::optional<std::int64_t> start,
                  std::optional<std::int64_t> stop);

    void deliverFrames() noexcept;
    void deliverHeld(Lock& lock);
    void deliverFillFrame(Lock& lock);
    void deliverEnd(Lock& lock);
    void letGoOfHeld(Lock& lock);
    bool isStale(const Held& held) const noexcept { return held.flushes != m_flushes || m_isFlushing; }

    diagnostics::ObjectLog m_log;
    CVideoInputPin m_inputPin;
    CVideoOutputPin m_outputPin;
    std::atomic<LONG> m_settings{0};
    std::thread m_thread;

    // One frame at a time; held for the whole of Receive.
    std::mutex m_receiveLock;
    // Held from the decision to deliver until the frame is delivered: after a flush nothing old comes.
    std::mutex m_deliveringLock;

    // The delivery lock, and all that it guards.
    mutable std::mutex m_deliveryLock;
    std::condition_variable m_sampleArrived;
    std::condition_variable m_bufferReady;
    std::condition_variable m_copyDone;
    FrameFormat m_input;
    FrameFormat m_output;
    dshow::CPinType m_newType; ///< that the next frame brings
    bool m_hasNewType = false;
    bool m_isActive = false; ///< from the thread's start until it shall end
    bool m_isSampleWaiting = false;
    bool m_hasNoBuffer = false; ///< the allocator failed
    Held m_held;
    bool m_isEndOfStream = false;
    bool m_isEndDelivered = false;
    bool m_isFlushing = false;
    std::uint64_t m_flushes = 0;
    std::optional<Segment> m_newSegment;
    std::optional<std::int64_t> m_lastInputStart;
    /// How late frames are shown, in units of 100 ns. Nothing raises it yet.
    std::int64_t m_lateness100ns = 0;
};

} // namespace tarvo::accelerator
