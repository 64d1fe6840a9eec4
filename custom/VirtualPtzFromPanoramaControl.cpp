#include "custom/VirtualPtzFromPanoramaControl.h"

#include "com/Guarded.h"
#include "custom/BorderAdjustment.h"
#include "custom/VirtualPtzMapping.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarvo::custom {

VirtualPtzSettings CVirtualPtzFromPanoramaControl::snapshot() const {
    const std::lock_guard lock(m_lock);
    return m_settings;
}

void CVirtualPtzFromPanoramaControl::setOutputAspect(float aspect) {
    if (!std::isfinite(aspect) || aspect <= 0.0F)
        return;
    const std::lock_guard lock(m_lock);
    m_settings.outputAspect = aspect;
}

HRESULT CVirtualPtzFromPanoramaControl::get(double VirtualPtzSettings::*property, double* target) const {
    if (target == nullptr)
        return E_POINTER;
    *target = snapshot().*property;
    return S_OK;
}

HRESULT CVirtualPtzFromPanoramaControl::put(double VirtualPtzSettings::*property, double value,
                                            Border border) {
    // Written so that nan falls out too.
    if (!(std::abs(value) <= double{std::numeric_limits<float>::max()}))
        return S_OK;
    return com::guarded([&] {
        {
            const std::lock_guard lock(m_lock);
            if (property == &VirtualPtzSettings::fieldOfView)
                m_settings.isFieldOfViewSet = true;
            if (m_settings.*property == value)
                return;
            m_settings.*property = value;
            if (border == Border::adjusted)
                m_settings = adjustedToBorder(m_settings);
        }
        notify();
    });
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_PanoramaHorizontalFieldOfView(double* theFieldOfView) {
    return get(&VirtualPtzSettings::panoramaHorizontalFieldOfView, theFieldOfView);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_PanoramaHorizontalFieldOfView(double theFieldOfView) {
    return put(&VirtualPtzSettings::panoramaHorizontalFieldOfView, theFieldOfView);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_PanoramaVerticalFieldOfView(double* theFieldOfView) {
    return get(&VirtualPtzSettings::panoramaVerticalFieldOfView, theFieldOfView);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_PanoramaVerticalFieldOfView(double theFieldOfView) {
    return put(&VirtualPtzSettings::panoramaVerticalFieldOfView, theFieldOfView);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_CameraPitch(double* thePitch) {
    return get(&VirtualPtzSettings::cameraPitch, thePitch);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_CameraPitch(double thePitch) {
    return put(&VirtualPtzSettings::cameraPitch, thePitch);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_CameraRoll(double* theRoll) {
    return get(&VirtualPtzSettings::cameraRoll, theRoll);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_CameraRoll(double theRoll) {
    return put(&VirtualPtzSettings::cameraRoll, theRoll);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_EffectLevel(double* theEffectLevel) {
    return get(&VirtualPtzSettings::effectLevel, theEffectLevel);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_EffectLevel(double theEffectLevel) {
    return put(&VirtualPtzSettings::effectLevel, std::clamp(theEffectLevel, 0.0, 1.0));
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_Pan(double* thePan) {
    return get(&VirtualPtzSettings::pan, thePan);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_Pan(double thePan) {
    return put(&VirtualPtzSettings::pan, thePan, Border::adjusted);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_Tilt(double* theTilt) {
    return get(&VirtualPtzSettings::tilt, theTilt);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_Tilt(double theTilt) {
    return put(&VirtualPtzSettings::tilt, theTilt);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_FieldOfView(double* theFieldOfView) {
    return get(&VirtualPtzSettings::fieldOfView, theFieldOfView);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_FieldOfView(double theFieldOfView) {
    return put(&VirtualPtzSettings::fieldOfView,
               std::clamp(theFieldOfView, smallestVirtualFieldOfView, largestVirtualFieldOfView),
               Border::adjusted);
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::MapPoint(double theX, double theY, double* thePan,
                                                      double* theTilt, LONG) {
    if (thePan == nullptr || theTilt == nullptr)
        return E_POINTER;
    const PanoramaDirection direction = mapToPanorama(virtualPtzView(snapshot()), static_cast<float>(theX),
                                                      static_cast<float>(theY), Straightening::none);
    *thePan = double{direction.pan};
    *theTilt = double{direction.tilt};
    return S_OK;
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::get_UseStrictBorderMode(VARIANT_BOOL* isStrict) {
    if (isStrict == nullptr)
        return E_POINTER;
    *isStrict = snapshot().useStrictBorderMode ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CVirtualPtzFromPanoramaControl::put_UseStrictBorderMode(VARIANT_BOOL isStrict) {
    return com::guarded([&] {
        {
            const std::lock_guard lock(m_lock);
            const bool wanted = isStrict != VARIANT_FALSE;
            if (m_settings.useStrictBorderMode == wanted)
                return;
            m_settings.useStrictBorderMode = wanted;
            m_settings = adjustedToBorder(m_settings);
        }
        notify();
    });
}

} // namespace tarvo::custom
