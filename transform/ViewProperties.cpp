#include "transform/ViewProperties.h"

#include "com/SafeArray.h"
#include "geometry/PointMapping.h"
#include "transform/OutArgument.h"
#include "transform/PropertyLog.h"

#include <array>
#include <cstddef>
#include <optional>

namespace tarvo::transform {

using diagnostics::LogCategory;
using geometry::CViewState;

namespace {

constexpr std::size_t coefficientCount = 3;

/// As log lines have known them for ever, spelling and all.
constexpr std::array<const char*, 6> viewTypeNames{"single",         "quad",           "panoramaSingle",
                                                   "panoramaDouble", "singelOverview", "custom"};
constexpr std::array<const char*, 5> viewNames{"all", "northWest", "northEast", "southWest", "southEast"};

const char* orientationName(LONG orientation) {
    switch (static_cast<geometry::TiltOrientation>(orientation)) {
    case geometry::TiltOrientation::wall:
        return "wall";
    case geometry::TiltOrientation::ceiling:
        return "ceiling";
    case geometry::TiltOrientation::desk:
        return "desk";
    case geometry::TiltOrientation::undef:
        break;
    }
    return "undef";
}

template<std::size_t count>
const char* nameOf(const std::array<const char*, count>& names, LONG value) {
    return value >= 0 && value < static_cast<LONG>(count) ? names[static_cast<std::size_t>(value)] : nullptr;
}

} // namespace

HRESULT CViewProperties::get_LensProfile(SAFEARRAY** theLensProfile) {
    if (theLensProfile == nullptr)
        return E_POINTER;
    *theLensProfile = nullptr;
    const geometry::LensProfile profile =
        m_settings.ask([](const CViewState& view) { return view.parameters().lensProfile(); });
    com::CSafeArray array = com::CSafeArray::vector(VT_R8, coefficientCount);
    if (!array)
        return E_OUTOFMEMORY;
    {
        const com::CSafeArrayAccess<double> access(array.get());
        if (FAILED(access.result()))
            return access.result();
        access.elements()[0] = static_cast<double>(profile.a);
        access.elements()[1] = static_cast<double>(profile.b);
        access.elements()[2] = static_cast<double>(profile.c);
    }
    *theLensProfile = array.detach();
    return S_OK;
}

HRESULT CViewProperties::put_LensProfile(SAFEARRAY* theLensProfile) {
    geometry::LensProfile profile;
    {
        const com::CSafeArrayAccess<double> access(theLensProfile);
        if (FAILED(access.result()) || access.elements().size() != coefficientCount ||
            access.elements().data() == nullptr)
            return E_INVALIDARG;
        profile.a = static_cast<float>(access.elements()[0]);
        profile.b = static_cast<float>(access.elements()[1]);
        profile.c = static_cast<float>(access.elements()[2]);
    }
    const bool hasChanged = m_settings.setLensProfile(profile);
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "LensProfile", "Set: [%f %f %f]",
              static_cast<double>(profile.a), static_cast<double>(profile.b), static_cast<double>(profile.c));
    return hasChanged ? reportFailure(m_log, "LensProfile", m_renderer.refreshShader()) : S_OK;
}

HRESULT CViewProperties::get_TiltOrientation(LONG* theOrientation) {
    return give(theOrientation, m_settings.ask([](const CViewState& view) {
        return static_cast<LONG>(view.tiltOrientation());
    }));
}

HRESULT CViewProperties::put_TiltOrientation(LONG theOrientation) {
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "TiltOrientation", "Set: <%s>",
              orientationName(theOrientation));
    if (!m_settings.setTiltOrientation(static_cast<geometry::TiltOrientation>(theOrientation)))
        return S_OK;
    return reportFailure(m_log, "TiltOrientation", m_renderer.refreshShader());
}

HRESULT CViewProperties::get_ViewType(LONG* theViewType) {
    return give(theViewType,
                m_settings.ask([](const CViewState& view) { return static_cast<LONG>(view.viewType()); }));
}

HRESULT CViewProperties::put_ViewType(LONG theViewType) {
    const char* name = nameOf(viewTypeNames, theViewType);
    if (name == nullptr) {
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "ViewType", "Unknown view type: %i",
                  int{theViewType});
        return E_INVALIDARG;
    }
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "ViewType", "Set: <%s>", name);
    if (!m_settings.setViewType(static_cast<geometry::ViewType>(theViewType)))
        return S_OK;
    return reportFailure(m_log, "ViewType", m_renderer.refreshShader());
}

HRESULT CViewProperties::get_SelectedView(LONG* theView) {
    return give(theView, m_settings.ask(
                             [](const CViewState& view) { return static_cast<LONG>(view.selectedView()); }));
}

