#include "platform/InterfaceTypes.h"
#include "tests/platform-automation/CountedObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tarvo::platform {
namespace {

using Text = std::basic_string<OLECHAR>;

SAFEARRAYBOUND bound(LONG lower, ULONG count) {
    SAFEARRAYBOUND result{};
    result.lLbound = lower;
    result.cElements = count;
    return result;
}

TEST(SafeArray, ofDoublesKeepsThem) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_R8, 0, 3);
    ASSERT_NE(array, nullptr);
    for (LONG i = 0; i < 3; ++i) {
        double value = 0.5 + i;
        EXPECT_EQ(SafeArrayPutElement(array, &i, &value), S_OK);
    }
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    const auto* values = static_cast<const double*>(data);
    EXPECT_EQ(values[0], 0.5);
    EXPECT_EQ(values[2], 2.5);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    double value = 0;
    LONG index = 1;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &value), S_OK);
    EXPECT_EQ(value, 1.5);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, tellsTypeSizeAndBounds) {
    std::array<SAFEARRAYBOUND, 2> bounds{bound(-2, 3), bound(10, 5)};
    SAFEARRAY* array = SafeArrayCreate(VT_I2, 2, bounds.data());
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(SafeArrayGetDim(array), 2U);
    EXPECT_EQ(SafeArrayGetElemsize(array), 2U);
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
    EXPECT_EQ(type, VT_I2);
    LONG limit = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 1, &limit), S_OK);
    EXPECT_EQ(limit, -2);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &limit), S_OK);
    EXPECT_EQ(limit, 0);
    EXPECT_EQ(SafeArrayGetLBound(array, 2, &limit), S_OK);
    EXPECT_EQ(limit, 10);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &limit), S_OK);
    EXPECT_EQ(limit, 14);
    EXPECT_EQ(SafeArrayGetLBound(array, 0, &limit), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 3, &limit), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, knowsTheElementTypes) {
    const std::pair<VARTYPE, UINT> types[] = {
        {VT_I1, 1},
        {VT_UI1, 1},
        {VT_I2, 2},
        {VT_UI2, 2},
        {VT_I4, 4},
        {VT_UI4, 4},
        {VT_I8, 8},
        {VT_UI8, 8},
        {VT_R4, 4},
        {VT_R8, 8},
        {VT_BOOL, 2},
        {VT_BSTR, sizeof(BSTR)},
        {VT_VARIANT, sizeof(VARIANT)},
        {VT_UNKNOWN, sizeof(IUnknown*)},
        {VT_DISPATCH, sizeof(IDispatch*)},
    };
    for (const auto& [type, size] : types) {
        SAFEARRAY* array = SafeArrayCreateVector(type, 0, 2);
        ASSERT_NE(array, nullptr) << type;
        VARTYPE found = VT_EMPTY;
        EXPECT_EQ(SafeArrayGetVartype(array, &found), S_OK);
        EXPECT_EQ(found, type);
        EXPECT_EQ(SafeArrayGetElemsize(array), size) << type;
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

TEST(SafeArray, isNotMadeOfNothing) {
    SAFEARRAYBOUND one = bound(0, 1);
    EXPECT_EQ(SafeArrayCreateVector(VT_EMPTY, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_NULL, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_ARRAY | VT_I4, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &one), nullptr);
}

TEST(SafeArray, beginsWithZeros) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 100);
    ASSERT_NE(array, nullptr);
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    EXPECT_EQ(std::count(bytes, bytes + 100, std::uint8_t{0}), 100);
    SafeArrayUnaccessData(array);
    SafeArrayDestroy(array);
}

TEST(SafeArray, mayBeEmpty) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 0);
    ASSERT_NE(array, nullptr);
    LONG limit = 0;
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &limit), S_OK);
    EXPECT_EQ(limit, -1);
    LONG index = 0;
    LONG value = 7;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &value), DISP_E_BADINDEX);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, runsFastestInItsFirstIndex) {
    std::array<SAFEARRAYBOUND, 2> bounds{bound(1, 2), bound(5, 3)};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds.data());
    ASSERT_NE(array, nullptr);
    for (LONG column = 5; column < 8; ++column) {
        for (LONG row = 1; row < 3; ++row) {
            std::array<LONG, 2> indices{row, column};
            LONG value = column * 10 + row;
            ASSERT_EQ(SafeArrayPutElement(array, indices.data(), &value), S_OK);
        }
    }
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
    const auto* values = static_cast<const LONG*>(data);
    EXPECT_EQ(std::vector<LONG>(values, values + 6), (std::vector<LONG>{51, 52, 61, 62, 71, 72}));
    std::array<LONG, 2> indices{2, 6};
    void* element = nullptr;
    EXPECT_EQ(SafeArrayPtrOfIndex(array, indices.data(), &element), S_OK);
    EXPECT_EQ(element, values + 3);
    SafeArrayUnaccessData(array);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, refusesIndicesOutsideItsBounds) {
    std::array<SAFEARRAYBOUND, 2> bounds{bound(1, 2), bound(5, 3)};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds.data());
    ASSERT_NE(array, nullptr);
    for (std::array<LONG, 2> indices :
         {std::array<LONG, 2>{0, 5}, {3, 5}, {1, 4}, {1, 8}, {-2147483647, 5}}) {
        LONG value = 9;
        EXPECT_EQ(SafeArrayPutElement(array, indices.data(), &value), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayGetElement(array, indices.data(), &value), DISP_E_BADINDEX);
        void* element = nullptr;
        EXPECT_EQ(SafeArrayPtrOfIndex(array, indices.data(), &element), DISP_E_BADINDEX);
    }
    EXPECT_EQ(SafeArrayDestroy(array), S_OK) << "a refusal leaves no lock";
}

