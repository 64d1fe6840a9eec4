#include "com/ComPtr.h"

#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <utility>

namespace tarvo::com {
namespace {

class ComPtrTest : public testing::Test {
protected:
    ULONG count() const { return references(m_sample->controllingUnknown()); }

    ComPtr<CSample> m_sample = makeObject<CSample>();
};

TEST_F(ComPtrTest, countsItsCopies) {
    EXPECT_EQ(count(), 1U);
    ComPtr<IObjectWithSite> one(m_sample.get());
    EXPECT_EQ(count(), 2U);
    ComPtr<IObjectWithSite> two(one);
    EXPECT_EQ(count(), 3U);
    ComPtr<IObjectWithSite> three(std::move(two));
    EXPECT_EQ(count(), 3U);
    EXPECT_FALSE(two);
    one = three;
    EXPECT_EQ(count(), 3U);
    one = nullptr;
    EXPECT_EQ(count(), 2U);
    ComPtr<IObjectWithSite>& alias = three;
    three = alias;
    EXPECT_EQ(count(), 2U);
    three.reset();
    EXPECT_EQ(count(), 1U);
    three.reset();
    EXPECT_EQ(count(), 1U);
}

TEST_F(ComPtrTest, convertsToTheBaseOfItsInterface) {
    const ComPtr<IPersistStream> stream(m_sample.get());
    const ComPtr<IPersist> persist(stream);
    EXPECT_EQ(persist.get(), stream.get());
    EXPECT_EQ(count(), 3U);
}

TEST_F(ComPtrTest, takesOverAndHandsOver) {
    m_sample->AddRef();
    ComPtr<IObjectWithSite> pointer;
    pointer.attach(m_sample.get());
    EXPECT_EQ(count(), 2U);
    IObjectWithSite* raw = pointer.detach();
    EXPECT_EQ(raw, m_sample.get());
    EXPECT_FALSE(pointer);
    EXPECT_EQ(count(), 2U);
    raw->Release();
}

TEST_F(ComPtrTest, releasesTheOldReferenceBeforeANewOneIsStored) {
    ComPtr<IPersist> persist(static_cast<IPersistStream*>(m_sample.get()));
    EXPECT_EQ(m_sample->QueryInterface(__uuidof(IPersist), persist.putVoid()), S_OK);
    EXPECT_EQ(count(), 2U);
    EXPECT_NE(persist.put(), nullptr);
    EXPECT_FALSE(persist);
    EXPECT_EQ(count(), 1U);
}

TEST_F(ComPtrTest, asksForOtherInterfaces) {
    HRESULT result = E_FAIL;
    const ComPtr<IObjectWithSite> site(m_sample.get());
    const ComPtr<IPersist> persist = site.as<IPersist>(result);
    EXPECT_EQ(result, S_OK);
    EXPECT_EQ(persist.get(), static_cast<IPersistStream*>(m_sample.get()));
    EXPECT_EQ(count(), 3U);
    EXPECT_FALSE(site.as<IDispatch>(result));
    EXPECT_EQ(result, E_NOINTERFACE);
    EXPECT_FALSE(ComPtr<IUnknown>().as<IPersist>(result));
    EXPECT_EQ(result, E_POINTER);
    EXPECT_EQ(count(), 3U);
}

TEST_F(ComPtrTest, fillsOutParameters) {
    const ComPtr<IObjectWithSite> site(m_sample.get());
    IObjectWithSite* target = nullptr;
    EXPECT_EQ(site.copyTo(nullptr), E_POINTER);
    EXPECT_EQ(site.copyTo(&target), S_OK);
    EXPECT_EQ(target, site.get());
    EXPECT_EQ(count(), 3U);
    target->Release();
    EXPECT_EQ(ComPtr<IObjectWithSite>().copyTo(&target), S_OK);
    EXPECT_EQ(target, nullptr);
}

TEST_F(ComPtrTest, tellsWhetherTwoInterfacesBelongTogether) {
    const ComPtr<CSample> other = makeObject<CSample>();
    EXPECT_TRUE(isSameObject(static_cast<IObjectWithSite*>(m_sample.get()),
                             static_cast<IPersistStream*>(m_sample.get())));
    EXPECT_FALSE(isSameObject(m_sample->controllingUnknown(), other->controllingUnknown()));
    EXPECT_FALSE(isSameObject(m_sample->controllingUnknown(), nullptr));
    EXPECT_TRUE(isSameObject(nullptr, nullptr));
    EXPECT_EQ(count(), 1U);
}

} // namespace
} // namespace tarvo::com
