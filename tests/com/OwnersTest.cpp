#include "com/BStr.h"
#include "com/MediaType.h"
#include "com/SafeArray.h"
#include "com/Variant.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tarvo::com {
namespace {

constexpr OleStringView pan = OLESTR("pan");

TEST(BStrOwner, copiesMovesAndHandsOver) {
    CBStr text(pan);
    EXPECT_EQ(text.view(), pan);
    CBStr copy(text);
    EXPECT_NE(copy.get(), text.get());
    EXPECT_EQ(copy.view(), pan);
    BSTR raw = text.get();
    CBStr moved(std::move(text));
    EXPECT_EQ(moved.get(), raw);
    EXPECT_EQ(text.get(), nullptr);
    copy = CBStr(OLESTR("tilt"));
    EXPECT_EQ(copy.view(), OLESTR("tilt"));
    const CBStr& alias = copy;
    copy = alias;
    EXPECT_EQ(copy.view(), OLESTR("tilt"));
    EXPECT_EQ(moved.detach(), raw);
    copy.attach(raw);
    EXPECT_EQ(copy.view(), pan);
    *copy.put() = SysAllocString(OLESTR("new"));
    EXPECT_EQ(copy.view(), OLESTR("new"));
    copy.reset();
    EXPECT_EQ(copy.get(), nullptr);
}

TEST(BStrOwner, takesNullForEmptyAndKeepsZeros) {
    EXPECT_TRUE(CBStr().view().empty());
    EXPECT_EQ(CBStr(CBStr()).get(), nullptr);
    EXPECT_NE(CBStr(OleStringView()).get(), nullptr);
    const OleStringView withZero(OLESTR("a\0b"), 3);
    EXPECT_EQ(CBStr(withZero).view(), withZero);
}

TEST(VariantOwner, holdsEachKindOfValue) {
    EXPECT_EQ(CVariant().type(), VT_EMPTY);
    EXPECT_EQ(CVariant(true).get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(CVariant(false).type(), VT_BOOL);
    EXPECT_EQ(CVariant(7).type(), VT_I4);
    EXPECT_EQ(CVariant(7).get().lVal, 7);
    EXPECT_EQ(CVariant(std::int64_t{1} << 40).get().llVal, 1099511627776);
    EXPECT_EQ(CVariant(std::int64_t{0}).type(), VT_I8);
    EXPECT_EQ(CVariant(0.5).get().dblVal, 0.5);
    EXPECT_EQ(CVariant(0.5).type(), VT_R8);
    const CVariant text{CBStr(pan)};
    EXPECT_EQ(text.type(), VT_BSTR);
    EXPECT_EQ(OleStringView(text.get().bstrVal), pan);
}

TEST(VariantOwner, countsReferences) {
    const ComPtr<CSample> sample = makeObject<CSample>();
    IUnknown* unknown = sample->controllingUnknown();
    {
        const CVariant value(unknown);
        EXPECT_EQ(value.type(), VT_UNKNOWN);
        EXPECT_EQ(references(unknown), 2U);
        CVariant copy(value);
        EXPECT_EQ(references(unknown), 3U);
        CVariant moved(std::move(copy));
        EXPECT_EQ(references(unknown), 3U);
        EXPECT_EQ(copy.type(), VT_EMPTY);
        moved = CVariant(1);
        EXPECT_EQ(references(unknown), 2U);
        const CVariant foreign(value.get());
        EXPECT_EQ(references(unknown), 3U);
        CVariant taken;
        taken.attach(CVariant(foreign).detach());
        EXPECT_EQ(references(unknown), 4U);
        taken.put()->vt = VT_I4;
        EXPECT_EQ(references(unknown), 3U);
    }
    EXPECT_EQ(references(unknown), 1U);
    EXPECT_EQ(CVariant(static_cast<IDispatch*>(nullptr)).type(), VT_DISPATCH);
}

TEST(VariantOwner, converts) {
    CVariant target;
    EXPECT_EQ(CVariant(2.5).convertTo(VT_I4, target), S_OK);
    EXPECT_EQ(target.get().lVal, 2);
    EXPECT_EQ(CVariant{CBStr(pan)}.convertTo(VT_I4, target), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(target.get().lVal, 2);
}

TEST(SafeArrayOwner, movesAndHandsOver) {
    CSafeArray array = CSafeArray::vector(VT_R8, 3);
    ASSERT_TRUE(array);
    SAFEARRAY* raw = array.get();
    CSafeArray moved(std::move(array));
    EXPECT_FALSE(array);
    EXPECT_EQ(moved.get(), raw);
    array = std::move(moved);
    EXPECT_EQ(array.detach(), raw);
    moved.attach(raw);
    *moved.put() = SafeArrayCreateVector(VT_I4, 0, 1);
    EXPECT_EQ(SafeArrayGetElemsize(moved.get()), 4U);
    EXPECT_FALSE(CSafeArray::vector(VT_EMPTY, 1));
}

TEST(SafeArrayOwner, showsItsElementsWhileLocked) {
    const CSafeArray array = CSafeArray::vector(VT_R8, 3, -1);
    {
        const CSafeArrayAccess<double> access(array.get());
        EXPECT_EQ(access.result(), S_OK);
        ASSERT_EQ(access.elements().size(), 3U);
        std::ranges::fill(access.elements(), 0.25);
        EXPECT_EQ(SafeArrayDestroy(array.get()), DISP_E_ARRAYISLOCKED);
    }
    EXPECT_EQ(array.get()->cLocks, 0U);
    LONG index = 1;
    double value = 0;
    EXPECT_EQ(SafeArrayGetElement(array.get(), &index, &value), S_OK);
    EXPECT_EQ(value, 0.25);
}

TEST(SafeArrayOwner, showsNothingOfAnotherShape) {
    const CSafeArray array = CSafeArray::vector(VT_R8, 3);
    const CSafeArrayAccess<float> ofFloats(array.get());
    EXPECT_EQ(ofFloats.result(), DISP_E_TYPEMISMATCH);
    EXPECT_TRUE(ofFloats.elements().empty());
    EXPECT_EQ(CSafeArrayAccess<std::int64_t>(array.get()).result(), DISP_E_TYPEMISMATCH)
        << "of the same size";
    EXPECT_EQ(CSafeArrayAccess<double>(nullptr).result(), E_POINTER);
    EXPECT_EQ(array.get()->cLocks, 0U);
    SAFEARRAYBOUND bounds[2] = {};
    bounds[0].cElements = bounds[1].cElements = 2;
    CSafeArray square;
    square.attach(SafeArrayCreate(VT_R8, 2, bounds));
    EXPECT_EQ(CSafeArrayAccess<double>(square.get()).result(), DISP_E_BADINDEX);
    EXPECT_EQ(square.get()->cLocks, 0U);
}

TEST(MediaTypeOwner, ownsFormatAndReference) {
    const ComPtr<CSample> sample = makeObject<CSample>();
    IUnknown* unknown = sample->controllingUnknown();
    const GUID formatType{5, 6, 7, {}};
    CMediaType type;
    EXPECT_EQ(type.format<double>(formatType), nullptr);
    ASSERT_EQ(type.setFormat(formatType, 1.5), S_OK);
    ASSERT_EQ(type.setFormat(formatType, 2.5), S_OK);
    // Its own record may be what is set.
    ASSERT_NE(type.format<double>(formatType), nullptr);
    ASSERT_EQ(type.setFormat(formatType, *type.format<double>(formatType)), S_OK);
    ASSERT_NE(type.format<double>(formatType), nullptr);
    EXPECT_EQ(*type.format<double>(formatType), 2.5);
    type.fields().lSampleSize = 12;
    unknown->AddRef();
    type.fields().pUnk = unknown;
    ASSERT_NE(type.format<double>(formatType), nullptr);
    EXPECT_EQ(*type.format<double>(formatType), 2.5);
    EXPECT_EQ(type.format<double>(GUID{}), nullptr) << "another format";
    using Longer = double[2];
    EXPECT_EQ(type.format<Longer>(formatType), nullptr) << "too short";

    CMediaType copy;
    EXPECT_EQ(copy.assign(type.get()), S_OK);
    EXPECT_EQ(references(unknown), 3U);
    EXPECT_NE(copy->pbFormat, type->pbFormat);
    EXPECT_EQ(copy->lSampleSize, 12U);
    EXPECT_EQ(*copy.format<double>(formatType), 2.5);
    EXPECT_EQ(copy.assign(copy.get()), S_OK) << "of itself";
    EXPECT_EQ(references(unknown), 3U);
    EXPECT_EQ(*copy.format<double>(formatType), 2.5);

    CMediaType moved(std::move(copy));
    EXPECT_EQ(copy->pbFormat, nullptr);
    EXPECT_EQ(references(unknown), 3U);
    copy = std::move(moved);
    DMO_MEDIA_TYPE given;
    EXPECT_EQ(copy.copyTo(&given), S_OK);
    EXPECT_EQ(references(unknown), 4U);
    EXPECT_EQ(copy.copyTo(nullptr), E_POINTER);
    copy.attach(given);
    EXPECT_EQ(references(unknown), 3U);
    DMO_MEDIA_TYPE detached = copy.detach();
    EXPECT_EQ(references(unknown), 3U);
    MoFreeMediaType(&detached);
    type.reset();
    EXPECT_EQ(references(unknown), 1U);
    EXPECT_EQ(type->lSampleSize, 0U);
}

} // namespace
} // namespace tarvo::com
