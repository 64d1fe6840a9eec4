#include "transform/CustomProperties.h"

#include "transform/OutArgument.h"
#include "transform/PropertyLog.h"

namespace tarvo::transform {

using diagnostics::LogCategory;
using geometry::CustomTransformControlType;

HRESULT CCustomProperties::SetCustomTransformData(SAFEARRAY* theData, LONG reserved) {
    return m_renderer.setCustomTransformData(theData, reserved);
}

HRESULT CCustomProperties::get_CustomTransformViewRect(IRectangle** theViewRect) {
    if (theViewRect == nullptr)
        return E_POINTER;
    *theViewRect = nullptr;
    com::ComPtr<IUnknown> control = m_steering.control(m_settings.controlType());
    const auto zoom = control.as<IDigitalZoomControl>();
    return zoom ? zoom->get_ViewRect(theViewRect) : E_FAIL;
}

HRESULT CCustomProperties::get_ExcludeRect(IRectangle** theExcludeRect) {
    return com::ComPtr<IRectangle>(&m_steering.excludeRectangle()).copyTo(theExcludeRect);
}

HRESULT CCustomProperties::get_CustomTransformControlType(LONG* theControlType) {
    return give(theControlType, static_cast<LONG>(m_settings.controlType()));
}

HRESULT CCustomProperties::put_CustomTransformControlType(LONG theControlType) {
    const auto type = static_cast<CustomTransformControlType>(theControlType);
    if (type != CustomTransformControlType::digitalZoom &&
        type != CustomTransformControlType::virtualPtzFromPanorama) {
        // The line about view types, which those who read logs know.
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "CustomTransformControlType",
                  "Unknown view type: %i", int{theControlType});
        return E_INVALIDARG;
    }
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "CustomTransformControlType",
              "Set: <%s>",
              type == CustomTransformControlType::digitalZoom ? "digitalZoom" : "virtualPtzFromPanorama");
    if (m_settings.setControlType(type))
        m_renderer.updateCustomTransform();
    return S_OK;
}

HRESULT CCustomProperties::get_CustomTransformControl(IUnknown** theControl) {
    return m_steering.control(m_settings.controlType()).copyTo(theControl);
}

} // namespace tarvo::transform
