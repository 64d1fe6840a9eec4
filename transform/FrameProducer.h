#pragma once

#include "com/ComPtr.h"
#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"
#include "transform/CurrentImage.h"
#include "transform/TransformEvents.h"
#include "transform/ViewRenderer.h"
#include "transform/streaming/CachedFrame.h"
#include "transform/streaming/FramePacing.h"
#include "transform/streaming/NegotiatedFormats.h"
#include "transform/streaming/StreamSettings.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvo::transform {

/// Makes the frames that go out of those that come in: holds an input, and draws, delivers and announces what
/// is shown of it.
///
/// The streaming thread's, under the lock of its streams; the lock of rendering is taken here.
class CFrameProducer {
public:
    CFrameProducer(CViewRenderer& renderer, StreamSettings& settings, CTransformEvents& events,
                   diagnostics::ObjectLog log)
        : m_renderer(renderer), m_settings(settings), m_events(events), m_log(log) {}
    CFrameProducer(const CFrameProducer&) = delete;
    CFrameProducer& operator=(const CFrameProducer&) = delete;

    /// Holds a buffer with something in it from now on; one that is empty is dropped.
    HRESULT holdInput(IMediaBuffer& buffer, DWORD flags, REFERENCE_TIME time, REFERENCE_TIME duration);
    bool isInputHeld() const { return m_pacing.isInputHeld(); }

    // NOLINTNEXTLINE(readability-identifier-naming): spelt as log lines name this step
    /// Makes one output frame. S_FALSE when there is nothing to show. A frame that fails on the way is lost
    /// with its input, and its status is empty.
    HRESULT InternalProcessOutput(DMO_OUTPUT_DATA_BUFFER& buffer, const NegotiatedFormats& formats);

    /// Any thread. The last frame as a bitmap in an array of bytes, and its start time.
    HRESULT getCurrentImage(VARIANT* theImageData, LONGLONG* theTimestamp, LONG theFlags);

    void flush();
    void freeCachedFrame();
    void releaseCurrentImage();

    // For quality control, which reads and asks from its own thread.
    const CFramePacing& pacing() const { return m_pacing; }
    CCachedFrame& cachedFrame() { return m_cachedFrame; }

private:
    /// Where an output frame goes.
    struct Output {
        com::ComPtr<IMediaBuffer> buffer;
        std::span<std::byte> bytes; ///< all that it can hold
    };

    static HRESULT openOutput(IMediaBuffer* buffer, Output& output);
    HRESULT produce(DMO_OUTPUT_DATA_BUFFER& buffer, const Output& output, const NegotiatedFormats& formats);
    HRESULT deliver(const Output& output, const NegotiatedFormats& formats, bool haveSettingsChanged);
    HRESULT deliverThroughCache(const Output& output, std::size_t frameBytes);
    HRESULT loseFrame(DMO_OUTPUT_DATA_BUFFER& buffer, const char* reason);
    /// The input, which from now on is not held, for whoever wants to release it later.
    com::ComPtr<IMediaBuffer> letGoOfInput();

    CViewRenderer& m_renderer;
    StreamSettings& m_settings;
    CTransformEvents& m_events;
    diagnostics::ObjectLog m_log;

    CFramePacing m_pacing;
    CCachedFrame m_cachedFrame;
    CCurrentImage m_currentImage;
    com::ComPtr<IMediaBuffer> m_input;
    std::span<const std::byte> m_inputBytes;
    bool m_isFrameEmitted = false; ///< since the last flush
};

} // namespace tarvo::transform
