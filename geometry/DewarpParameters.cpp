#include "geometry/DewarpParameters.h"

#include "geometry/Angles.h"
#include "geometry/PtzLimits.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tarvo::geometry {
namespace {

float radians(double degrees) {
    return static_cast<float>(radiansFromDegrees(degrees));
}

} // namespace

CDewarpParameters::CDewarpParameters() {
    m_constants.clearColor[3] = 1.0F;
    setInputGeometry(0, 0, m_lensProfile);
}

void CDewarpParameters::setInputGeometry(std::int32_t width, std::int32_t height,
                                         const LensProfile& profile) {
    if (width > 0) {
        m_inputWidth = static_cast<float>(width);
    }
    if (height > 0) {
        m_inputHeight = static_cast<float>(height);
        m_inputAspect = static_cast<double>(m_inputWidth) / static_cast<double>(m_inputHeight);
    }
    m_lensProfile = profile;
    m_ptzCalculator.setInput(m_inputAspect, profile);
    m_constants.size[0] = m_inputWidth;
    m_constants.size[1] = m_inputHeight;
    m_constants.imageCenter[0] = m_inputWidth * 0.5F;
    m_constants.imageCenter[1] = m_inputHeight * 0.5F;
    recompute();
}

void CDewarpParameters::setOutputAspect(double outputAspect) {
    const double aspect = std::isnan(outputAspect) ? 0.0 : outputAspect;
    if (aspect == m_outputAspect) {
        return;
    }
    m_outputAspect = aspect;
    if (!m_isPtzUserSet) {
        deriveDefaults();
    }
    recompute();
}

void CDewarpParameters::setTiltOrientation(TiltOrientation orientation) {
    if (orientation == m_tiltOrientation) {
        return;
    }
    m_tiltOrientation = orientation;
    m_ptzCalculator.setMounting(orientation);
    deriveDefaults();
    recompute();
}

void CDewarpParameters::setPan(float panDegrees) {
    setPanTiltFieldOfView(panDegrees, m_tilt, m_fieldOfView);
}

void CDewarpParameters::setTilt(float tiltDegrees) {
    setPanTiltFieldOfView(m_pan, tiltDegrees, m_fieldOfView);
}

void CDewarpParameters::setFieldOfView(float fieldOfViewDegrees) {
    setPanTiltFieldOfView(m_pan, m_tilt, fieldOfViewDegrees);
}

void CDewarpParameters::setPanTiltFieldOfView(float panDegrees, float tiltDegrees, float fieldOfViewDegrees) {
    m_isPtzUserSet = true;
    m_pan = clampPan(panDegrees);
    m_tilt = clampTilt(tiltDegrees);
    m_fieldOfView = clampFieldOfView(fieldOfViewDegrees);
    recompute();
}

float CDewarpParameters::clampPan(float panDegrees) const {
    if (std::isnan(panDegrees)) {
        return m_pan;
    }
    return clampToRange(wrapPan(m_tiltOrientation, panDegrees), m_panMinimum, m_panMaximum);
}

float CDewarpParameters::clampTilt(float tiltDegrees) const {
    return std::isnan(tiltDegrees) ? m_tilt : clampToRange(tiltDegrees, m_tiltMinimum, m_tiltMaximum);
}

float CDewarpParameters::clampFieldOfView(float fieldOfViewDegrees) const {
    return std::isnan(fieldOfViewDegrees)
               ? m_fieldOfView
               : clampToRange(fieldOfViewDegrees, fieldOfViewMinimum, fieldOfViewMaximum);
}

void CDewarpParameters::deriveDefaults() {
    if (const auto limits = ptzLimits(m_tiltOrientation, m_outputAspect)) {
        m_panMinimum = limits->panMinimum;
        m_panMaximum = limits->panMaximum;
        m_tiltMinimum = limits->tiltMinimum;
        m_tiltMaximum = limits->tiltMaximum;
        setPanTiltFieldOfView(0.0F, limits->defaultTilt, limits->defaultFieldOfView);
    }
    m_isPtzUserSet = false;
}