HRESULT CViewProperties::put_SelectedView(LONG theView) {
    const char* name = nameOf(viewNames, theView);
    if (name == nullptr) {
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "SelectedView", "Unknown view: %i",
                  int{theView});
        return E_INVALIDARG;
    }
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, "SelectedView", "Set: <%s>", name);
    m_settings.setSelectedView(static_cast<geometry::View>(theView));
    return S_OK;
}

HRESULT CViewProperties::get_Pan(double* thePan) {
    return give(thePan, m_settings.ask([](const CViewState& view) { return view.pan(); }));
}

HRESULT CViewProperties::put_Pan(double thePan) {
    m_settings.setPan(thePan);
    return S_OK;
}

HRESULT CViewProperties::get_Tilt(double* theTilt) {
    return give(theTilt, m_settings.ask([](const CViewState& view) { return view.tilt(); }));
}

HRESULT CViewProperties::put_Tilt(double theTilt) {
    m_settings.setTilt(theTilt);
    return S_OK;
}

HRESULT CViewProperties::get_FieldOfView(double* theFieldOfView) {
    return give(theFieldOfView, m_settings.ask([](const CViewState& view) { return view.fieldOfView(); }));
}

HRESULT CViewProperties::put_FieldOfView(double theFieldOfView) {
    m_settings.setFieldOfView(theFieldOfView);
    return S_OK;
}

HRESULT CViewProperties::SetPTZPosition(double thePan, double theTilt, double theFieldOfView,
                                        VARIANT_BOOL isRelative) {
    m_settings.setPtzPosition({thePan, theTilt, theFieldOfView}, isRelative != VARIANT_FALSE);
    return S_OK;
}

HRESULT CViewProperties::get_Bypass(VARIANT_BOOL* isBypassed) {
    return give(isBypassed,
                static_cast<VARIANT_BOOL>(m_settings.isBypassed() ? VARIANT_TRUE : VARIANT_FALSE));
}

HRESULT CViewProperties::put_Bypass(VARIANT_BOOL isBypassed) {
    m_settings.setBypass(isBypassed != VARIANT_FALSE);
    return S_OK;
}

HRESULT CViewProperties::get_EffectLevel(double* theEffectLevel) {
    return give(theEffectLevel, m_settings.effectLevel());
}

HRESULT CViewProperties::put_EffectLevel(double theEffectLevel) {
    const bool hasChanged = m_settings.setEffectLevel(theEffectLevel);
    const bool isCustom =
        m_settings.ask([](const CViewState& view) { return view.viewType() == geometry::ViewType::custom; });
    // Of the custom view it is part of the tables that the device has.
    if (hasChanged && isCustom)
        m_renderer.updateCustomTransform();
    return S_OK;
}

HRESULT CViewProperties::get_PanoramaFieldOfView(double* theFieldOfView) {
    return give(theFieldOfView,
                m_settings.ask([](const CViewState& view) { return view.panoramaFieldOfView(); }));
}

HRESULT CViewProperties::put_PanoramaFieldOfView(double theFieldOfView) {
    if (!m_settings.setPanoramaFieldOfView(theFieldOfView))
        return S_OK;
    return reportFailure(m_log, "PanoramaFieldOfView", m_renderer.updateGeometry());
}

HRESULT CViewProperties::get_PanoramaPanOffset(double* thePanOffset) {
    return give(thePanOffset,
                m_settings.ask([](const CViewState& view) { return view.panoramaPanOffset(); }));
}

HRESULT CViewProperties::put_PanoramaPanOffset(double thePanOffset) {
    if (!m_settings.setPanoramaPanOffset(thePanOffset))
        return S_OK;
    return reportFailure(m_log, "PanoramaPanOffset", m_renderer.updateGeometry());
}

HRESULT CViewProperties::MapPoint(double theX, double theY, double* thePan, double* theTilt, LONG theFlags) {
    const auto direction = m_settings.ask(
        [&](const CViewState& view) { return geometry::mapPoint(view, theX, theY, theFlags); });
    if (!direction)
        return refuseMapping("MapPoint");
    if (thePan == nullptr || theTilt == nullptr)
        return E_POINTER;
    *thePan = direction->panDegrees;
    *theTilt = direction->tiltDegrees;
    return S_OK;
}

HRESULT CViewProperties::MapPointToOverview(double theX, double theY, double* theOverviewX,
                                            double* theOverviewY) {
    const auto point = m_settings.ask(
        [&](const CViewState& view) { return geometry::mapPointToOverview(view, theX, theY); });
    if (!point)
        return refuseMapping("MapPointToOverview");
    if (theOverviewX == nullptr || theOverviewY == nullptr)
        return E_POINTER;
    *theOverviewX = point->x;
    *theOverviewY = point->y;
    return S_OK;
}

HRESULT CViewProperties::refuseMapping(const char* method) {
    TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, method, "%s",
              "Point mapping only supported in single dewarp view.");
    return E_NOTIMPL;
}

} // namespace tarvo::transform
