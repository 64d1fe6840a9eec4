#pragma once

#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"
#include "transform/MediaStreams.h"
#include "transform/TransformSettings.h"
#include "transform/ViewRenderer.h"
#include "transform/streaming/StreamSettings.h"

namespace tarvo::transform {

/// What the host sees and sets of the pictures that go out: size, rate, options, and what makes them. As
/// CViewProperties.
class COutputProperties {
public:
    COutputProperties(CTransformSettings& settings, StreamSettings& streamSettings, CViewRenderer& renderer,
                      const CMediaStreams& streams, diagnostics::ObjectLog log)
        : m_settings(settings), m_streamSettings(streamSettings), m_renderer(renderer), m_streams(streams),
          m_log(log) {}

    HRESULT get_OutputWidth(LONG* theWidth);
    HRESULT put_OutputWidth(LONG theWidth);
    HRESULT get_OutputHeight(LONG* theHeight);
    HRESULT put_OutputHeight(LONG theHeight);
    HRESULT get_OutputFrameRate(double* theFrameRate);
    /// What is no number is E_INVALIDARG too.
    HRESULT put_OutputFrameRate(double theFrameRate);
    HRESULT get_Options(LONG* theOptions);
    HRESULT put_Options(LONG theOptions);
    HRESULT CheckDewarpingCapability(VARIANT_BOOL* isCapable);
    HRESULT get_HardwareAccelerationActive(VARIANT_BOOL* isActive);

private:
    HRESULT putSide(const char* property, std::atomic<std::uint32_t>& side, LONG value);

    CTransformSettings& m_settings;
    StreamSettings& m_streamSettings;
    CViewRenderer& m_renderer;
    const CMediaStreams& m_streams;
    diagnostics::ObjectLog m_log;
};

} // namespace tarvo::transform
