#include "interfaces/TarvoVideoTransform.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <numeric>
#include <vector>

namespace tarvo::interfaces {
namespace {

/// Number of a method's slot in the table of its interface, whose first has number 0; -1 if it has none.
///
/// Both builds' compilers keep a pointer to a virtual method as one more than its offset in the table.
template<class Method>
std::ptrdiff_t slotOf(Method method) {
    struct Representation {
        std::ptrdiff_t offsetPlusOne;
        std::ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof(representation) == sizeof(method));
    std::memcpy(&representation, &method, sizeof(method));
    const bool isVirtual = representation.offsetPlusOne % 2 != 0;
    constexpr auto slotSize = static_cast<std::ptrdiff_t>(sizeof(void*));
    return isVirtual ? (representation.offsetPlusOne - 1) / slotSize : -1;
}

template<class... Methods>
std::vector<std::ptrdiff_t> slotsOf(Methods... methods) {
    return {slotOf(methods)...};
}

/// The slots after IDispatch's seven, as many as there are methods.
std::vector<std::ptrdiff_t> slotsFrom7(std::size_t count) {
    std::vector<std::ptrdiff_t> slots(count);
    std::iota(slots.begin(), slots.end(), 7);
    return slots;
}

TEST(Slots, areCountedRight) {
    EXPECT_EQ(slotOf(&IUnknown::AddRef), 1);
    EXPECT_EQ(slotOf(&IUnknown::Release), 2);
    EXPECT_EQ(slotOf(&IDispatch::Invoke), 6);
}

TEST(Slots, ofTheDewarpingTransform) {
    using I = IDewarpingTransform;
    const std::vector<std::ptrdiff_t> slots = slotsOf(
        &I::get_LensProfile, &I::put_LensProfile, &I::get_TiltOrientation, &I::put_TiltOrientation,
        &I::get_OutputWidth, &I::put_OutputWidth, &I::get_OutputHeight, &I::put_OutputHeight,
        &I::get_OutputFrameRate, &I::put_OutputFrameRate, &I::get_Pan, &I::put_Pan, &I::get_Tilt,
        &I::put_Tilt, &I::get_FieldOfView, &I::put_FieldOfView, &I::get_Bypass, &I::put_Bypass,
        &I::get_EffectLevel, &I::put_EffectLevel, &I::get_Options, &I::put_Options, &I::get_ViewType,
        &I::put_ViewType, &I::SetPTZPosition, &I::CheckDewarpingCapability, &I::MapPoint, &I::GetCurrentImage,
        &I::get_SelectedView, &I::put_SelectedView, &I::InjectAcceleratorFilter, &I::MapPointToOverview,
        &I::get_PanoramaFieldOfView, &I::put_PanoramaFieldOfView, &I::get_PanoramaPanOffset,
        &I::put_PanoramaPanOffset, &I::SetCustomTransformData, &I::get_CustomTransformViewRect,
        &I::get_ExcludeRect, &I::get_CustomTransformControlType, &I::put_CustomTransformControlType,
        &I::get_CustomTransformControl, &I::get_HardwareAccelerationActive);
    EXPECT_EQ(slots, slotsFrom7(43));
}

TEST(Slots, ofTheRectangle) {
    using I = IRectangle;
    EXPECT_EQ(slotsOf(&I::get_Left, &I::put_Left, &I::get_Top, &I::put_Top, &I::get_Right, &I::put_Right,
                      &I::get_Bottom, &I::put_Bottom, &I::get_Width, &I::get_Height, &I::InflateRect,
                      &I::DeflateRect, &I::OffsetRect, &I::Init),
              slotsFrom7(14));
}

TEST(Slots, ofTheControls) {
    EXPECT_EQ(slotsOf(&IDigitalZoomControl::get_ViewRect), slotsFrom7(1));
    using I = IVirtualPtzFromPanoramaControl;
    EXPECT_EQ(slotsOf(&I::get_PanoramaHorizontalFieldOfView, &I::put_PanoramaHorizontalFieldOfView,
                      &I::get_PanoramaVerticalFieldOfView, &I::put_PanoramaVerticalFieldOfView,
                      &I::get_CameraPitch, &I::put_CameraPitch, &I::get_CameraRoll, &I::put_CameraRoll,
                      &I::get_EffectLevel, &I::put_EffectLevel, &I::get_Pan, &I::put_Pan, &I::get_Tilt,
                      &I::put_Tilt, &I::get_FieldOfView, &I::put_FieldOfView, &I::MapPoint,
                      &I::get_UseStrictBorderMode, &I::put_UseStrictBorderMode),
              slotsFrom7(19));
}

TEST(Slots, ofTheImageBuffer) {
    using I = IImageBuffer;
    EXPECT_EQ(slotsOf(&I::get_DataPointer, &I::get_Size, &I::get_Width, &I::get_Height, &I::get_Format,
                      &I::get_Timestamp, &I::get_Duration, &I::LockBuffer, &I::UnlockBuffer),
              slotsFrom7(9));
}

TEST(Slots, ofTheAccelerator) {
    EXPECT_EQ(slotsOf(&IAccelerator::get_Settings, &IAccelerator::put_Settings), slotsFrom7(2));
}

} // namespace
} // namespace tarvo::interfaces
