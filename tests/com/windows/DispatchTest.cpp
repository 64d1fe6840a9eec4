#include "platform/InterfaceTypes.h"

#include <control.h>

// This compiler's header forgets to say it.
__CRT_UUID_DECL(IBasicAudio, 0x56a868b3, 0x0ad4, 0x11ce, 0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70)

#include "com/Dispatch.h"
#include "com/Variant.h"
#include "tests/com/AudioObject.h"

#include <gtest/gtest.h>

#include <Sample.h>

namespace tarvo::com {
namespace {

constexpr TypeLibraryId ownLibrary{
    {0x6B0C2A54, 0x31B1, 0x4C56, {0x8F, 0x4E, 0x0C, 0x9A, 0x3E, 0x5D, 0x7A, 0x02}}, 1, 3};
constexpr TypeLibraryId otherVersion{ownLibrary.id, 2, 0};

template<const TypeLibraryId& library>
class CScaler : public CObject<Implementing<CDispatch<IScaler, library>, IScaler, IDispatch>> {
public:
    STDMETHODIMP get_Factor(double* factor) override {
        *factor = m_factor;
        return S_OK;
    }
    STDMETHODIMP put_Factor(double factor) override {
        m_factor = factor;
        return factor > 0 ? S_OK : E_INVALIDARG;
    }
    STDMETHODIMP Scale(double value, double* result) override {
        *result = m_factor * value;
        return S_OK;
    }

private:
    double m_factor = 1;
    CLiving m_living;
};

HRESULT findMember(IDispatch& object, const OLECHAR* name, DISPID& id) {
    auto* text = const_cast<OLECHAR*>(name);
    return object.GetIDsOfNames(GUID{}, &text, 1, LOCALE_USER_DEFAULT, &id);
}

HRESULT put(IDispatch& object, DISPID member, CVariant value) {
    DISPID putId = DISPID_PROPERTYPUT;
    VARIANT argument = value.get();
    DISPPARAMS parameters{&argument, &putId, 1, 1};
    return object.Invoke(member, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr,
                         nullptr, nullptr);
}

CVariant get(IDispatch& object, DISPID member) {
    CVariant result;
    DISPPARAMS parameters{};
    EXPECT_EQ(object.Invoke(member, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &parameters,
                            result.put(), nullptr, nullptr),
              S_OK);
    return result;
}

TEST(Dispatch, describesTheInterfaceFromTheModulesOwnResource) {
    const ComPtr<IDispatch> object = makeObject<CScaler<ownLibrary>>();
    UINT count = 7;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(object->GetTypeInfoCount(nullptr), E_POINTER);
    ComPtr<ITypeInfo> information;
    ASSERT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, information.put()), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(information->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, __uuidof(IScaler));
    information->ReleaseTypeAttr(attributes);
    EXPECT_EQ(object->GetTypeInfo(1, LOCALE_USER_DEFAULT, information.put()), DISP_E_BADINDEX);
    EXPECT_FALSE(information);
    EXPECT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr), E_POINTER);
    EXPECT_EQ(references(object.get()), 1U);
}

TEST(Dispatch, knowsTheNamesOfTheMembers) {
    const ComPtr<IDispatch> object = makeObject<CScaler<ownLibrary>>();
    DISPID id = 0;
    EXPECT_EQ(findMember(*object.get(), OLESTR("Factor"), id), S_OK);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(findMember(*object.get(), OLESTR("scale"), id), S_OK) << "in any case";
    EXPECT_EQ(id, 2);
    EXPECT_EQ(findMember(*object.get(), OLESTR("Pan"), id), DISP_E_UNKNOWNNAME);
    OLECHAR* none = nullptr;
    EXPECT_EQ(object->GetIDsOfNames(__uuidof(IUnknown), &none, 0, LOCALE_USER_DEFAULT, &id),
              DISP_E_UNKNOWNINTERFACE);
}

TEST(Dispatch, callsTheMembers) {
    const ComPtr<IDispatch> object = makeObject<CScaler<ownLibrary>>();
    EXPECT_EQ(put(*object.get(), 1, CVariant(2.5)), S_OK);
    EXPECT_EQ(get(*object.get(), 1).get().dblVal, 2.5);
    EXPECT_EQ(put(*object.get(), 1, CVariant(4)), S_OK) << "whole numbers are converted";
    VARIANT argument = CVariant(3.0).get();
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    CVariant result;
    EXPECT_EQ(object->Invoke(2, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, result.put(),
                             nullptr, nullptr),
              S_OK);
    EXPECT_EQ(result.type(), VT_R8);
    EXPECT_EQ(result.get().dblVal, 12.0);
    EXPECT_EQ(references(object.get()), 1U);
}

TEST(Dispatch, passesFailuresOn) {
    const ComPtr<IDispatch> object = makeObject<CScaler<ownLibrary>>();
    DISPID putId = DISPID_PROPERTYPUT;
    VARIANT argument = CVariant(-1.0).get();
    DISPPARAMS parameters{&argument, &putId, 1, 1};
    EXCEPINFO exception{};
    EXPECT_EQ(object->Invoke(1, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr,
                             &exception, nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(exception.scode, E_INVALIDARG);
    DISPPARAMS nothing{};
    EXPECT_EQ(
        object->Invoke(77, GUID{}, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &nothing, nullptr, nullptr, nullptr),
        DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(object->Invoke(1, __uuidof(IUnknown), LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &nothing,
                             nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST(Dispatch, fallsBackToTheRegisteredLibrary) {
    const ComPtr<IDispatch> object = makeObject<CAudio>();
    DISPID id = 0;
    ASSERT_EQ(findMember(*object.get(), OLESTR("Volume"), id), S_OK);
    EXPECT_EQ(put(*object.get(), id, CVariant(-300)), S_OK);
    EXPECT_EQ(get(*object.get(), id).get().lVal, -300);
}

TEST(Dispatch, withoutItsLibraryHasNoDescription) {
    // The resource has another version, and nothing is registered.
    const ComPtr<IDispatch> object = makeObject<CScaler<otherVersion>>();
    UINT count = 7;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    DISPID id = 0;
    EXPECT_EQ(findMember(*object.get(), OLESTR("Factor"), id), TYPE_E_LIBNOTREGISTERED);
}

TEST(Dispatch, keepsTheDescriptionAsLongAsAnObjectLives) {
    const auto describe = [](IDispatch& object) {
        ITypeInfo* information = nullptr;
        throwIfFailed(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, &information));
        return information;
    };
    ComPtr<IDispatch> one = makeObject<CScaler<ownLibrary>>();
    ComPtr<IDispatch> two = makeObject<CScaler<ownLibrary>>();
    ComPtr<ITypeInfo> information;
    information.attach(describe(*one.get()));
    EXPECT_EQ(references(information.get()), 2U) << "this one and the kept one";
    one.reset();
    EXPECT_EQ(references(information.get()), 2U);
    ComPtr<ITypeInfo> again;
    again.attach(describe(*two.get()));
    EXPECT_EQ(again.get(), information.get());
    again.reset();
    two.reset();
    EXPECT_EQ(references(information.get()), 1U) << "let go with the last object";
}

} // namespace
} // namespace tarvo::com