void CDewarpParameters::setEffectLevel(float effectLevel) {
    m_effectLevel = effectLevel;
    recompute();
}

void CDewarpParameters::setEffectEnabled(bool isEnabled) {
    m_isEffectEnabled = isEnabled;
    recompute();
}

void CDewarpParameters::setPanoramaRectangle(const PanoramaRectangle& rectangle) {
    m_panoramaRectAngles[0] = radians(rectangle.panOffsetDegrees);
    m_panoramaRectAngles[1] = radians(rectangle.tiltOffsetDegrees);
    m_panoramaRectAngles[2] = radians(rectangle.widthDegrees);
    m_panoramaRectAngles[3] = radians(rectangle.heightDegrees);
    recompute();
}

void CDewarpParameters::selectPanoramaMode(PanoramaMode mode) {
    if (mode == m_panoramaMode) {
        return;
    }
    m_panoramaMode = mode;
    recompute();
}

LensProfile CDewarpParameters::scaledLensProfile(double level, float tangentOfFieldOfView) const {
    double a = m_lensProfile.a;
    double b = m_lensProfile.b;
    double c = m_lensProfile.c;
    if (level < 1.0) {
        // At level 0 a linear lens maps the view's edge to half the image height, which undoes the dewarping.
        // An unknown output aspect divides by zero; the arc tangent of the infinity is a quarter turn.
        const double edge = static_cast<double>(m_inputWidth) / static_cast<double>(m_inputHeight) *
                            static_cast<double>(tangentOfFieldOfView);
        const double edgeAngle = std::atan(m_outputAspect == 0.0 ? HUGE_VAL : edge / m_outputAspect);
        a *= level;
        b *= level;
        c = 0.5 / edgeAngle * (1.0 - level) + level * c;
    }
    const double height = m_inputHeight;
    return {static_cast<float>(a * height), static_cast<float>(b * height), static_cast<float>(c * height)};
}

void CDewarpParameters::updateRotation(double level) {
    double pan = m_pan;
    double tilt = m_tilt;
    if (level != 1.0) {
        tilt *= level;
        if (m_tiltOrientation == TiltOrientation::wall) {
            pan *= level;
        } else {
            tilt += (1.0 - level) * (m_tiltOrientation == TiltOrientation::desk ? 90.0 : -90.0);
        }
    }
    switch (m_tiltOrientation) {
    case TiltOrientation::wall:
        m_rotation[0] = radians(-tilt);
        m_rotation[1] = radians(pan);
        m_rotation[2] = 0.0F;
        break;
    case TiltOrientation::ceiling:
        m_rotation[0] = 0.0F;
        m_rotation[1] = radians(-(tilt + 90.0));
        m_rotation[2] = radians(pan + 90.0);
        break;
    case TiltOrientation::desk:
        m_rotation[0] = 0.0F;
        m_rotation[1] = radians(-(tilt - 90.0));
        m_rotation[2] = radians(-pan - 90.0);
        break;
    case TiltOrientation::undef:
        break;
    }
}

void CDewarpParameters::recompute() {
    m_ptzCalculator.setPosition(m_pan, m_tilt, m_fieldOfView);
    const double level = effectiveLevel();
    updateRotation(level);

    const auto tangent = static_cast<float>(std::tan(radiansFromDegrees(m_fieldOfView)));
    const LensProfile lens = scaledLensProfile(level, tangent);
    m_constants.lensProfile[0] = lens.a;
    m_constants.lensProfile[1] = lens.b;
    m_constants.lensProfile[2] = lens.c;
    if (m_panoramaMode != PanoramaMode::singleView) {
        std::copy(std::begin(m_panoramaRectAngles), std::end(m_panoramaRectAngles),
                  m_constants.panoramaRectAngles);
        return;
    }
    m_constants.lambdaOffset =
        m_tiltOrientation == TiltOrientation::wall ? static_cast<float>(piSingle) : halfPiSingle;
    std::copy(std::begin(m_rotation), std::end(m_rotation), m_constants.rotateData);
    m_constants.tangentOfFieldOfView = tangent;
}

} // namespace tarvo::geometry
