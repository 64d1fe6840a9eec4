#include "platform/InterfaceTypes.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace tarvo::platform {
namespace {

// What crosses an interface has the same shape on every system.
static_assert(sizeof(HRESULT) == 4 && sizeof(LONG) == 4 && sizeof(DWORD) == 4);
static_assert(sizeof(WCHAR) == 2 && std::is_same_v<OLECHAR, WCHAR>);
static_assert(std::is_same_v<std::remove_cvref_t<decltype(OLESTR("x")[0])>, OLECHAR>);
static_assert(sizeof(GUID) == 16 && sizeof(VARIANT) == 24 && offsetof(VARIANT, dblVal) == 8);
static_assert(sizeof(DMO_MEDIA_TYPE) == 88);

TEST(InterfaceTypes, haveVariantsWithoutNamesInBetween) {
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = -7;
    EXPECT_EQ(V_VT(&value), VT_I4);
    EXPECT_EQ(V_I4(&value), -7);
}

class CUnknown final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** result) override {
        *result = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

TEST(InterfaceTypes, canBeImplemented) {
    CUnknown object;
    IUnknown* const unknown = &object;
    void* result = &object;
    EXPECT_EQ(unknown->QueryInterface(GUID{}, &result), E_NOINTERFACE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(unknown->AddRef(), 2U);
}

} // namespace
} // namespace tarvo::platform
