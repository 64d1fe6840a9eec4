#pragma once

#include "diagnostics/ObjectLog.h"
#include "platform/InterfaceTypes.h"
#include "transform/TransformSettings.h"
#include "transform/ViewRenderer.h"

namespace tarvo::transform {

/// What the host sees and sets of the view: lens, mounting, composition, position, and where points of the
/// picture lie. Methods of IDewarpingTransform's names have its contracts; all of them take a missing out
/// pointer for E_POINTER. Any thread.
class CViewProperties {
public:
    CViewProperties(CTransformSettings& settings, CViewRenderer& renderer, diagnostics::ObjectLog log)
        : m_settings(settings), m_renderer(renderer), m_log(log) {}

    HRESULT get_LensProfile(SAFEARRAY** theLensProfile);
    HRESULT put_LensProfile(SAFEARRAY* theLensProfile);
    HRESULT get_TiltOrientation(LONG* theOrientation);
    HRESULT put_TiltOrientation(LONG theOrientation);
    HRESULT get_ViewType(LONG* theViewType);
    HRESULT put_ViewType(LONG theViewType);
    HRESULT get_SelectedView(LONG* theView);
    HRESULT put_SelectedView(LONG theView);

    HRESULT get_Pan(double* thePan);
    HRESULT put_Pan(double thePan);
    HRESULT get_Tilt(double* theTilt);
    HRESULT put_Tilt(double theTilt);
    HRESULT get_FieldOfView(double* theFieldOfView);
    HRESULT put_FieldOfView(double theFieldOfView);
    HRESULT SetPTZPosition(double thePan, double theTilt, double theFieldOfView, VARIANT_BOOL isRelative);

    HRESULT get_Bypass(VARIANT_BOOL* isBypassed);
    HRESULT put_Bypass(VARIANT_BOOL isBypassed);
    HRESULT get_EffectLevel(double* theEffectLevel);
    HRESULT put_EffectLevel(double theEffectLevel);
    HRESULT get_PanoramaFieldOfView(double* theFieldOfView);
    HRESULT put_PanoramaFieldOfView(double theFieldOfView);
    HRESULT get_PanoramaPanOffset(double* thePanOffset);
    HRESULT put_PanoramaPanOffset(double thePanOffset);

    HRESULT MapPoint(double theX, double theY, double* thePan, double* theTilt, LONG theFlags);
    HRESULT MapPointToOverview(double theX, double theY, double* theOverviewX, double* theOverviewY);

private:
    HRESULT refuseMapping(const char* method);

    CTransformSettings& m_settings;
    CViewRenderer& m_renderer;
    diagnostics::ObjectLog m_log;
};

} // namespace tarvo::transform
