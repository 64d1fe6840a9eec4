#include "platform/InterfaceTypes.h"
#include "tests/platform-automation/CountedObject.h"

#include <gtest/gtest.h>

#include <string>

namespace tarvo::platform {
namespace {

using Text = std::basic_string<OLECHAR>;

VARIANT empty() {
    VARIANT value;
    VariantInit(&value);
    return value;
}

VARIANT text(const OLECHAR* characters) {
    VARIANT value = empty();
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(characters);
    return value;
}

TEST(Variant, beginsEmpty) {
    VARIANT value;
    value.vt = VT_R8;
    VariantInit(&value);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(Variant, clearsWhatItOwns) {
    CCountedObject object;
    VARIANT value = text(OLESTR("text"));
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    for (const VARTYPE type : {VARTYPE{VT_UNKNOWN}, VARTYPE{VT_DISPATCH}}) {
        value.vt = type;
        value.pdispVal = &object;
        object.AddRef();
        EXPECT_EQ(VariantClear(&value), S_OK);
        EXPECT_EQ(object.references(), 0U);
        value.vt = type;
        value.pdispVal = nullptr;
        EXPECT_EQ(VariantClear(&value), S_OK);
    }
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = SafeArrayCreateVector(VT_UI1, 0, 10);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, withALockedArrayIsNotCleared) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, 10);
    VARIANT value = empty();
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
    SafeArrayLock(array);
    // Systems differ in whether the variant still holds the array then; the array is there in any case.
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    SafeArrayUnlock(array);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(Variant, doesNotOwnWhatItRefersTo) {
    BSTR kept = SysAllocString(OLESTR("kept"));
    VARIANT value = empty();
    value.vt = VT_BSTR | VT_BYREF;
    value.pbstrVal = &kept;
    VARIANT copy = empty();
    EXPECT_EQ(VariantCopy(&copy, &value), S_OK);
    EXPECT_EQ(copy.pbstrVal, &kept);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(Text(kept), OLESTR("kept"));
    SysFreeString(kept);
}

TEST(Variant, ofAnUnknownTypeIsRefused) {
    VARIANT value = empty();
    VARIANT target = empty();
    for (const VARTYPE type : {VARTYPE{15}, VARTYPE{0x7F}, VARTYPE{VT_ARRAY}}) {
        value.vt = type;
        EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(VariantCopy(&target, &value), DISP_E_BADVARTYPE) << type;
    }
}

TEST(Variant, isCopiedWithWhatItOwns) {
    CCountedObject object;
    VARIANT source = text(OLESTR("pan"));
    VARIANT target = text(OLESTR("old"));
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_NE(target.bstrVal, source.bstrVal);
    EXPECT_EQ(Text(target.bstrVal), OLESTR("pan"));
    VariantClear(&source);
    source.vt = VT_UNKNOWN;
    source.punkVal = &object;
    object.AddRef();
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    EXPECT_EQ(object.references(), 2U);
    EXPECT_EQ(VariantCopy(&target, &target), S_OK) << "onto itself";
    EXPECT_EQ(object.references(), 2U);
    VariantClear(&source);
    VariantClear(&target);
    EXPECT_EQ(object.references(), 0U);
}

TEST(Variant, isCopiedWithItsArray) {
    VARIANT source = empty();
    source.vt = VT_ARRAY | VT_I4;
    source.parray = SafeArrayCreateVector(VT_I4, 0, 1);
    LONG index = 0;
    LONG value = 77;
    SafeArrayPutElement(source.parray, &index, &value);
    VARIANT target = empty();
    EXPECT_EQ(VariantCopy(&target, &source), S_OK);
    ASSERT_NE(target.parray, source.parray);
    VariantClear(&source);
    value = 0;
    EXPECT_EQ(SafeArrayGetElement(target.parray, &index, &value), S_OK);
    EXPECT_EQ(value, 77);
    VariantClear(&target);
}

TEST(Variant, isCopiedThroughItsReference) {
    double number = 2.5;
    VARIANT source = empty();
    source.vt = VT_R8 | VT_BYREF;
    source.pdblVal = &number;
    VARIANT target = text(OLESTR("old"));
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_R8);
    EXPECT_EQ(target.dblVal, 2.5);

    VARIANT inner = text(OLESTR("inner"));
    source.vt = VT_VARIANT | VT_BYREF;
    source.pvarVal = &inner;
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_BSTR);
    EXPECT_NE(target.bstrVal, inner.bstrVal);
    EXPECT_EQ(Text(target.bstrVal), OLESTR("inner"));
    VariantClear(&target);

    // A variant that refers to a number, behind a reference.
    VARIANT referring = empty();
    referring.vt = VT_R8 | VT_BYREF;
    referring.pdblVal = &number;
    source.pvarVal = &referring;
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_R8);
    EXPECT_EQ(target.dblVal, 2.5);

    // Onto itself.
    EXPECT_EQ(VariantCopyInd(&source, &source), S_OK);
    EXPECT_EQ(source.vt, VT_R8);
    EXPECT_EQ(source.dblVal, 2.5);
    VariantClear(&inner);
}

TEST(Variant, isCopiedThroughAReferenceToAnArray) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_R8, 0, 3);
    VARIANT source = empty();
    source.vt = VT_ARRAY | VT_R8 | VT_BYREF;
    source.pparray = &array;
    VARIANT target = empty();
    EXPECT_EQ(VariantCopyInd(&target, &source), S_OK);
    EXPECT_EQ(target.vt, VT_ARRAY | VT_R8);
    EXPECT_NE(target.parray, array);
    EXPECT_EQ(SafeArrayGetElemsize(target.parray), 8U);
    VariantClear(&target);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

} // namespace
} // namespace tarvo::platform
