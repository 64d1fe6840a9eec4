#pragma once

#include "com/OwnTypeLibrary.h"
#include "custom/PropertyChangeNotifier.h"
#include "custom/VirtualPtzSettings.h"
#include "interfaces/TarvoVideoTransform.h"

#include <mutex>

namespace tarvo::custom {

/// Steers the custom view as a virtual camera that looks around in the panorama which the tables make.
///
/// A put that changes a value draws the view back into the panorama if it is pan, field of view or the border
/// mode that changed, and notifies the listeners. A number that is none keeps the value in force, and so does
/// one that single precision, in which the view is computed, cannot hold; that is S_OK. Values with limits
/// are brought into them first. Without out pointer E_POINTER.
///
/// Any thread. A put and its adjustment are one step for every other thread.
class CVirtualPtzFromPanoramaControl : public com::CObject<com::Dual<IVirtualPtzFromPanoramaControl>>,
                                       public PropertyChangeNotifier {
public:
    CVirtualPtzFromPanoramaControl() = default;

    STDMETHODIMP get_PanoramaHorizontalFieldOfView(double* theFieldOfView) override;
    STDMETHODIMP put_PanoramaHorizontalFieldOfView(double theFieldOfView) override;
    STDMETHODIMP get_PanoramaVerticalFieldOfView(double* theFieldOfView) override;
    STDMETHODIMP put_PanoramaVerticalFieldOfView(double theFieldOfView) override;
    STDMETHODIMP get_CameraPitch(double* thePitch) override;
    STDMETHODIMP put_CameraPitch(double thePitch) override;
    STDMETHODIMP get_CameraRoll(double* theRoll) override;
    STDMETHODIMP put_CameraRoll(double theRoll) override;
    STDMETHODIMP get_EffectLevel(double* theEffectLevel) override;
    STDMETHODIMP put_EffectLevel(double theEffectLevel) override;
    STDMETHODIMP get_Pan(double* thePan) override;
    STDMETHODIMP put_Pan(double thePan) override;
    STDMETHODIMP get_Tilt(double* theTilt) override;
    STDMETHODIMP put_Tilt(double theTilt) override;
    STDMETHODIMP get_FieldOfView(double* theFieldOfView) override;
    /// Marks the field of view as set, even if it is the one in force.
    STDMETHODIMP put_FieldOfView(double theFieldOfView) override;

    /// The direction seen at a point of the view, in the terms of `Pan` and `Tilt`: put there, it comes to
    /// the middle. (The middle itself has its pan and tilt 0 with full effect, see mapToPanorama.)
    ///
    /// theFlags are ignored: the view has no overview map to tell apart, and so a host may pass what it
    /// passes to the transform's own MapPoint.
    STDMETHODIMP MapPoint(double theX, double theY, double* thePan, double* theTilt, LONG theFlags) override;

    STDMETHODIMP get_UseStrictBorderMode(VARIANT_BOOL* isStrict) override;
    STDMETHODIMP put_UseStrictBorderMode(VARIANT_BOOL isStrict) override;

    /// All of it at one moment.
    VirtualPtzSettings snapshot() const;

    /// Width / height of the view; what is not positive and finite changes nothing. It neither adjusts the
    /// view nor notifies: it comes from whoever draws the view.
    void setOutputAspect(float aspect);

private:
    enum class Border { ignored, adjusted };

    HRESULT get(double VirtualPtzSettings::*property, double* target) const;
    HRESULT put(double VirtualPtzSettings::*property, double value, Border border = Border::ignored);

    mutable std::mutex m_lock;
    VirtualPtzSettings m_settings;
};

} // namespace tarvo::custom
