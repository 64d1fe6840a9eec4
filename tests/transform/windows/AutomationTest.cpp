#include "com/SafeArray.h"
#include "com/Variant.h"
#include "tests/transform/EventSinks.h"
#include "tests/transform/TransformHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace tarvo::transform {
namespace {

using com::CVariant;

/// The transform as a script sees it: by the names of its members alone.
class CLateBound {
public:
    explicit CLateBound(IDispatch* object) : m_object(object) {}

    HRESULT put(const OLECHAR* name, const VARIANT& value) {
        DISPID putId = DISPID_PROPERTYPUT;
        VARIANT argument = value;
        DISPPARAMS parameters{&argument, &putId, 1, 1};
        return invoke(name, DISPATCH_PROPERTYPUT, parameters, nullptr);
    }
    HRESULT put(const OLECHAR* name, const CVariant& value) { return put(name, value.get()); }
    CVariant get(const OLECHAR* name) {
        CVariant result;
        DISPPARAMS none{};
        EXPECT_EQ(invoke(name, DISPATCH_PROPERTYGET, none, result.put()), S_OK);
        return result;
    }
    /// Arguments in the order of the declaration.
    HRESULT call(const OLECHAR* name, const std::vector<VARIANT>& arguments, VARIANT* result = nullptr) {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        return invoke(name, DISPATCH_METHOD, parameters, result);
    }
    HRESULT find(const OLECHAR* name, DISPID& id) const {
        auto* text = const_cast<OLECHAR*>(name);
        return m_object->GetIDsOfNames(GUID{}, &text, 1, LOCALE_USER_DEFAULT, &id);
    }

private:
    HRESULT invoke(const OLECHAR* name, WORD flags, DISPPARAMS& parameters, VARIANT* result) {
        DISPID id = 0;
        const HRESULT found = find(name, id);
        if (FAILED(found))
            return found;
        EXCEPINFO exception{};
        const HRESULT answer = m_object->Invoke(id, GUID{}, LOCALE_USER_DEFAULT, flags, &parameters, result,
                                                &exception, nullptr);
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrHelpFile);
        // What a member answers that fails comes as an exception.
        return answer == DISP_E_EXCEPTION ? exception.scode : answer;
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

VARIANT boolean(bool value) {
    VARIANT variant{};
    variant.vt = VT_BOOL;
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return variant;
}

VARIANT reference(double& target) {
    VARIANT variant{};
    variant.vt = VT_R8 | VT_BYREF;
    variant.pdblVal = &target;
    return variant;
}

class Automation : public CTransformTest {
protected:
    CTransformHost host;
    CLateBound script{host.transform.get()};
};

TEST_F(Automation, putsAndGetsNumbers) {
    const std::vector<std::pair<const OLECHAR*, double>> numbers{{OLESTR("OutputFrameRate"), 12.5},
                                                                 {OLESTR("Pan"), 11.0},
                                                                 {OLESTR("Tilt"), -12.0},
                                                                 {OLESTR("FieldOfView"), 13.0},
                                                                 {OLESTR("EffectLevel"), 0.5},
                                                                 {OLESTR("PanoramaFieldOfView"), 120.0},
                                                                 {OLESTR("PanoramaPanOffset"), -60.0}};
    for (const auto& [name, value] : numbers) {
        EXPECT_EQ(script.put(name, number(value)), S_OK);
        const CVariant answer = script.get(name);
        EXPECT_EQ(answer.type(), VT_R8);
        EXPECT_EQ(answer.get().dblVal, value);
    }
    const std::vector<std::pair<const OLECHAR*, LONG>> wholes{{OLESTR("TiltOrientation"), 3},
                                                              {OLESTR("OutputWidth"), 320},
                                                              {OLESTR("OutputHeight"), 240},
                                                              {OLESTR("Options"), 9},
                                                              {OLESTR("ViewType"), 4},
                                                              {OLESTR("SelectedView"), 2},
                                                              {OLESTR("CustomTransformControlType"), 1}};
    for (const auto& [name, value] : wholes) {
        EXPECT_EQ(script.put(name, whole(value)), S_OK);
        const CVariant answer = script.get(name);
        EXPECT_EQ(answer.type(), VT_I4);
        EXPECT_EQ(answer.get().lVal, value);
    }
    EXPECT_EQ(script.put(OLESTR("Bypass"), boolean(true)), S_OK);
    EXPECT_EQ(script.get(OLESTR("Bypass")).get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(script.put(OLESTR("ViewType"), whole(9)), E_INVALIDARG);
    EXPECT_EQ(script.put(OLESTR("HardwareAccelerationActive"), boolean(true)), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(script.get(OLESTR("HardwareAccelerationActive")).get().boolVal, VARIANT_TRUE);
}

TEST_F(Automation, hasTheDispatchIdsOfItsMembers) {
    const std::vector<std::pair<const OLECHAR*, DISPID>> ids{{OLESTR("LensProfile"), 1},
                                                             {OLESTR("TiltOrientation"), 2},
                                                             {OLESTR("OutputWidth"), 3},
                                                             {OLESTR("OutputHeight"), 4},
                                                             {OLESTR("OutputFrameRate"), 5},
                                                             {OLESTR("Pan"), 6},
                                                             {OLESTR("Tilt"), 7},
                                                             {OLESTR("FieldOfView"), 8},
                                                             {OLESTR("Bypass"), 9},
                                                             {OLESTR("EffectLevel"), 10},
                                                             {OLESTR("Options"), 11},
                                                             {OLESTR("ViewType"), 12},
                                                             {OLESTR("SetPTZPosition"), 100},
                                                             {OLESTR("CheckDewarpingCapability"), 101},
                                                             {OLESTR("MapPoint"), 102},
                                                             {OLESTR("GetCurrentImage"), 103},
                                                             {OLESTR("SelectedView"), 104},
                                                             {OLESTR("InjectAcceleratorFilter"), 105},
                                                             {OLESTR("MapPointToOverview"), 106},
                                                             {OLESTR("PanoramaFieldOfView"), 107},
                                                             {OLESTR("PanoramaPanOffset"), 108},
                                                             {OLESTR("SetCustomTransformData"), 109},
                                                             {OLESTR("CustomTransformViewRect"), 110},
                                                             {OLESTR("ExcludeRect"), 111},
                                                             {OLESTR("CustomTransformControlType"), 112},
                                                             {OLESTR("CustomTransformControl"), 113},
                                                             {OLESTR("HardwareAccelerationActive"), 114}};
    for (const auto& [name, expected] : ids) {
        DISPID id = 0;
        EXPECT_EQ(script.find(name, id), S_OK) << expected;
        EXPECT_EQ(id, expected);
    }
    DISPID id = 0;
    EXPECT_EQ(script.find(OLESTR("Zoom"), id), DISP_E_UNKNOWNNAME);
}

TEST_F(Automation, passesArrays) {
    CVariant profile;
    {
        com::CSafeArray array = com::CSafeArray::vector(VT_R8, 3);
        com::CSafeArrayAccess<double>(array.get()).elements()[2] = 0.375;
        VARIANT value{};
        value.vt = VT_ARRAY | VT_R8;
        value.parray = array.detach();
        profile.attach(value);
    }
    EXPECT_EQ(script.put(OLESTR("LensProfile"), profile), S_OK);
    const CVariant answer = script.get(OLESTR("LensProfile"));
    ASSERT_EQ(answer.type(), VT_ARRAY | VT_R8);
    const com::CSafeArrayAccess<double> access(answer.get().parray);
    ASSERT_EQ(access.elements().size(), 3U);
    EXPECT_EQ(access.elements()[2], 0.375);

    CVariant tables;
    com::CSafeArray bytes = com::CSafeArray::vector(VT_UI1, 5);
    VARIANT value{};
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = bytes.detach();
    tables.attach(value);
    EXPECT_EQ(script.call(OLESTR("SetCustomTransformData"), {tables.get(), whole(0)}), E_INVALIDARG)
        << "not enough data";
}

TEST_F(Automation, callsMethods) {
    EXPECT_EQ(script.call(OLESTR("SetPTZPosition"), {number(5.0), whole(-6), number(20.0), boolean(false)}),
              S_OK)
        << "whole numbers are converted";
    double pan = 0.0;
    double tilt = 0.0;
    EXPECT_EQ(script.call(OLESTR("MapPoint"),
                          {number(0.5), number(0.5), reference(pan), reference(tilt), whole(0)}),
              S_OK);
    EXPECT_NEAR(pan, 5.0, 1e-5);
    EXPECT_NEAR(tilt, -6.0, 1e-5);
    EXPECT_EQ(script.call(OLESTR("MapPointToOverview"),
                          {number(0.5), number(0.5), reference(pan), reference(tilt), whole(0)}),
              S_OK);
    CVariant isCapable;
    EXPECT_EQ(script.call(OLESTR("CheckDewarpingCapability"), {}, isCapable.put()), S_OK);
    EXPECT_EQ(isCapable.get().boolVal, VARIANT_TRUE);
    IAccelerator* accelerator = nullptr;
    VARIANT target{};
    target.vt = VT_DISPATCH | VT_BYREF;
    target.ppdispVal = reinterpret_cast<IDispatch**>(&accelerator);
    EXPECT_EQ(script.call(OLESTR("InjectAcceleratorFilter"), {target}), E_NOINTERFACE);
    EXPECT_EQ(accelerator, nullptr);
}

TEST_F(Automation, handsOutObjects) {
    for (const OLECHAR* name : {OLESTR("ExcludeRect"), OLESTR("CustomTransformViewRect")}) {
        const CVariant rectangle = script.get(name);
        ASSERT_EQ(rectangle.type(), VT_DISPATCH);
        CLateBound late(rectangle.get().pdispVal);
        EXPECT_EQ(late.call(OLESTR("Init"), {number(0.1), number(0.2), number(0.3), number(0.4)}), S_OK);
        EXPECT_EQ(late.get(OLESTR("Bottom")).get().dblVal, 0.4);
    }
    const CVariant control = script.get(OLESTR("CustomTransformControl"));
    ASSERT_EQ(control.type(), VT_UNKNOWN);
    EXPECT_TRUE(ComPtr<IUnknown>(control.get().punkVal).as<IDigitalZoomControl>());
}

TEST_F(Automation, fetchesTheImage) {
    host.negotiateRgb(64, 48, 32, 24);
    ASSERT_EQ(host.through(patternRgb(64, 48), 3'000'000).result, S_OK);
    CVariant image;
    LONGLONG time = 0;
    VARIANT imageTarget{};
    imageTarget.vt = VT_VARIANT | VT_BYREF;
    imageTarget.pvarVal = image.put();
    VARIANT timeTarget{};
    timeTarget.vt = VT_I8 | VT_BYREF;
    timeTarget.pllVal = &time;
    EXPECT_EQ(script.call(OLESTR("GetCurrentImage"), {imageTarget, timeTarget, whole(0)}), S_OK);
    ASSERT_EQ(image.type(), VT_ARRAY | VT_UI1);
    EXPECT_EQ(com::CSafeArrayAccess<std::uint8_t>(image.get().parray).elements().size(), 40U + 24 * 96);
    EXPECT_EQ(time, 3'000'000);
}

TEST_F(Automation, showsTheImageBufferToScripts) {
    host.negotiateRgb(64, 48, 32, 24);
    int count = 0;
    ImageSink sink(host, [&](const DISPPARAMS& parameters) {
        ++count;
        CLateBound image(parameters.rgvarg[0].pdispVal);
        EXPECT_EQ(image.get(OLESTR("Size")).get().lVal, 32 * 4 * 24);
        EXPECT_EQ(image.get(OLESTR("Width")).get().lVal, 32);
        EXPECT_EQ(image.get(OLESTR("Height")).get().lVal, 24);
        EXPECT_EQ(image.get(OLESTR("Format")).get().lVal, 0);
        EXPECT_EQ(image.get(OLESTR("Timestamp")).get().llVal, 3'000'000);
        EXPECT_EQ(image.get(OLESTR("Duration")).get().llVal, 400'000);
        EXPECT_NE(image.get(OLESTR("DataPointer")).get().llVal, 0);
        CVariant isLocked;
        EXPECT_EQ(image.call(OLESTR("LockBuffer"), {whole(0)}, isLocked.put()), S_OK);
        EXPECT_EQ(isLocked.get().boolVal, VARIANT_TRUE);
        EXPECT_EQ(image.call(OLESTR("UnlockBuffer"), {}), S_OK);
        return S_OK;
    });
    ASSERT_EQ(host.through(patternRgb(64, 48), 3'000'000).result, S_OK);
    EXPECT_EQ(count, 1);
}

} // namespace
} // namespace tarvo::transform
