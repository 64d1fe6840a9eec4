#include "com/ConnectionPoint.h"

#include "tests/com/EventObjects.h"
#include "tests/com/FailingNew.h"
#include "tests/com/TestObjects.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace tarvo::com {
namespace {

class ConnectionPoint : public testing::Test {
protected:
    ~ConnectionPoint() override {
        m_source.reset();
        EXPECT_EQ(CLiving::count(), 0) << "sources and sinks are gone";
        EXPECT_EQ(moduleCount().count(), 0);
    }

    ULONG sourceReferences() const { return references(m_source->controllingUnknown()); }
    ComPtr<IConnectionPointContainer> container() const {
        return ComPtr<IUnknown>(m_source->controllingUnknown()).as<IConnectionPointContainer>();
    }
    ComPtr<IConnectionPoint> point(const IID& iid) const {
        ComPtr<IConnectionPoint> found;
        EXPECT_EQ(container()->FindConnectionPoint(iid, found.put()), S_OK);
        return found;
    }
    static ComPtr<CSink> silentSink() {
        return makeSink([](DISPID, const DISPPARAMS&) { return S_OK; });
    }

    ComPtr<CSource> m_source = makeObject<CSource>();
};

TEST_F(ConnectionPoint, isFoundByItsEventInterface) {
    IID iid{};
    EXPECT_EQ(point(__uuidof(IDispatch))->GetConnectionInterface(&iid), S_OK);
    EXPECT_EQ(iid, __uuidof(IDispatch));
    EXPECT_EQ(point(__uuidof(IObjectWithSite))->GetConnectionInterface(&iid), S_OK);
    EXPECT_EQ(iid, __uuidof(IObjectWithSite));
    ComPtr<IConnectionPoint> other;
    EXPECT_EQ(container()->FindConnectionPoint(__uuidof(IPersist), other.put()), CONNECT_E_NOCONNECTION);
    EXPECT_FALSE(other);
    EXPECT_EQ(container()->FindConnectionPoint(__uuidof(IDispatch), nullptr), E_POINTER);
    EXPECT_EQ(point(__uuidof(IDispatch))->GetConnectionInterface(nullptr), E_POINTER);
}

TEST_F(ConnectionPoint, isAnObjectOfItsOwnThatHoldsItsContainer) {
    EXPECT_EQ(sourceReferences(), 1U);
    ComPtr<IConnectionPoint> events = point(__uuidof(IDispatch));
    EXPECT_EQ(sourceReferences(), 2U);
    EXPECT_EQ(answerFor<IConnectionPoint>(events.get()), events.get());
    EXPECT_EQ(answerFor<IUnknown>(events.get()), events.get());
    EXPECT_EQ(answerFor<IPersist>(events.get()), nullptr) << "belongs to the container";
    EXPECT_EQ(answerFor<IConnectionPointContainer>(events.get()), nullptr);
    EXPECT_EQ(events->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
    EXPECT_EQ(sourceReferences(), 2U);
    ComPtr<IConnectionPointContainer> owner;
    EXPECT_EQ(events->GetConnectionPointContainer(owner.put()), S_OK);
    EXPECT_EQ(sourceReferences(), 3U);
    EXPECT_TRUE(isSameObject(owner.get(), m_source->controllingUnknown()));
    EXPECT_EQ(events->GetConnectionPointContainer(nullptr), E_POINTER);
    owner.reset();
    m_source.reset();
    EXPECT_EQ(CLiving::count(), 1);
    EXPECT_EQ(references(events.get()), 1U);
}

TEST_F(ConnectionPoint, holdsTheOuterObjectWhenItsContainerIsAggregated) {
    const ComPtr<CSample> outer = makeObject<CSample>();
    ComPtr<IUnknown> inner;
    ASSERT_EQ(createInstance<CSource>(outer->controllingUnknown(), __uuidof(IUnknown), inner.putVoid()),
              S_OK);
    ComPtr<IConnectionPoint> events;
    {
        const auto points = inner.as<IConnectionPointContainer>();
        ASSERT_EQ(points->FindConnectionPoint(__uuidof(IDispatch), events.put()), S_OK);
    }
    EXPECT_EQ(references(outer->controllingUnknown()), 2U);
    EXPECT_EQ(references(inner.get()), 1U);
    events.reset();
    EXPECT_EQ(references(outer->controllingUnknown()), 1U);
}

TEST_F(ConnectionPoint, connectsAndDisconnectsSinks) {
    const ComPtr<CSink> sink = silentSink();
    CConnectionPoint& events = m_source->dispatchEvents();
    EXPECT_FALSE(events.hasEverConnected());
    DWORD first = 0;
    DWORD second = 0;
    EXPECT_EQ(events.Advise(sink->controllingUnknown(), &first), S_OK);
    EXPECT_EQ(references(sink.get()), 2U);
    EXPECT_EQ(events.Advise(sink->controllingUnknown(), &second), S_OK);
    EXPECT_EQ(references(sink.get()), 3U);
    EXPECT_NE(first, 0U);
    EXPECT_NE(second, 0U);
    EXPECT_NE(first, second);
    EXPECT_EQ(sourceReferences(), 1U) << "a sink does not hold the source";
    EXPECT_EQ(events.Unadvise(first), S_OK);
    EXPECT_EQ(references(sink.get()), 2U);
    EXPECT_EQ(events.Unadvise(first), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(events.Unadvise(second), S_OK);
    EXPECT_EQ(references(sink.get()), 1U);
    EXPECT_EQ(events.Unadvise(0), CONNECT_E_NOCONNECTION);
    EXPECT_TRUE(events.hasEverConnected()) << "once is for ever";
    EXPECT_FALSE(m_source->siteEvents().hasEverConnected());
}

TEST_F(ConnectionPoint, refusesSinksWithoutTheEventInterface) {
    const ComPtr<CSink> sink = silentSink();
    DWORD cookie = 7;
    EXPECT_EQ(m_source->siteEvents().Advise(sink.get(), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0U);
    EXPECT_EQ(references(sink.get()), 1U);
    EXPECT_FALSE(m_source->siteEvents().hasEverConnected());
    EXPECT_EQ(m_source->dispatchEvents().Advise(nullptr, &cookie), E_POINTER);
    EXPECT_EQ(m_source->dispatchEvents().Advise(sink.get(), nullptr), E_POINTER);
    EXPECT_EQ(references(sink.get()), 1U);
}

TEST_F(ConnectionPoint, keepsTheEventInterfaceOfASink) {
    const ComPtr<CSample> sink = makeObject<CSample>();
    DWORD cookie = 0;
    ASSERT_EQ(m_source->siteEvents().Advise(static_cast<IPersistStream*>(sink.get()), &cookie), S_OK);
    const IUnknown* kept = nullptr;
    m_source->siteEvents().fire([&](IUnknown& events) {
        kept = &events;
        return S_OK;
    });
    EXPECT_EQ(kept, static_cast<IObjectWithSite*>(sink.get()));
}

TEST_F(ConnectionPoint, releasesItsSinksAtTheEnd) {
    const ComPtr<CSink> sink = silentSink();
    connect(*m_source, sink);
    connect(*m_source, sink);
    EXPECT_EQ(references(sink.get()), 3U);
    m_source.reset();
    EXPECT_EQ(references(sink.get()), 1U);
}

TEST_F(ConnectionPoint, holdsNoLockWhileASinkEnds) {
    CConnectionPoint& events = m_source->dispatchEvents();
    DWORD cookie = 0;
    HRESULT found = E_FAIL;
    // What the sink's handler holds ends with the sink, and calls back then.
    const auto connectCallingBack = [&] {
        const std::shared_ptr<void> end(nullptr, [&](void*) { found = events.Unadvise(cookie); });
        cookie = connect(*m_source, makeSink([end](DISPID, const DISPPARAMS&) { return S_OK; }));
    };
    connectCallingBack();
    EXPECT_EQ(events.Unadvise(cookie), S_OK);
    EXPECT_EQ(found, CONNECT_E_NOCONNECTION);
    found = E_FAIL;
    connectCallingBack();
    m_source.reset();
    EXPECT_EQ(found, CONNECT_E_NOCONNECTION);
}

TEST_F(ConnectionPoint, isWholeWhileTheSinksOfAnEndingSourceEnd) {
    CConnectionPoint& events = m_source->dispatchEvents();
    int calls = 0;
    std::shared_ptr<void> end(nullptr, [&](void*) {
        const ComPtr<IConnectionPoint> point(&events);
        EXPECT_EQ(answerFor<IConnectionPoint>(point.get()), point.get());
        ComPtr<IConnectionPointContainer> container;
        EXPECT_EQ(point->GetConnectionPointContainer(container.put()), S_OK);
        EXPECT_NE(container.as<IUnknown>().get(), nullptr);
        EXPECT_EQ(point->Unadvise(1), CONNECT_E_NOCONNECTION);
        ++calls;
    });
    connect(*m_source, makeSink([held = end](DISPID, const DISPPARAMS&) { return S_OK; }));
    end.reset(); // the sink's handler holds it now
    EXPECT_EQ(calls, 0);
    m_source.reset();
    EXPECT_EQ(calls, 1);
}

TEST_F(ConnectionPoint, refusesASinkThatAnswersWithNothing) {
    // Answers that it has the interface and gives none.
    class CHollow final : public IUnknown {
    public:
        STDMETHODIMP QueryInterface(REFIID, void** object) override {
            *object = nullptr;
            return S_OK;
        }
        STDMETHODIMP_(ULONG) AddRef() override { return 2; }
        STDMETHODIMP_(ULONG) Release() override { return 1; }
    };
    CHollow hollow;
    DWORD cookie = 7;
    EXPECT_EQ(m_source->dispatchEvents().Advise(&hollow, &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0U);
}

TEST_F(ConnectionPoint, enumeratesItsConnectionsAsTheyAre) {
    const ComPtr<CSink> one = silentSink();
    const ComPtr<CSink> two = silentSink();
    const DWORD cookieOne = connect(*m_source, one);
    const DWORD cookieTwo = connect(*m_source, two);
    CConnectionPoint& events = m_source->dispatchEvents();
    ComPtr<IEnumConnections> enumerator;
    ASSERT_EQ(events.EnumConnections(enumerator.put()), S_OK);
    EXPECT_EQ(references(one.get()), 3U) << "the enumerator holds them";
    EXPECT_EQ(answerFor<IEnumConnections>(enumerator.get()), enumerator.get());
    EXPECT_EQ(answerFor<IEnumConnectionPoints>(enumerator.get()), nullptr);
    EXPECT_EQ(events.Unadvise(cookieOne), S_OK);

    std::array<CONNECTDATA, 3> data{};
    ULONG fetched = 9;
    EXPECT_EQ(enumerator->Next(3, data.data(), &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2U);
    EXPECT_EQ(data[0].dwCookie, cookieOne);
    EXPECT_EQ(data[0].pUnk, one.get());
    EXPECT_EQ(data[1].dwCookie, cookieTwo);
    EXPECT_EQ(references(two.get()), 4U) << "own, connected, in the enumerator, given out";
    data[0].pUnk->Release();
    data[1].pUnk->Release();
    enumerator.reset();
    EXPECT_EQ(references(one.get()), 1U);
    EXPECT_EQ(references(two.get()), 2U);
    EXPECT_EQ(events.EnumConnections(nullptr), E_POINTER);
}

TEST_F(ConnectionPoint, isEnumeratedByItsContainer) {
    ComPtr<IEnumConnectionPoints> enumerator;
    ASSERT_EQ(container()->EnumConnectionPoints(enumerator.put()), S_OK);
    EXPECT_EQ(sourceReferences(), 3U) << "one for each point";
    std::array<IConnectionPoint*, 2> points{};
    EXPECT_EQ(enumerator->Next(2, points.data(), nullptr), E_POINTER);
    EXPECT_EQ(enumerator->Next(1, points.data(), nullptr), S_OK);
    EXPECT_EQ(points[0], &m_source->dispatchEvents());
    EXPECT_EQ(sourceReferences(), 4U);
    points[0]->Release();
    ULONG fetched = 9;
    EXPECT_EQ(enumerator->Next(2, points.data(), &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1U);
    EXPECT_EQ(points[0], &m_source->siteEvents());
    points[0]->Release();
    EXPECT_EQ(enumerator->Next(1, points.data(), &fetched), S_FALSE);
    EXPECT_EQ(fetched, 0U);
    EXPECT_EQ(enumerator->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(container()->EnumConnectionPoints(nullptr), E_POINTER);
}

TEST_F(ConnectionPoint, enumeratorSkipsResetsAndClones) {
    ComPtr<IEnumConnectionPoints> enumerator;
    ASSERT_EQ(container()->EnumConnectionPoints(enumerator.put()), S_OK);
    EXPECT_EQ(enumerator->Skip(1), S_OK);
    ComPtr<IEnumConnectionPoints> clone;
    ASSERT_EQ(enumerator->Clone(clone.put()), S_OK);
    EXPECT_EQ(enumerator->Clone(nullptr), E_POINTER);
    EXPECT_EQ(enumerator->Skip(2), S_FALSE);
    EXPECT_EQ(enumerator->Reset(), S_OK);
    ComPtr<IConnectionPoint> found;
    EXPECT_EQ(enumerator->Next(1, found.put(), nullptr), S_OK);
    EXPECT_EQ(found.get(), &m_source->dispatchEvents());
    EXPECT_EQ(clone->Next(1, found.put(), nullptr), S_OK) << "from where it was cloned";
    EXPECT_EQ(found.get(), &m_source->siteEvents());
    EXPECT_EQ(clone->Next(1, found.put(), nullptr), S_FALSE);
    EXPECT_EQ(clone->Skip(0), S_OK);
    EXPECT_EQ(clone->Skip(0xFFFFFFFFU), S_FALSE);
}

TEST_F(ConnectionPoint, survivesEveryMissingAllocation) {
    const ComPtr<CSink> sink = silentSink();
    CConnectionPoint& events = m_source->dispatchEvents();
    EXPECT_GT(failuresUntilSuccess([&](int granted) {
                  DWORD cookie = 7;
                  HRESULT result = S_OK;
                  {
                      const CFailingNew failing(granted);
                      result = events.Advise(sink.get(), &cookie);
                  }
                  if (FAILED(result)) {
                      EXPECT_EQ(result, E_OUTOFMEMORY);
                      EXPECT_EQ(cookie, 0U);
                      EXPECT_EQ(references(sink.get()), 1U);
                  }
                  return SUCCEEDED(result);
              }),
              0);
    EXPECT_EQ(references(sink.get()), 2U);
    EXPECT_GT(failuresUntilSuccess([&](int granted) {
                  ComPtr<IEnumConnections> enumerator;
                  const CFailingNew failing(granted);
                  const HRESULT result = events.EnumConnections(enumerator.put());
                  return SUCCEEDED(result) && SUCCEEDED(enumerator->Reset());
              }),
              1);
    EXPECT_EQ(references(sink.get()), 2U);
    const ComPtr<IConnectionPointContainer> points = container();
    EXPECT_GT(failuresUntilSuccess([&](int granted) {
                  ComPtr<IEnumConnectionPoints> enumerator;
                  const CFailingNew failing(granted);
                  return SUCCEEDED(points->EnumConnectionPoints(enumerator.put()));
              }),
              1);
    EXPECT_EQ(sourceReferences(), 2U);
}

} // namespace
} // namespace tarvo::com
