#include "geometry/ViewState.h"

#include <algorithm>
#include <cmath>

namespace tarvo::geometry {
namespace {

constexpr QuadViewOffsets defaultQuadViewOffsets{
    QuadViewOffset{-45.0, 0.0, 0.0}, QuadViewOffset{45.0, 0.0, 0.0}, QuadViewOffset{135.0, 0.0, 0.0},
    QuadViewOffset{225.0, 0.0, 0.0}};

constexpr double aspectWhileUnknown = 4.0 / 3.0;

std::size_t offsetIndex(View view) {
    return static_cast<std::size_t>(view) - 1;
}

} // namespace

/// One coordinate of the position: how the main view holds it and which offset of a sub-view belongs to it.
struct CViewState::PtzAxis {
    float (CDewarpParameters::*get)() const;
    void (CDewarpParameters::*set)(float);
    float (CDewarpParameters::*clamp)(float) const;
    double QuadViewOffset::*offset;
};

const CViewState::PtzAxis CViewState::panAxis{&CDewarpParameters::pan, &CDewarpParameters::setPan,
                                              &CDewarpParameters::clampPan, &QuadViewOffset::panDegrees};
const CViewState::PtzAxis CViewState::tiltAxis{&CDewarpParameters::tilt, &CDewarpParameters::setTilt,
                                               &CDewarpParameters::clampTilt, &QuadViewOffset::tiltDegrees};
const CViewState::PtzAxis CViewState::fieldOfViewAxis{
    &CDewarpParameters::fieldOfView, &CDewarpParameters::setFieldOfView, &CDewarpParameters::clampFieldOfView,
    &QuadViewOffset::fieldOfViewDegrees};

CViewState::CViewState() : m_quadViewOffsets(defaultQuadViewOffsets) {
    updateOrientation();
    updatePanorama();
}

float CViewState::aspectOf(PictureSize size) {
    return size.width > 0 && size.height > 0
               ? static_cast<float>(size.width) / static_cast<float>(size.height)
               : 0.0F;
}

void CViewState::setInputSize(int width, int height) {
    if (width <= 0 || height <= 0) {
        return;
    }
    m_input = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    refreshParameters();
}

void CViewState::setOutputSize(int width, int height) {
    if (width <= 0 || height <= 0) {
        return;
    }
    m_output = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    refreshParameters();
}

void CViewState::setLensProfile(const LensProfile& profile) {
    m_lensProfile = profile;
    refreshParameters();
}

bool CViewState::setTiltOrientation(TiltOrientation orientation) {
    m_tiltOrientation = orientation;
    const bool hasChanged = updateOrientation();
    if (hasChanged) {
        refreshParameters();
    }
    return hasChanged;
}

void CViewState::setViewType(ViewType viewType) {
    if (viewType == m_viewType) {
        return;
    }
    const bool keepsPosition = isSingleDewarp(viewType) && isSingleDewarp(m_viewType);
    m_viewType = viewType;
    updateOrientation();
    if (!keepsPosition) {
        m_parameters.deriveDefaults();
    }
    m_parameters.setEffectEnabled(isSingleDewarp(viewType));
    refreshParameters();
}

bool CViewState::updateOrientation() {
    const TiltOrientation inForce = effectiveOrientation(m_tiltOrientation, m_viewType);
    m_parameters.setTiltOrientation(inForce);
    if (inForce == m_orientationInForce) {
        return false;
    }
    m_orientationInForce = inForce;
    m_quadViewOffsets = defaultQuadViewOffsets;
    return true;
}

void CViewState::updatePanorama() {
    m_panorama = derivePanoramaRectangle(m_orientationInForce, m_panoramaFieldOfView, m_panoramaPanOffset,
                                         static_cast<double>(outputAspect()));
    m_parameters.setPanoramaRectangle(m_panorama);
}

void CViewState::refreshParameters() {
    m_parameters.selectPanoramaMode(geometry::panoramaMode(m_viewType, m_orientationInForce));
    m_parameters.setInputGeometry(static_cast<std::int32_t>(m_input.width),
                                  static_cast<std::int32_t>(m_input.height), m_lensProfile);
    m_parameters.setOutputAspect(static_cast<double>(outputAspect()));
    m_parameters.setTiltOrientation(m_orientationInForce);
    updatePanorama();
}

bool CViewState::setPan(double panDegrees) {
    return setPosition(panAxis, panDegrees);
}

bool CViewState::setTilt(double tiltDegrees) {
    return setPosition(tiltAxis, tiltDegrees);
}

bool CViewState::setFieldOfView(double fieldOfViewDegrees) {
    return setPosition(fieldOfViewAxis, fieldOfViewDegrees);
}

void CViewState::setSelectedView(View view) {
    if (view >= View::all && view <= View::southEast) {
        m_selectedView = view;
    }
}

bool CViewState::setPosition(const PtzAxis& axis, double degrees) {
    if (std::isnan(degrees)) {
        return false;
    }
    const auto wanted = static_cast<float>(degrees);
    const auto main = static_cast<double>((m_parameters.*axis.get)());
    if (m_selectedView == View::all) {
        if (main == degrees) {
            return false;
        }
        (m_parameters.*axis.set)(wanted);
        return true;
    }
    const double difference = static_cast<double>((m_parameters.*axis.clamp)(wanted)) - main;
    double& offset = m_quadViewOffsets[offsetIndex(m_selectedView)].*axis.offset;
    if (offset == difference) {
        return false;
    }
    offset = difference;
    return true;
}

double CViewState::position(const PtzAxis& axis) const {
    const auto main = static_cast<double>((m_parameters.*axis.get)());
    return m_selectedView == View::all ? main
                                       : main + m_quadViewOffsets[offsetIndex(m_selectedView)].*axis.offset;
}

void CViewState::setPtzPosition(double panDegrees, double tiltDegrees, double fieldOfViewDegrees,
                                bool isRelative) {
    const QuadViewOffset base = isRelative ? QuadViewOffset{pan(), tilt(), fieldOfView()} : QuadViewOffset{};
    setPan(base.panDegrees + panDegrees);
    setTilt(base.tiltDegrees + tiltDegrees);
    setFieldOfView(base.fieldOfViewDegrees + fieldOfViewDegrees);
}

double CViewState::pan() const {
    return position(panAxis);
}

double CViewState::tilt() const {
    return position(tiltAxis);
}

double CViewState::fieldOfView() const {
    return position(fieldOfViewAxis);
}

void CViewState::setEffectLevel(double effectLevel) {
    if (!std::isnan(effectLevel)) {
        m_parameters.setEffectLevel(static_cast<float>(std::clamp(effectLevel, 0.0, 1.0)));
    }
}

void CViewState::setPanoramaFieldOfView(double fieldOfViewDegrees) {
    if (std::isfinite(fieldOfViewDegrees)) {
        m_panoramaFieldOfView = std::max(1.0, fieldOfViewDegrees);
        updatePanorama();
    }
}

void CViewState::setPanoramaPanOffset(double panOffsetDegrees) {
    if (std::isfinite(panOffsetDegrees)) {
        m_panoramaPanOffset = panOffsetDegrees;
        updatePanorama();
    }
}

ViewLayout CViewState::layout() const {
    ViewLayout layout;
    layout.viewType = m_viewType;
    layout.orientation = m_orientationInForce;
    layout.inputAspect = m_input.width > 0 ? static_cast<double>(inputAspect()) : aspectWhileUnknown;
    layout.outputAspect = m_output.width > 0 ? static_cast<double>(outputAspect()) : aspectWhileUnknown;
    layout.panorama = m_panorama;
    layout.isOverviewLeft = hasFlag(m_options, OptionFlag::overviewMapPlacementLeft);
    layout.excludeArea = m_excludeArea;
    return layout;
}

CDewarpParameters CViewState::subViewParameters(int index) const {
    const QuadViewOffset& offset = m_quadViewOffsets.at(static_cast<std::size_t>(index));
    CDewarpParameters parameters = m_parameters;
    parameters.setPanTiltFieldOfView(
        static_cast<float>(static_cast<double>(parameters.pan()) + offset.panDegrees),
        static_cast<float>(static_cast<double>(parameters.tilt()) + offset.tiltDegrees),
        static_cast<float>(static_cast<double>(parameters.fieldOfView()) + offset.fieldOfViewDegrees));
    return parameters;
}

} // namespace tarvo::geometry
