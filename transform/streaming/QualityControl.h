#pragma once

#include "com/ComPtr.h"
#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"
#include "transform/streaming/CachedFrame.h"
#include "transform/streaming/FramePacing.h"
#include "transform/streaming/StreamSettings.h"

#include <cstdint>
#include <limits>
#include <mutex>

namespace tarvo::transform {

/// Answers a late renderer: lowers the output rate and passes the lateness on to the filter upstream.
/// Methods of IDMOQualityControl's names have its contracts.
///
/// Any thread, without either of the object's locks: what the streaming thread writes may be a frame old. A
/// lock of its own is held for arithmetic alone and never while anybody is called.
///
/// Of the media graph it holds the upstream pin's IQualityControl, while enabled. The filter around the
/// object is asked for when it is needed and released at once: a reference to one's own outer object would
/// keep both alive for ever.
class CQualityControl {
public:
    /// `controllingUnknown` is not counted: it is the object's own or its outer's, and outlives this one.
    CQualityControl(IUnknown& controllingUnknown, const CFramePacing& pacing, StreamSettings& settings,
                    CCachedFrame& cachedFrame, diagnostics::ObjectLog log)
        : m_controllingUnknown(controllingUnknown), m_pacing(pacing), m_settings(settings),
          m_cachedFrame(cachedFrame), m_log(log) {}
    CQualityControl(const CQualityControl&) = delete;
    CQualityControl& operator=(const CQualityControl&) = delete;

    /// `now` is the time at which the renderer has just shown the last frame. Always S_OK.
    HRESULT SetNow(REFERENCE_TIME now);
    /// DMO_QUALITY_STATUS_ENABLED or not; other bits mean nothing. Looks for the upstream pin anew, and does
    /// without where there is none. Always S_OK.
    HRESULT SetStatus(DWORD flags);
    HRESULT GetStatus(DWORD* flags) const;

    /// The stream was flushed.
    void flush();

private:
    static constexpr std::int32_t noDeviation = std::numeric_limits<std::int32_t>::min();

    /// What the calls remember, 100-ns units.
    struct State {
        std::int32_t smoothedDeviation = 0;
        std::int32_t maximumDeviation = noDeviation; ///< since the last report
        std::int64_t lastReportTime = 0;
        std::uint32_t lastReportCount = 0; ///< of output frames; survives a flush
    };
    /// What one call found out.
    struct Finding {
        std::int32_t deviation = 0;
        std::int32_t smoothedDeviation = 0;
        double outputFrameRate = 0.0;
        double inputFrameRate = 0.0;
        bool isReportDue = false;
        State reported{}; ///< as they were for the report
        double measuredRate = 0.0;
    };

    Finding judge(std::int64_t now);
    bool lowerOutputRate(Finding& finding);
    void report(const Finding& finding) const;
    com::ComPtr<IQualityControl> findUpstream() const;
    void notify(IQualityControl& upstream, const Finding& finding) const;

    IUnknown& m_controllingUnknown;
    const CFramePacing& m_pacing;
    StreamSettings& m_settings;
    CCachedFrame& m_cachedFrame;
    diagnostics::ObjectLog m_log;

    mutable std::mutex m_lock;
    bool m_isEnabled = false;
    State m_state;
    com::ComPtr<IQualityControl> m_upstream;
};

} // namespace tarvo::transform
