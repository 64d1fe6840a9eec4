#pragma once

#include "geometry/DewarpConstants.h"
#include "geometry/Enumerations.h"
#include "geometry/LensProfile.h"
#include "geometry/PanoramaRectangle.h"
#include "geometry/PtzCalculator.h"

#include <cstdint>

namespace tarvo::geometry {

/// The state of one dewarped view - lens, mounting, position of the virtual PTZ, effect level - and the
/// constants of the projection that follow from it, which every setter brings up to date.
///
/// A plain value of fixed size: copies are cheap and allocate nothing, so a sub-view is computed on a copy.
/// No thread may use an object while another changes it. Angles are degrees. A pan, tilt or field of view
/// that is not a number leaves the value in force.
class CDewarpParameters {
public:
    CDewarpParameters();

    /// Takes the input size in pixels, each side only when positive, and the lens profile always.
    void setInputGeometry(std::int32_t width, std::int32_t height, const LensProfile& profile);

    /// Takes output width / height; 0 (or what is no number) means unknown. While no setter of the position
    /// ran since the defaults were derived, they are derived anew.
    void setOutputAspect(double outputAspect);

    /// Takes the mounting in force; a change derives limits and defaults.
    void setTiltOrientation(TiltOrientation orientation);

    /// Each of these is limited to its range; the pan wraps at the back unless the mounting is `wall`.
    void setPan(float panDegrees);
    void setTilt(float tiltDegrees);
    void setFieldOfView(float fieldOfViewDegrees);
    void setPanTiltFieldOfView(float panDegrees, float tiltDegrees, float fieldOfViewDegrees);

    /// What the setter of the same name would store.
    float clampPan(float panDegrees) const;
    float clampTilt(float tiltDegrees) const;
    float clampFieldOfView(float fieldOfViewDegrees) const;

    /// Sets limits and position to the defaults of the mounting; `undef` keeps them.
    void deriveDefaults();

    /// 1: fully dewarped, 0: the look of the fisheye picture; acts only while the effect is enabled.
    void setEffectLevel(float effectLevel);
    void setEffectEnabled(bool isEnabled);

    void setPanoramaRectangle(const PanoramaRectangle& rectangle);
    void selectPanoramaMode(PanoramaMode mode);

    float pan() const { return m_pan; }
    float tilt() const { return m_tilt; }
    float fieldOfView() const { return m_fieldOfView; }
    float effectLevel() const { return m_effectLevel; }
    bool isEffectEnabled() const { return m_isEffectEnabled; }
    /// True once a position was set since the defaults were derived.
    bool isPtzUserSet() const { return m_isPtzUserSet; }
    float inputWidth() const { return m_inputWidth; }
    float inputHeight() const { return m_inputHeight; }
    double inputAspect() const { return m_inputAspect; }
    double outputAspect() const { return m_outputAspect; }
    const LensProfile& lensProfile() const { return m_lensProfile; }
    TiltOrientation tiltOrientation() const { return m_tiltOrientation; }
    PanoramaMode panoramaMode() const { return m_panoramaMode; }

    /// The record that the projections read. In a panorama mode what only the single view reads keeps the
    /// values it had, so a PTZ move changes no byte of it.
    const DewarpConstants& constants() const { return m_constants; }
    const PtzCalculator& ptzCalculator() const { return m_ptzCalculator; }

private:
    void recompute();
    float effectiveLevel() const { return m_isEffectEnabled ? m_effectLevel : 1.0F; }
    LensProfile scaledLensProfile(double level, float tangentOfFieldOfView) const;
    void updateRotation(double level);

    float m_inputWidth = 2592.0F;
    float m_inputHeight = 1944.0F;
    double m_inputAspect = 4.0 / 3.0;
    double m_outputAspect = 0.0;
    LensProfile m_lensProfile = defaultLensProfile;
    TiltOrientation m_tiltOrientation = TiltOrientation::undef;
    bool m_isPtzUserSet = false;
    float m_pan = 0.0F;
    float m_tilt = 0.0F;
    float m_fieldOfView = 30.0F;
    float m_tiltMinimum = -90.0F;
    float m_tiltMaximum = 90.0F;
    float m_panMinimum = -180.0F;
    float m_panMaximum = 180.0F;
    bool m_isEffectEnabled = true;
    float m_effectLevel = 1.0F;
    float m_rotation[3] = {0.0F, 0.0F, 0.0F};
    float m_panoramaRectAngles[4] = {0.0F, 0.0F, 0.0F, 0.0F};
    PanoramaMode m_panoramaMode = PanoramaMode::singleView;
    PtzCalculator m_ptzCalculator;
    DewarpConstants m_constants{};
};

} // namespace tarvo::geometry
