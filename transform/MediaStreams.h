#pragma once

#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"
#include "transform/FrameProducer.h"
#include "transform/StreamLock.h"
#include "transform/TransformSettings.h"
#include "transform/ViewRenderer.h"
#include "transform/streaming/QualityControl.h"
#include "transform/streaming/StreamOwner.h"
#include "transform/streaming/StreamTypes.h"
#include "transform/streaming/TypeNegotiation.h"

#include <mutex>

namespace tarvo::transform {

/// The transform as a media object: one stream in, one out. Methods of IMediaObject's names have its
/// contracts, under the lock of the streams.
///
/// What would pull the ground from under a frame that is being made - from a sink or from a buffer of the
/// host's, on the same thread - is refused with E_UNEXPECTED.
class CMediaStreams final : private IStreamOwner {
public:
    /// `controllingUnknown` is not counted.
    CMediaStreams(IUnknown& controllingUnknown, CTransformSettings& settings, StreamSettings& streamSettings,
                  CViewRenderer& renderer, CTransformEvents& events, diagnostics::ObjectLog log)
        : m_settings(settings), m_renderer(renderer), m_producer(renderer, streamSettings, events, log),
          m_negotiation(*this, streamSettings, log),
          m_quality(controllingUnknown, m_producer.pacing(), streamSettings, m_producer.cachedFrame(), log) {}
    CMediaStreams(const CMediaStreams&) = delete;
    CMediaStreams& operator=(const CMediaStreams&) = delete;

    /// Runs `call(CStreamTypes&)`, which leaves streams and frames as they are, under the lock.
    template<class Call>
    HRESULT ask(const Call& call) {
        const std::lock_guard lock(m_lock);
        return call(m_types);
    }
    /// The same for what may change them.
    template<class Call>
    HRESULT change(const Call& call) {
        const std::lock_guard lock(m_lock);
        return m_isBusy ? E_UNEXPECTED : call(m_types);
    }

    HRESULT GetInputStatus(DWORD stream, DWORD* flags);
    HRESULT Discontinuity(DWORD stream);
    HRESULT ProcessInput(DWORD stream, IMediaBuffer* buffer, DWORD flags, REFERENCE_TIME time,
                         REFERENCE_TIME duration);
    HRESULT ProcessOutput(DWORD flags, DWORD count, DMO_OUTPUT_DATA_BUFFER* buffers, DWORD* status);
    /// E_FAIL for what was not locked.
    HRESULT Lock(LONG isLocking);

    /// Any thread, without the lock.
    bool isInputTypeSet() const { return m_types.isInputTypeSet(); }
    CQualityControl& quality() { return m_quality; }
    CFrameProducer& producer() { return m_producer; }

private:
    /// While somebody else's code runs in the middle of a call.
    class CBusy;

    ViewFacts viewFacts() override;
    bool hasDevice() override;
    HRESULT createDevice() override;
    void releaseRenderResources() override;
    void inputChecked() override;
    void outputChecked() override;
    void flushStream() override;
    void freeCachedFrame() override;
    void releaseCurrentImage() override;

    CTransformSettings& m_settings;
    CViewRenderer& m_renderer;
    CStreamLock m_lock;
    bool m_isBusy = false;
    CFrameProducer m_producer;
    CTypeNegotiation m_negotiation;
    CStreamTypes m_types{*this, m_negotiation};
    CQualityControl m_quality;
};

} // namespace tarvo::transform
