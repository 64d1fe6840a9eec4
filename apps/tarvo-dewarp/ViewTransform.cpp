#include "apps/tarvo-dewarp/ViewTransform.h"

#include "apps/host/HostError.h"
#include "apps/host/TransformProperties.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "com/SafeArray.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace tarvo::apps {
namespace {

using com::ComPtr;
using host::requireStep;

host::TransformProperties propertiesOf(const WantedView& wanted) {
    const ViewSettings& view = wanted.view;
    host::TransformProperties properties;
    properties.outputWidth = view.outputWidth;
    properties.outputHeight = view.outputHeight;
    properties.outputFrameRate = wanted.outputFrameRate;
    properties.options = (view.isOverviewLeft ? TarvoVideoTransformLib::overviewMapPlacementLeft : 0) |
                         (view.isOutputWide ? TarvoVideoTransformLib::outputFormat_16_9 : 0);
    properties.lensProfile = view.lensProfile;
    properties.tiltOrientation = view.tiltOrientation;
    properties.viewType = static_cast<LONG>(view.viewType);
    properties.effectLevel = view.effectLevel;
    properties.panoramaFieldOfView = view.panoramaFieldOfViewDegrees;
    properties.panoramaPanOffset = view.panoramaPanOffsetDegrees;
    properties.excludeRect = view.excludeArea;
    properties.isBypassed = wanted.isBypassed;
    properties.pan = view.panDegrees;
    properties.tilt = view.tiltDegrees;
    properties.fieldOfView = view.fieldOfViewDegrees;
    return properties;
}

void putTables(IDewarpingTransform& transform, const std::filesystem::path& path) {
    const std::vector<std::uint8_t> bytes = readTablesFile(path);
    const auto array = com::CSafeArray::vector(VT_UI1, static_cast<ULONG>(bytes.size()));
    if (!array) {
        throw std::bad_alloc();
    }
    {
        const com::CSafeArrayAccess<std::uint8_t> access(array.get());
        requireStep(access.result(), "filling the array of the tables");
        std::ranges::copy(bytes, access.elements().begin());
    }
    const HRESULT result = transform.SetCustomTransformData(array.get(), 0);
    if (FAILED(result)) {
        checkTables(path, bytes); // knows what is wrong with them
    }
    requireStep(result, "handing over the tables");
    checkTables(path, bytes);
}

void putViewRectangle(IDewarpingTransform& transform, const Edges& edges) {
    ComPtr<IRectangle> rectangle;
    requireStep(transform.get_CustomTransformViewRect(rectangle.put()), "getting CustomTransformViewRect");
    requireStep(rectangle->Init(edges.left, edges.top, edges.right, edges.bottom),
                "setting CustomTransformViewRect");
}

using Ptz = IVirtualPtzFromPanoramaControl;

/// Puts a property; without a value it stays.
void put(Ptz& ptz, const std::optional<double>& value, HRESULT (STDMETHODCALLTYPE Ptz::*setter)(double)) {
    if (value) {
        requireStep((ptz.*setter)(*value), "setting a property of the virtual camera");
    }
}

double get(Ptz& ptz, HRESULT (STDMETHODCALLTYPE Ptz::*getter)(double*)) {
    double value = 0.0;
    requireStep((ptz.*getter)(&value), "getting a property of the virtual camera");
    return value;
}

/// Pan, field of view and border mode draw the view back into the panorama when they are put to another
/// value. Options have no order, so the view shall be drawn back once, when all of them are known: without
/// effect nothing is drawn back, and the pan, put beside where it belongs, is put again in the end.
void putVirtualPtz(Ptz& ptz, const VirtualPtzOptions& options) {
    const double initialPan = get(ptz, &Ptz::get_Pan);
    const double pan = options.pan.value_or(initialPan);
    const double effectLevel = options.effectLevel.value_or(get(ptz, &Ptz::get_EffectLevel));
    const double fieldOfView = get(ptz, &Ptz::get_FieldOfView);
    const bool isDrawnBack = pan != initialPan || options.fieldOfView.value_or(fieldOfView) != fieldOfView ||
                             options.useStrictBorderMode;

    requireStep(ptz.put_EffectLevel(0.0), "setting a property of the virtual camera");
    put(ptz, options.panoramaHorizontalFieldOfView, &Ptz::put_PanoramaHorizontalFieldOfView);
    put(ptz, options.panoramaVerticalFieldOfView, &Ptz::put_PanoramaVerticalFieldOfView);
    put(ptz, options.cameraPitch, &Ptz::put_CameraPitch);
    put(ptz, options.cameraRoll, &Ptz::put_CameraRoll);
    if (options.useStrictBorderMode) {
        requireStep(ptz.put_UseStrictBorderMode(VARIANT_TRUE), "setting a property of the virtual camera");
    }
    put(ptz, options.fieldOfView, &Ptz::put_FieldOfView);
    put(ptz, options.tilt, &Ptz::put_Tilt);
    if (isDrawnBack) {
        requireStep(ptz.put_Pan(pan != 0.0 ? 0.0 : 1.0), "setting a property of the virtual camera");
    }
    put(ptz, effectLevel, &Ptz::put_EffectLevel);
    if (isDrawnBack) {
        put(ptz, pan, &Ptz::put_Pan);
    }
}

void putCustomView(IDewarpingTransform& transform, const CustomViewSettings& settings) {
    ComPtr<IUnknown> control;
    requireStep(transform.get_CustomTransformControl(control.put()), "getting CustomTransformControl");
    HRESULT result = S_OK;
    if (settings.controlType == CustomTransformControlType::virtualPtzFromPanorama) {
        const auto ptz = control.as<Ptz>(result);
        requireStep(result, "asking for the virtual camera");
        putVirtualPtz(*ptz, settings.virtualPtz);
    } else if (settings.viewRectangle) {
        putViewRectangle(transform, *settings.viewRectangle);
    }
}

} // namespace

