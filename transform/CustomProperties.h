#pragma once

#include "diagnostics/ObjectLog.h"
#include "interfaces/TarvoVideoTransform.h"
#include "platform/InterfaceTypes.h"
#include "transform/SteeringObjects.h"
#include "transform/TransformSettings.h"
#include "transform/ViewRenderer.h"

namespace tarvo::transform {

/// What the host steers by objects and tables: the custom view and the exclude area. As CViewProperties.
class CCustomProperties {
public:
    CCustomProperties(CTransformSettings& settings, CViewRenderer& renderer, CSteeringObjects& steering,
                      diagnostics::ObjectLog log)
        : m_settings(settings), m_renderer(renderer), m_steering(steering), m_log(log) {}

    HRESULT SetCustomTransformData(SAFEARRAY* theData, LONG reserved);
    HRESULT get_CustomTransformViewRect(IRectangle** theViewRect);
    HRESULT get_ExcludeRect(IRectangle** theExcludeRect);
    HRESULT get_CustomTransformControlType(LONG* theControlType);
    HRESULT put_CustomTransformControlType(LONG theControlType);
    /// The object of the control type, whatever the view type: a host may set it up beforehand.
    HRESULT get_CustomTransformControl(IUnknown** theControl);

private:
    CTransformSettings& m_settings;
    CViewRenderer& m_renderer;
    CSteeringObjects& m_steering;
    diagnostics::ObjectLog m_log;
};

} // namespace tarvo::transform
