#include "transform/OutputProperties.h"

#include "com/Guarded.h"
#include "geometry/Enumerations.h"
#include "transform/OutArgument.h"
#include "transform/PropertyLog.h"

namespace tarvo::transform {

using diagnostics::LogCategory;

HRESULT COutputProperties::get_OutputWidth(LONG* theWidth) {
    return give(theWidth, static_cast<LONG>(m_streamSettings.outputWidth.load()));
}

HRESULT COutputProperties::put_OutputWidth(LONG theWidth) {
    return putSide("OutputWidth", m_streamSettings.outputWidth, theWidth);
}

HRESULT COutputProperties::get_OutputHeight(LONG* theHeight) {
    return give(theHeight, static_cast<LONG>(m_streamSettings.outputHeight.load()));
}

HRESULT COutputProperties::put_OutputHeight(LONG theHeight) {
    return putSide("OutputHeight", m_streamSettings.outputHeight, theHeight);
}

HRESULT COutputProperties::putSide(const char* property, std::atomic<std::uint32_t>& side, LONG value) {
    if (m_streams.isInputTypeSet()) {
        // The same line for the height: those who read logs look for it.
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, property, "%s",
                  "Cannot change output width when input media type is already set");
        return E_FAIL;
    }
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, property, "Set: %i", int{value});
    side = static_cast<std::uint32_t>(value);
    m_streamSettings.isOutputSizeSet = true;
    return S_OK;
}

HRESULT COutputProperties::get_OutputFrameRate(double* theFrameRate) {
    return give(theFrameRate, m_streamSettings.outputFrameRate.load());
}

HRESULT COutputProperties::put_OutputFrameRate(double theFrameRate) {
    if (!(theFrameRate >= 0.0))
        return E_INVALIDARG;
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "OutputFrameRate", "Set: %.1f",
              theFrameRate);
    m_streamSettings.outputFrameRate = theFrameRate;
    m_streamSettings.isOutputRateLimited = theFrameRate > 0.0;
    return S_OK;
}

HRESULT COutputProperties::get_Options(LONG* theOptions) {
    return give(theOptions, static_cast<LONG>(m_streamSettings.options.load()));
}

HRESULT COutputProperties::put_Options(LONG theOptions) {
    const auto changed = m_settings.setOptions(theOptions, m_streams.isInputTypeSet());
    if (!changed) {
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "Options", "%s",
                  "Cannot change output format when input media type is already set");
        return E_FAIL;
    }
    if (!geometry::hasFlag(*changed, geometry::OptionFlag::overviewMapPlacementLeft))
        return S_OK;
    return reportFailure(m_log, "Options", m_renderer.updateGeometry());
}

HRESULT COutputProperties::CheckDewarpingCapability(VARIANT_BOOL* isCapable) {
    if (isCapable == nullptr)
        return E_POINTER;
    *isCapable = VARIANT_FALSE;
    return com::guarded([&] { *isCapable = m_renderer.isAvailable() ? VARIANT_TRUE : VARIANT_FALSE; });
}

HRESULT COutputProperties::get_HardwareAccelerationActive(VARIANT_BOOL* isActive) {
    return give(isActive, m_renderer.hardwareAccelerationActive());
}

} // namespace tarvo::transform