CViewTransform::CViewTransform(const host::CModule& module, const WantedView& wanted)
    : m_wanted(wanted), m_transform(module.createTransform()), m_stream(m_transform) {
    host::putProperties(*m_transform, propertiesOf(wanted));
    if (wanted.view.viewType == ViewType::custom) {
        putTables(*m_transform, wanted.customView.tables.value());
        requireStep(
            m_transform->put_CustomTransformControlType(static_cast<LONG>(wanted.customView.controlType)),
            "setting CustomTransformControlType");
    }
}

std::pair<LONG, LONG> CViewTransform::setInput(const host::VideoFormat& format) {
    const LONG inputHeight = std::abs(format.height);
    try {
        m_stream.setInput(format);
    } catch (const host::HostError& error) {
        // The types that are set here are the component's own: all it can refuse is the output that follows
        // from one.
        if (error.result() != static_cast<HRESULT>(DMO_E_TYPE_NOT_ACCEPTED)) {
            throw;
        }
        refuseOutputSize(m_wanted.view, format.width, inputHeight, "a side of 0");
    }
    LONG width = 0;
    LONG height = 0;
    requireStep(m_transform->get_OutputWidth(&width), "getting OutputWidth");
    requireStep(m_transform->get_OutputHeight(&height), "getting OutputHeight");
    requireOutputSize(m_wanted.view, format.width, inputHeight, width, height);
    return {width, height};
}

host::VideoFormat CViewTransform::setOutput(host::FramePixels pixels, bool isBottomUp) {
    const host::VideoFormat format = m_stream.setOutput(pixels, isBottomUp);
    host::putPosition(*m_transform, propertiesOf(m_wanted));
    if (m_wanted.view.viewType == ViewType::custom) {
        putCustomView(*m_transform, m_wanted.customView);
    }
    return format;
}

} // namespace tarvo::apps
