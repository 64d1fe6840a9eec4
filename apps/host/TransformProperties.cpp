#include "apps/host/TransformProperties.h"

#include "apps/host/HostError.h"
#include "com/ComPtr.h"
#include "com/SafeArray.h"

#include <algorithm>
#include <new>

namespace tarvo::host {
namespace {

template<class Value>
void put(IDewarpingTransform& transform, const std::optional<Value>& value,
         HRESULT (STDMETHODCALLTYPE IDewarpingTransform::*setter)(Value), const char* step) {
    if (value) {
        requireStep((transform.*setter)(*value), step);
    }
}

void putLensProfile(IDewarpingTransform& transform, const std::array<double, 3>& profile) {
    const auto array = com::CSafeArray::vector(VT_R8, 3);
    if (!array) {
        throw std::bad_alloc();
    }
    {
        const com::CSafeArrayAccess<double> access(array.get());
        requireStep(access.result(), "filling the array of the lens profile");
        std::ranges::copy(profile, access.elements().begin());
    }
    requireStep(transform.put_LensProfile(array.get()), "setting LensProfile");
}

} // namespace

void putProperties(IDewarpingTransform& transform, const TransformProperties& properties) {
    put(transform, properties.options, &IDewarpingTransform::put_Options, "setting Options");
    put(transform, properties.outputWidth, &IDewarpingTransform::put_OutputWidth, "setting OutputWidth");
    put(transform, properties.outputHeight, &IDewarpingTransform::put_OutputHeight, "setting OutputHeight");
    put(transform, properties.outputFrameRate, &IDewarpingTransform::put_OutputFrameRate,
        "setting OutputFrameRate");
    if (properties.lensProfile) {
        putLensProfile(transform, *properties.lensProfile);
    }
    put(transform, properties.tiltOrientation, &IDewarpingTransform::put_TiltOrientation,
        "setting TiltOrientation");
    put(transform, properties.viewType, &IDewarpingTransform::put_ViewType, "setting ViewType");
    // After the view type: it says whose effect level is meant.
    put(transform, properties.effectLevel, &IDewarpingTransform::put_EffectLevel, "setting EffectLevel");
    put(transform, properties.panoramaFieldOfView, &IDewarpingTransform::put_PanoramaFieldOfView,
        "setting PanoramaFieldOfView");
    put(transform, properties.panoramaPanOffset, &IDewarpingTransform::put_PanoramaPanOffset,
        "setting PanoramaPanOffset");
    if (properties.isBypassed) {
        requireStep(transform.put_Bypass(*properties.isBypassed ? VARIANT_TRUE : VARIANT_FALSE),
                    "setting Bypass");
    }
    if (const auto& edges = properties.excludeRect) {
        com::ComPtr<IRectangle> rectangle;
        requireStep(transform.get_ExcludeRect(rectangle.put()), "getting ExcludeRect");
        requireStep(rectangle->Init(edges->left, edges->top, edges->right, edges->bottom),
                    "setting ExcludeRect");
    }
}

void putPosition(IDewarpingTransform& transform, const TransformProperties& properties) {
    put(transform, properties.pan, &IDewarpingTransform::put_Pan, "setting Pan");
    put(transform, properties.tilt, &IDewarpingTransform::put_Tilt, "setting Tilt");
    put(transform, properties.fieldOfView, &IDewarpingTransform::put_FieldOfView, "setting FieldOfView");
}

} // namespace tarvo::host
