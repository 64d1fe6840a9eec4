#include "com/Object.h"

#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

namespace tarvo::com {
namespace {

TEST(Object, answersToItsInterfacesAndNoOther) {
    const ComPtr<CSample> sample = makeObject<CSample>();
    IUnknown* unknown = sample->controllingUnknown();
    EXPECT_EQ(answerFor<IUnknown>(unknown), unknown);
    EXPECT_EQ(answerFor<IObjectWithSite>(unknown), sample.get());
    EXPECT_EQ(answerFor<IPersistStream>(unknown), sample.get());
    EXPECT_EQ(answerFor<IPersist>(unknown), sample.get()) << "through the derived interface";
    EXPECT_EQ(answerFor<ISupportErrorInfo>(unknown), nullptr);
    EXPECT_EQ(answerFor<IDispatch>(unknown), nullptr);
    EXPECT_EQ(references(unknown), 1U);
}

TEST(Object, isOneObjectWhicheverInterfaceIsAsked) {
    const ComPtr<CSample> sample = makeObject<CSample>();
    IObjectWithSite* site = sample.get();
    IPersistStream* stream = sample.get();
    EXPECT_EQ(answerFor<IUnknown>(site), answerFor<IUnknown>(stream));
    EXPECT_EQ(answerFor<IPersist>(site), static_cast<IPersist*>(stream));
    EXPECT_EQ(answerFor<IObjectWithSite>(stream), site);
    EXPECT_TRUE(isSameObject(site, stream));
}

TEST(Object, callsTheMethodsBehindEachInterface) {
    const ComPtr<CSample> sample = makeObject<CSample>();
    CLSID id{};
    EXPECT_EQ(ComPtr<IUnknown>(sample->controllingUnknown()).as<IPersist>()->GetClassID(&id), S_OK);
    EXPECT_EQ(id, (CLSID{1, 2, 3, {}}));
}

TEST(Object, countsReferencesOfAllInterfacesTogether) {
    ComPtr<CSample> sample = makeObject<CSample>();
    IUnknown* unknown = sample->controllingUnknown();
    EXPECT_EQ(unknown->AddRef(), 2U);
    EXPECT_EQ(static_cast<IObjectWithSite*>(sample.get())->AddRef(), 3U);
    EXPECT_EQ(static_cast<IPersistStream*>(sample.get())->AddRef(), 4U);
    void* persist = nullptr;
    EXPECT_EQ(unknown->QueryInterface(__uuidof(IPersist), &persist), S_OK);
    EXPECT_EQ(unknown->Release(), 4U);
    EXPECT_EQ(unknown->Release(), 3U);
    EXPECT_EQ(unknown->Release(), 2U);
    EXPECT_EQ(unknown->Release(), 1U);
    EXPECT_EQ(CLiving::count(), 1);
    sample.reset();
    EXPECT_EQ(CLiving::count(), 0);
}

TEST(Object, refusesAQueryWithoutAPlaceForTheAnswer) {
    const ComPtr<CSample> sample = makeObject<CSample>();
    EXPECT_EQ(sample->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
    EXPECT_EQ(references(sample->controllingUnknown()), 1U);
}

TEST(Object, mayAddInterfacesToAClass) {
    const ComPtr<CExtended> extended = makeObject<CExtended>();
    IUnknown* unknown = extended->controllingUnknown();
    EXPECT_EQ(answerFor<ISupportErrorInfo>(unknown), extended.get());
    EXPECT_EQ(answerFor<IObjectWithSite>(unknown), extended.get());
    EXPECT_EQ(answerFor<IPersist>(unknown), static_cast<IPersistStream*>(extended.get()));
    EXPECT_EQ(answerFor<IDispatch>(unknown), nullptr);
    EXPECT_EQ(answerFor<IUnknown>(static_cast<ISupportErrorInfo*>(extended.get())), unknown);
    EXPECT_EQ(references(static_cast<ISupportErrorInfo*>(extended.get())), 1U);
}

/// Takes and releases references to itself while it is destroyed.
class CBusyEnd : public CObject<IObjectWithSite> {
public:
    ~CBusyEnd() override {
        for (int i = 0; i < 3; ++i) {
            const ComPtr<IUnknown> self(controllingUnknown());
            const ComPtr<IObjectWithSite> again = self.as<IObjectWithSite>();
        }
    }
    STDMETHODIMP SetSite(IUnknown*) override { return S_OK; }
    STDMETHODIMP GetSite(REFIID, void**) override { return E_FAIL; }

private:
    CLiving m_living;
};

TEST(Object, isDestroyedOnceThoughItsDestructorRefersToIt) {
    ComPtr<CBusyEnd> object = makeObject<CBusyEnd>();
    EXPECT_EQ(CLiving::count(), 1);
    object.reset();
    EXPECT_EQ(CLiving::count(), 0);
}

TEST(Object, keepsTheModuleLoaded) {
    const LONG before = moduleCount().count();
    {
        const ComPtr<CSample> sample = makeObject<CSample>();
        EXPECT_EQ(moduleCount().count(), before + 1);
        const ComPtr<IUnknown> again(sample->controllingUnknown());
        EXPECT_EQ(moduleCount().count(), before + 1) << "objects count, not references";
        EXPECT_EQ(moduleCount().canUnload(), S_FALSE);
    }
    EXPECT_EQ(moduleCount().count(), before);
    ASSERT_EQ(before, 0);
    EXPECT_EQ(moduleCount().canUnload(), S_OK);
}

} // namespace
} // namespace tarvo::com