TEST(SafeArray, isNotDestroyedWhileLocked) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 1);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, mayLoseItsDataAndLiveOn) {
    SAFEARRAYBOUND three = bound(0, 3);
    SAFEARRAY* array = SafeArrayCreate(VT_BSTR, 1, &three);
    ASSERT_NE(array, nullptr);
    LONG index = 1;
    const BSTR text = SysAllocString(OLESTR("text"));
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    SysFreeString(text);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_NE(array->pvData, nullptr);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(array->pvData, nullptr);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK) << "twice is once";
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, refusesNull) {
    LONG number = 0;
    VARTYPE type = VT_EMPTY;
    SAFEARRAY* copy = nullptr;
    void* data = nullptr;
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &number, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(nullptr, &number, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(SafeArrayCopy(nullptr, nullptr), E_INVALIDARG);
}

TEST(SafeArray, ofTextsOwnsCopies) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 1, 2);
    ASSERT_NE(array, nullptr);
    BSTR text = SysAllocString(OLESTR("north"));
    LONG index = 1;
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK) << "the first copy is freed";
    SysFreeString(text);
    BSTR found = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &found), S_OK);
    EXPECT_EQ(Text(found), OLESTR("north"));
    SysFreeString(found);

    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &found), S_OK);
    EXPECT_EQ(Text(found), OLESTR("north"));
    SysFreeString(found);
    index = 2;
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &found), S_OK);
    EXPECT_EQ(SysStringLen(found), 0U);
    SysFreeString(found);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArray, ofInterfacesCountsReferences) {
    for (const VARTYPE type : {VARTYPE{VT_UNKNOWN}, VARTYPE{VT_DISPATCH}}) {
        CCountedObject object;
        CCountedObject other;
        SAFEARRAY* array = SafeArrayCreateVector(type, 0, 2);
        ASSERT_NE(array, nullptr);
        LONG index = 0;
        EXPECT_EQ(SafeArrayPutElement(array, &index, &object), S_OK);
        EXPECT_EQ(object.references(), 1U);
        EXPECT_EQ(SafeArrayPutElement(array, &index, &object), S_OK) << "by itself";
        EXPECT_EQ(object.references(), 1U);
        SAFEARRAY* copy = nullptr;
        EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
        EXPECT_EQ(object.references(), 2U);
        EXPECT_EQ(SafeArrayPutElement(copy, &index, &other), S_OK);
        EXPECT_EQ(object.references(), 1U);
        EXPECT_EQ(other.references(), 1U);
        IUnknown* found = nullptr;
        EXPECT_EQ(SafeArrayGetElement(array, &index, &found), S_OK);
        EXPECT_EQ(found, &object);
        EXPECT_EQ(object.references(), 2U);
        found->Release();
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
        EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
        EXPECT_EQ(object.references(), 0U);
        EXPECT_EQ(other.references(), 0U);
    }
}

TEST(SafeArray, ofVariantsOwnsTheirValues) {
    CCountedObject object;
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    ASSERT_NE(array, nullptr);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_UNKNOWN;
    value.punkVal = &object;
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), S_OK);
    EXPECT_EQ(object.references(), 1U);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(object.references(), 2U);
    VARIANT found;
    VariantInit(&found);
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &found), S_OK);
    EXPECT_EQ(found.vt, VT_UNKNOWN);
    EXPECT_EQ(object.references(), 3U);
    VariantClear(&found);

    value.vt = VT_I4;
    value.lVal = 5;
    EXPECT_EQ(SafeArrayPutElement(copy, &index, &value), S_OK);
    EXPECT_EQ(object.references(), 1U);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.references(), 0U);
}

TEST(SafeArray, copyIsUnlocked) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_R4, 0, 1);
    ASSERT_NE(array, nullptr);
    SafeArrayLock(array);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    SafeArrayUnlock(array);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

} // namespace
} // namespace tarvo::platform
