#include "tests/support/GraphFakes.h"

#include <gtest/gtest.h>

#include <functional>

namespace tarvo::dshow {
namespace {

using com::ComPtr;
using tests::CFakeSink;
using tests::CFakeSource;
using tests::VideoKind;

/// Listens to filters, as a graph does.
class CListeningGraph final : public com::CObject<IFilterGraph, IMediaEventSink> {
public:
    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP Reconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }
    STDMETHODIMP Notify(LONG event, LONG_PTR, LONG_PTR) override {
        last = event;
        return S_OK;
    }

    LONG last = 0;
};

class Filters : public testing::Test {
protected:
    ComPtr<CFakeSource> source = com::makeObject<CFakeSource>(VideoKind{});
    ComPtr<CFakeSink> sink = com::makeObject<CFakeSink>();

    HRESULT connect(const AM_MEDIA_TYPE* type = nullptr) { return source->pin().Connect(&sink->pin(), type); }
    void TearDown() override {
        sink->Stop();
        source->Stop();
        source->pin().Disconnect();
        sink->pin().Disconnect();
    }
};

FILTER_STATE stateOf(IBaseFilter& filter) {
    FILTER_STATE state = State_Running;
    EXPECT_EQ(filter.GetState(1000, &state), S_OK);
    return state;
}

TEST_F(Filters, changeTheirStateAtOnce) {
    EXPECT_EQ(stateOf(*source), State_Stopped);
    EXPECT_EQ(source->GetState(0, nullptr), E_POINTER);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(source->Run(0), S_OK);
    EXPECT_EQ(stateOf(*source), State_Running);
    EXPECT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(stateOf(*source), State_Paused);
    EXPECT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(stateOf(*source), State_Stopped);
}

TEST_F(Filters, joinAGraphWithoutHoldingIt) {
    const auto graph = com::makeObject<CListeningGraph>();
    const auto count = [&] {
        graph->AddRef();
        return graph->Release();
    };
    EXPECT_EQ(source->notifyGraph(1, 0, 0), E_NOTIMPL);
    EXPECT_EQ(source->JoinFilterGraph(graph.get(), OLESTR("Camera")), S_OK);
    EXPECT_EQ(count(), 1U);
    FILTER_INFO info{};
    ASSERT_EQ(source->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, static_cast<IFilterGraph*>(graph.get()));
    info.pGraph->Release();
    EXPECT_EQ(com::OleStringView(info.achName), com::OleStringView(OLESTR("Camera")));
    EXPECT_EQ(source->notifyGraph(7, 0, 0), S_OK);
    EXPECT_EQ(graph->last, 7);
    EXPECT_EQ(source->JoinFilterGraph(nullptr, nullptr), S_OK);
    ASSERT_EQ(source->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, nullptr);
    EXPECT_EQ(info.achName[0], 0);
    EXPECT_EQ(source->QueryFilterInfo(nullptr), E_POINTER);
    // Longer than the record has room for.
    const std::basic_string<OLECHAR> longName(500, OLECHAR{'x'});
    EXPECT_EQ(source->JoinFilterGraph(nullptr, longName.c_str()), S_OK);
    ASSERT_EQ(source->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(com::OleStringView(info.achName).size(), 127U);
}

TEST_F(Filters, findTheirPins) {
    ComPtr<IPin> pin;
    EXPECT_EQ(sink->FindPin(OLESTR("in"), pin.put()), S_OK);
    EXPECT_EQ(pin.get(), static_cast<IPin*>(&sink->pin()));
    EXPECT_EQ(sink->FindPin(OLESTR("out"), pin.put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(sink->FindPin(nullptr, pin.put()), E_POINTER);
    EXPECT_EQ(sink->FindPin(OLESTR("in"), nullptr), E_POINTER);
    LPWSTR id = nullptr;
    ASSERT_EQ(sink->pin().QueryId(&id), S_OK);
    EXPECT_EQ(com::OleStringView(id), com::OleStringView(OLESTR("in")));
    CoTaskMemFree(id);
    EXPECT_EQ(sink->pin().QueryId(nullptr), E_POINTER);
    LPWSTR vendor = nullptr;
    EXPECT_EQ(sink->QueryVendorInfo(&vendor), E_NOTIMPL);
    ComPtr<IEnumPins> pins;
    ASSERT_EQ(sink->EnumPins(pins.put()), S_OK);
    IPin* two[2] = {};
    ULONG fetched = 9;
    EXPECT_EQ(pins->Next(2, two, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 1U);
    two[0]->Release();
    EXPECT_EQ(pins->Next(2, two, nullptr), E_POINTER);
    EXPECT_EQ(pins->Reset(), S_OK);
    ComPtr<IEnumPins> clone;
    EXPECT_EQ(pins->Clone(clone.put()), S_OK);
    EXPECT_EQ(pins->Skip(1), S_OK);
    EXPECT_EQ(pins->Skip(1), S_FALSE);
    EXPECT_EQ(clone->Skip(1), S_OK) << "the copy stood where the other one did";
}

TEST_F(Filters, takeAClock) {
    ComPtr<IReferenceClock> clock;
    EXPECT_EQ(source->GetSyncSource(clock.put()), S_OK);
    EXPECT_EQ(clock.get(), nullptr);
    EXPECT_EQ(source->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(source->GetSyncSource(nullptr), E_POINTER);
}

TEST_F(Filters, connectAndPart) {
    ComPtr<IPin> other;
    EXPECT_EQ(source->pin().ConnectedTo(other.put()), VFW_E_NOT_CONNECTED);
    AM_MEDIA_TYPE type{};
    EXPECT_EQ(source->pin().ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(source->pin().Disconnect(), S_FALSE);
    ASSERT_EQ(connect(), S_OK);
    EXPECT_EQ(source->pin().ConnectedTo(other.put()), S_OK);
    EXPECT_EQ(other.get(), static_cast<IPin*>(&sink->pin()));
    EXPECT_EQ(sink->pin().ConnectedTo(other.put()), S_OK);
    EXPECT_EQ(other.get(), static_cast<IPin*>(&source->pin()));
    CPinType agreed;
    ASSERT_EQ(sink->pin().ConnectionMediaType(agreed.put()), S_OK);
    EXPECT_EQ(agreed->subtype, MEDIASUBTYPE_YUY2);
    EXPECT_EQ(connect(), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(sink->pin().ReceiveConnection(&source->pin(), &agreed.get()), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(source->pin().Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(source->pin().Disconnect(), S_OK);
    EXPECT_EQ(sink->pin().Disconnect(), S_OK);
    EXPECT_EQ(sink->pin().Disconnect(), S_FALSE);
    sink->Run(0);
    EXPECT_EQ(connect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(sink->Stop(), S_OK);
    source->Run(0);
    EXPECT_EQ(connect(), VFW_E_NOT_STOPPED);
}

TEST_F(Filters, refuseConnectionsThatCannotBe) {
    EXPECT_EQ(source->pin().Connect(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(source->pin().Connect(&source->pin(), nullptr), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(sink->pin().Connect(&source->pin(), nullptr), E_UNEXPECTED);
    const CPinType type = tests::typeOf({});
    EXPECT_EQ(sink->pin().ReceiveConnection(nullptr, &type.get()), E_POINTER);
    EXPECT_EQ(sink->pin().ReceiveConnection(&source->pin(), nullptr), E_POINTER);
    EXPECT_EQ(sink->pin().ReceiveConnection(&sink->pin(), &type.get()), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(source->pin().ReceiveConnection(&sink->pin(), &type.get()), E_UNEXPECTED);
    EXPECT_EQ(source->pin().EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(source->pin().NewSegment(0, 1, 1.0), E_UNEXPECTED);
    sink->accepts = [](const AM_MEDIA_TYPE&) { return false; };
    EXPECT_EQ(connect(&type.get()), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(connect(), VFW_E_NO_ACCEPTABLE_TYPES);
    ComPtr<IPin> other;
    EXPECT_EQ(source->pin().ConnectedTo(other.put()), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(sink->pin().ConnectedTo(other.put()), VFW_E_NOT_CONNECTED);
}

TEST_F(Filters, agreeOnATypeThatFitsAnOpenOne) {
    sink->preferred = {VideoKind{MEDIASUBTYPE_RGB24, 4, 2, 24, 24},
                       VideoKind{MEDIASUBTYPE_YV12, 4, 2, 12, 12}};
    AM_MEDIA_TYPE open{};
    open.majortype = MEDIATYPE_Video;
    open.subtype = MEDIASUBTYPE_YV12;
    ASSERT_EQ(connect(&open), S_OK);
    EXPECT_EQ(source->pin().connectionType().subtype, MEDIASUBTYPE_YV12)
        << "the receiver's, though not its first";
    source->pin().Disconnect();
    sink->pin().Disconnect();
    open.subtype = MEDIASUBTYPE_YUY2;
    ASSERT_EQ(connect(&open), S_OK) << "by the connecting pin's own";
    source->pin().Disconnect();
    sink->pin().Disconnect();
    open.majortype = MEDIATYPE_Audio;
    EXPECT_EQ(connect(&open), VFW_E_NO_ACCEPTABLE_TYPES);
}

/// Refuses everything.
class CUselessAllocator final : public com::CObject<IMemAllocator> {
public:
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES*, ALLOCATOR_PROPERTIES*) override { return E_FAIL; }
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES*) override { return E_FAIL; }
    STDMETHODIMP Commit() override { return E_FAIL; }
    STDMETHODIMP Decommit() override { return E_FAIL; }
    STDMETHODIMP GetBuffer(IMediaSample**, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override {
        return E_FAIL;
    }
    STDMETHODIMP ReleaseBuffer(IMediaSample*) override { return E_FAIL; }
};

TEST_F(Filters, bringAnAllocatorWhereTheOthersIsOfNoUse) {
    sink->allocator = com::makeObject<CUselessAllocator>();
    ASSERT_EQ(connect(), S_OK);
    EXPECT_EQ(sink->Run(0), S_OK);
    EXPECT_EQ(source->Run(0), S_OK);
    EXPECT_EQ(source->push({1, 2, 3}, 0, 1), S_OK);
    EXPECT_EQ(sink->deliveries().size(), 1U);
}

TEST_F(Filters, deliverInOrderAndHoldBackDuringAFlush) {
    ASSERT_EQ(connect(), S_OK);
    EXPECT_EQ(source->push({1}, 0, 1), VFW_E_NOT_COMMITTED) << "stopped";
    EXPECT_EQ(source->Run(0), S_OK);
    EXPECT_EQ(source->push({1}, 0, 1), VFW_E_WRONG_STATE) << "the sink is";
    EXPECT_EQ(source->pin().deliverEndOfStream(), VFW_E_WRONG_STATE);
    EXPECT_EQ(sink->Run(0), S_OK);
    EXPECT_EQ(source->pin().deliverNewSegment(0, 9, 1.0), S_OK);
    EXPECT_EQ(source->push({1}, 0, 1), S_OK);
    EXPECT_EQ(source->pin().deliverBeginFlush(), S_OK);
    EXPECT_EQ(source->push({2}, 1, 2), S_FALSE);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_FALSE);
    EXPECT_EQ(source->pin().deliverEndFlush(), S_OK);
    EXPECT_EQ(source->push({3}, 2, 3), S_OK);
    EXPECT_EQ(source->pin().deliverEndOfStream(), S_OK);
    EXPECT_EQ(sink->events(),
              (std::vector<std::string>{"segment", "frame", "flush", "flushed", "frame", "end"}));
    const auto transport = ComPtr<IPin>(&sink->pin()).as<IMemInputPin>();
    ASSERT_TRUE(transport);
    EXPECT_EQ(transport->Receive(nullptr), E_POINTER);
    EXPECT_EQ(transport->ReceiveCanBlock(), S_OK);
    EXPECT_EQ(transport->GetAllocatorRequirements(nullptr), E_NOTIMPL);
    EXPECT_EQ(transport->NotifyAllocator(nullptr, FALSE), E_POINTER);
    LONG processed = 5;
    EXPECT_EQ(transport->ReceiveMultiple(nullptr, 1, &processed), E_POINTER);
    EXPECT_EQ(transport->ReceiveMultiple(nullptr, 0, &processed), S_OK);
    EXPECT_EQ(processed, 0);
}

TEST_F(Filters, aTypeOfASampleIsFollowedOrRefused) {
    ASSERT_EQ(connect(), S_OK);
    EXPECT_EQ(sink->Run(0), S_OK);
    EXPECT_EQ(source->Run(0), S_OK);
    const CPinType other = tests::typeOf({MEDIASUBTYPE_YV12, 4, 2, 12, 12});
    EXPECT_EQ(source->push({1}, 0, 1, &other.get()), S_OK);
    EXPECT_EQ(sink->pin().connectionType().subtype, MEDIASUBTYPE_YV12);
    sink->accepts = [](const AM_MEDIA_TYPE& type) { return type.subtype == MEDIASUBTYPE_YV12; };
    const CPinType refused = tests::typeOf({MEDIASUBTYPE_RGB24, 4, 2, 24, 24});
    EXPECT_EQ(source->push({1}, 1, 2, &refused.get()), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(sink->pin().connectionType().subtype, MEDIASUBTYPE_YV12);
}

TEST_F(Filters, leaveNothingBehind) {
    const LONG before = com::moduleCount().count() - 2;
    ASSERT_EQ(connect(), S_OK);
    EXPECT_EQ(sink->Run(0), S_OK);
    EXPECT_EQ(source->Run(0), S_OK);
    EXPECT_EQ(source->push({1, 2}, 0, 1), S_OK);
    TearDown();
    ComPtr<IPin> pin(&source->pin());
    source.reset();
    sink.reset();
    EXPECT_EQ(com::moduleCount().count(), before + 1) << "a pin keeps its filter";
    EXPECT_EQ(pin->QueryInternalConnections(nullptr, nullptr), E_NOTIMPL);
    pin.reset();
    EXPECT_EQ(com::moduleCount().count(), before);
    source = com::makeObject<CFakeSource>(VideoKind{});
    sink = com::makeObject<CFakeSink>();
}

} // namespace
} // namespace tarvo::dshow
