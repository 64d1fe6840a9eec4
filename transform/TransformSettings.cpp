#include "transform/TransformSettings.h"

#include <algorithm>
#include <cmath>

namespace tarvo::transform {

using geometry::CViewState;
using geometry::OptionFlag;
using geometry::ViewType;

ViewSettings CTransformSettings::snapshot() const {
    const std::lock_guard lock(m_lock);
    return m_state;
}

std::uint64_t CTransformSettings::version() const {
    const std::lock_guard lock(m_lock);
    return m_state.version;
}

bool CTransformSettings::markIf(bool hasChanged) {
    if (hasChanged)
        ++m_state.version;
    return hasChanged;
}

void CTransformSettings::markLayout() {
    ++m_state.version;
    ++m_state.layoutVersion;
}

void CTransformSettings::markChanged() {
    const std::lock_guard lock(m_lock);
    ++m_state.version;
}

bool CTransformSettings::setLensProfile(const geometry::LensProfile& profile) {
    const std::lock_guard lock(m_lock);
    if (profile == m_state.view.parameters().lensProfile())
        return false;
    m_state.view.setLensProfile(profile);
    return markIf(true);
}

bool CTransformSettings::setTiltOrientation(geometry::TiltOrientation orientation) {
    const std::lock_guard lock(m_lock);
    const bool hasChanged = m_state.view.setTiltOrientation(orientation);
    if (hasChanged)
        markLayout();
    return hasChanged;
}

bool CTransformSettings::setViewType(ViewType viewType) {
    const std::lock_guard lock(m_lock);
    if (viewType == m_state.view.viewType())
        return false;
    m_state.view.setViewType(viewType);
    markLayout();
    return true;
}

void CTransformSettings::setSelectedView(geometry::View view) {
    const std::lock_guard lock(m_lock);
    m_state.view.setSelectedView(view);
}

bool CTransformSettings::setPan(double degrees) {
    const std::lock_guard lock(m_lock);
    return markIf(m_state.view.setPan(degrees));
}

bool CTransformSettings::setTilt(double degrees) {
    const std::lock_guard lock(m_lock);
    return markIf(m_state.view.setTilt(degrees));
}

bool CTransformSettings::setFieldOfView(double degrees) {
    const std::lock_guard lock(m_lock);
    return markIf(m_state.view.setFieldOfView(degrees));
}

bool CTransformSettings::setPtzPosition(const PtzPosition& position, bool isRelative) {
    const std::lock_guard lock(m_lock);
    CViewState& view = m_state.view;
    PtzPosition wanted = position;
    if (isRelative) {
        wanted.panDegrees += view.pan();
        wanted.tiltDegrees += view.tilt();
        wanted.fieldOfViewDegrees += view.fieldOfView();
    }
    const bool hasPanChanged = view.setPan(wanted.panDegrees);
    const bool hasTiltChanged = view.setTilt(wanted.tiltDegrees);
    const bool hasFieldOfViewChanged = view.setFieldOfView(wanted.fieldOfViewDegrees);
    return markIf(hasPanChanged || hasTiltChanged || hasFieldOfViewChanged);
}

bool CTransformSettings::setBypass(bool isBypassed) {
    const std::lock_guard lock(m_lock);
    if (isBypassed == m_state.isBypassed)
        return false;
    m_state.isBypassed = isBypassed;
    return markIf(true);
}

bool CTransformSettings::isBypassed() const {
    const std::lock_guard lock(m_lock);
    return m_state.isBypassed;
}

bool CTransformSettings::setEffectLevel(double level) {
    if (std::isnan(level))
        return false;
    const auto wanted = static_cast<float>(std::clamp(level, 0.0, 1.0));
    const std::lock_guard lock(m_lock);
    CViewState& view = m_state.view;
    if (view.viewType() == ViewType::custom) {
        if (wanted == m_state.customEffectLevel)
            return false;
        m_state.customEffectLevel = wanted;
    } else {
        if (wanted == view.parameters().effectLevel())
            return false;
        view.setEffectLevel(static_cast<double>(wanted));
    }
    return markIf(true);
}

double CTransformSettings::effectLevel() const {
    const std::lock_guard lock(m_lock);
    const bool isCustom = m_state.view.viewType() == ViewType::custom;
    return static_cast<double>(isCustom ? m_state.customEffectLevel
                                        : m_state.view.parameters().effectLevel());
}

bool CTransformSettings::setPanoramaFieldOfView(double degrees) {
    const std::lock_guard lock(m_lock);
    if (!std::isfinite(degrees) || degrees == m_state.view.panoramaFieldOfView())
        return false;
    m_state.view.setPanoramaFieldOfView(degrees);
    markLayout();
    return true;
}

bool CTransformSettings::setPanoramaPanOffset(double degrees) {
    const std::lock_guard lock(m_lock);
    if (!std::isfinite(degrees) || degrees == m_state.view.panoramaPanOffset())
        return false;
    m_state.view.setPanoramaPanOffset(degrees);
    markLayout();
    return true;
}

bool CTransformSettings::setControlType(geometry::CustomTransformControlType controlType) {
    const std::lock_guard lock(m_lock);
    if (controlType == m_state.controlType)
        return false;
    m_state.controlType = controlType;
    return markIf(true);
}

geometry::CustomTransformControlType CTransformSettings::controlType() const {
    const std::lock_guard lock(m_lock);
    return m_state.controlType;
}

std::optional<std::int32_t> CTransformSettings::setOptions(std::int32_t options, bool isFormatFixed) {
    const std::lock_guard lock(m_lock);
    const std::int32_t changed = m_streamSettings.options ^ options;
    if (isFormatFixed && geometry::hasFlag(changed, OptionFlag::outputFormat_16_9))
        return std::nullopt;
    m_streamSettings.options = options;
    m_state.view.setOptions(options);
    if (geometry::hasFlag(changed, OptionFlag::overviewMapPlacementLeft))
        markLayout();
    return changed;
}

void CTransformSettings::setExcludeArea(const geometry::ExcludeArea& area) {
    const std::lock_guard lock(m_lock);
    m_state.view.setExcludeArea(area);
    markLayout();
}

void CTransformSettings::setSizes(geometry::PictureSize input, geometry::PictureSize output) {
    const std::lock_guard lock(m_lock);
    m_state.view.setInputSize(static_cast<int>(input.width), static_cast<int>(input.height));
    m_state.view.setOutputSize(static_cast<int>(output.width), static_cast<int>(output.height));
    markLayout();
}

} // namespace tarvo::transform
