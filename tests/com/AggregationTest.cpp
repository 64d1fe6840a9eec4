#include "com/Object.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

namespace tarvo::com {
namespace {

TEST(Aggregation, looksLikeOneObject) {
    const ComPtr<COuter> outer = makeObject<COuter>();
    IUnknown* unknown = outer->controllingUnknown();
    IObjectWithSite* site = answerFor<IObjectWithSite>(unknown);
    IPersist* persist = answerFor<IPersist>(unknown);
    ASSERT_NE(site, nullptr);
    ASSERT_NE(persist, nullptr);
    EXPECT_EQ(answerFor<IUnknown>(site), unknown);
    EXPECT_EQ(answerFor<IUnknown>(persist), unknown);
    EXPECT_EQ(answerFor<ISupportErrorInfo>(site), outer.get()) << "the outer object's own";
    EXPECT_EQ(answerFor<IPersist>(site), persist);
    EXPECT_EQ(answerFor<IDispatch>(site), nullptr);
}

TEST(Aggregation, countsReferencesOnTheOuterObject) {
    const ComPtr<COuter> outer = makeObject<COuter>();
    IUnknown* unknown = outer->controllingUnknown();
    EXPECT_EQ(references(outer->inner()), 1U);
    const ComPtr<IObjectWithSite> site = ComPtr<IUnknown>(unknown).as<IObjectWithSite>();
    ASSERT_TRUE(site);
    EXPECT_EQ(references(unknown), 2U);
    EXPECT_EQ(references(site.get()), 2U);
    EXPECT_EQ(references(outer->inner()), 1U) << "the inner one is held by the outer alone";
    EXPECT_EQ(site->AddRef(), 3U);
    EXPECT_EQ(unknown->Release(), 2U);
}

TEST(Aggregation, answersForTheInnerObjectAloneThroughItsInnerUnknown) {
    const ComPtr<COuter> outer = makeObject<COuter>();
    IUnknown* inner = outer->inner();
    EXPECT_NE(inner, outer->controllingUnknown());
    EXPECT_EQ(answerFor<IUnknown>(inner), inner);
    void* answer = nullptr;
    EXPECT_EQ(inner->QueryInterface(__uuidof(ISupportErrorInfo), &answer), E_NOINTERFACE)
        << "belongs to the outer object";
    EXPECT_EQ(answer, nullptr);
    EXPECT_EQ(inner->QueryInterface(__uuidof(IPersistStream), &answer), S_OK);
    EXPECT_EQ(references(inner), 1U);
    EXPECT_EQ(references(outer->controllingUnknown()), 2U) << "an interface counts on the outer object";
    static_cast<IPersistStream*>(answer)->Release();
}

TEST(Aggregation, keepsBothAliveByOneInterfaceAndEndsBoth) {
    ComPtr<COuter> outer = makeObject<COuter>();
    EXPECT_EQ(CLiving::count(), 2);
    EXPECT_EQ(moduleCount().count(), 2);
    ComPtr<IPersist> persist = ComPtr<IUnknown>(outer->controllingUnknown()).as<IPersist>();
    outer.reset();
    EXPECT_EQ(CLiving::count(), 2);
    EXPECT_EQ(references(persist.get()), 1U);
    persist.reset();
    EXPECT_EQ(CLiving::count(), 0);
    EXPECT_EQ(moduleCount().count(), 0);
}

TEST(Aggregation, givesOnlyItsIUnknownToTheOuterObject) {
    const ComPtr<COuter> outer = makeObject<COuter>();
    void* object = outer.get();
    EXPECT_EQ(createInstance<CSample>(outer->controllingUnknown(), __uuidof(IPersist), &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CLiving::count(), 2) << "none was made";
}

TEST(Aggregation, isRefusedByClassesThatAreNotMadeForIt) {
    const ComPtr<COuter> outer = makeObject<COuter>();
    void* object = outer.get();
    EXPECT_EQ(createInstance<CExtended>(outer->controllingUnknown(), __uuidof(IUnknown), &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(references(outer->controllingUnknown()), 1U);
}

} // namespace
} // namespace tarvo::com
