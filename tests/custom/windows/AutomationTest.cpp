#include "com/Variant.h"
#include "custom/DigitalZoomControl.h"
#include "custom/VirtualPtzFromPanoramaControl.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarvo::custom {
namespace {

using com::ComPtr;
using com::CVariant;
using com::makeObject;

/// An object as a script sees it: by the names of its members alone.
class CLateBound {
public:
    explicit CLateBound(IDispatch* object) : m_object(object) {}

    HRESULT find(const OLECHAR* name, DISPID& id) const {
        auto* text = const_cast<OLECHAR*>(name);
        return m_object->GetIDsOfNames(GUID{}, &text, 1, LOCALE_USER_DEFAULT, &id);
    }

    HRESULT put(const OLECHAR* name, CVariant value) {
        DISPID putId = DISPID_PROPERTYPUT;
        VARIANT argument = value.get();
        DISPPARAMS parameters{&argument, &putId, 1, 1};
        return invoke(name, DISPATCH_PROPERTYPUT, parameters, nullptr);
    }

    CVariant get(const OLECHAR* name) {
        CVariant result;
        DISPPARAMS none{};
        EXPECT_EQ(invoke(name, DISPATCH_PROPERTYGET, none, result.put()), S_OK);
        return result;
    }

    /// Arguments in the order of the declaration.
    HRESULT call(const OLECHAR* name, const std::vector<VARIANT>& arguments) {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        return invoke(name, DISPATCH_METHOD, parameters, nullptr);
    }

private:
    HRESULT invoke(const OLECHAR* name, WORD flags, DISPPARAMS& parameters, VARIANT* result) {
        DISPID id = 0;
        const HRESULT found = find(name, id);
        if (FAILED(found))
            return found;
        return m_object->Invoke(id, GUID{}, LOCALE_USER_DEFAULT, flags, &parameters, result, nullptr,
                                nullptr);
    }

    ComPtr<IDispatch> m_object;
};

VARIANT number(double value) {
    VARIANT variant{};
    variant.vt = VT_R8;
    variant.dblVal = value;
    return variant;
}

VARIANT whole(LONG value) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

VARIANT reference(double& target) {
    VARIANT variant{};
    variant.vt = VT_R8 | VT_BYREF;
    variant.pdblVal = &target;
    return variant;
}

TEST(Automation, steersTheRectangleOfTheDigitalZoom) {
    const ComPtr<CDigitalZoomControl> control = makeObject<CDigitalZoomControl>();
    CLateBound zoom(control.get());
    const CVariant answer = zoom.get(OLESTR("ViewRect"));
    ASSERT_EQ(answer.type(), VT_DISPATCH);
    EXPECT_EQ(answer.get().pdispVal, static_cast<IDispatch*>(&control->viewRect()));
    CLateBound rectangle(answer.get().pdispVal);
    EXPECT_EQ(rectangle.put(OLESTR("Left"), CVariant(0.25)), S_OK);
    EXPECT_EQ(rectangle.put(OLESTR("Bottom"), CVariant(0.5)), S_OK);
    EXPECT_EQ(rectangle.get(OLESTR("Width")).get().dblVal, 0.75);
    EXPECT_EQ(rectangle.get(OLESTR("Height")).get().dblVal, 0.5);
    EXPECT_EQ(rectangle.call(OLESTR("OffsetRect"), {number(-0.125), number(0.25)}), S_OK);
    EXPECT_EQ(rectangle.call(OLESTR("DeflateRect"), {number(0.125), number(0.0)}), S_OK);
    const BoundedRectangle seen = control->viewRect().snapshot();
    EXPECT_EQ(seen.left, 0.25);
    EXPECT_EQ(seen.top, 0.25);
    EXPECT_EQ(seen.right, 0.75);
    EXPECT_EQ(seen.bottom, 0.75);
    EXPECT_EQ(rectangle.call(OLESTR("Init"), {whole(0), number(0.0), whole(1), number(1.0)}), S_OK)
        << "whole numbers are converted";
    EXPECT_EQ(control->viewRect().snapshot().left, 0.0);
    EXPECT_NE(rectangle.put(OLESTR("Width"), CVariant(0.5)), S_OK) << "follows from the edges";
    DISPID id = 0;
    EXPECT_EQ(rectangle.find(OLESTR("ViewRect"), id), DISP_E_UNKNOWNNAME);
}

TEST(Automation, steersTheVirtualCamera) {
    const auto control = makeObject<CVirtualPtzFromPanoramaControl>();
    CLateBound camera(control.get());
    EXPECT_EQ(camera.put(OLESTR("FieldOfView"), CVariant(200.0)), S_OK);
    EXPECT_EQ(camera.get(OLESTR("FieldOfView")).get().dblVal, 120.0);
    EXPECT_EQ(camera.put(OLESTR("FieldOfView"), CVariant(90)), S_OK);
    EXPECT_EQ(camera.put(OLESTR("Pan"), CVariant(10.0)), S_OK);
    EXPECT_EQ(camera.put(OLESTR("CameraRoll"), CVariant(2.0)), S_OK);
    EXPECT_EQ(camera.get(OLESTR("CameraRoll")).get().dblVal, 2.0);
    EXPECT_EQ(camera.put(OLESTR("UseStrictBorderMode"), CVariant(true)), S_OK);
    const CVariant isStrict = camera.get(OLESTR("UseStrictBorderMode"));
    EXPECT_EQ(isStrict.type(), VT_BOOL);
    EXPECT_EQ(isStrict.get().boolVal, VARIANT_TRUE);
    double pan = 0.0;
    double tilt = -77.0;
    EXPECT_EQ(camera.call(OLESTR("MapPoint"),
                          {number(1.0), number(0.5), reference(pan), reference(tilt), whole(0)}),
              S_OK);
    EXPECT_NEAR(pan, 10.0 + 45.0, 1e-3);
    EXPECT_NEAR(tilt, 0.0, 1e-3);
}

} // namespace
} // namespace tarvo::custom
