// The splice of the accelerator into a graph: a graph of the test's own, in which each step can be made to
// fail.

#include "accelerator/AcceleratorFilter.h"
#include "render/reference/ReferenceDevice.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/GraphFakes.h"
#include "transform/DewarpingTransform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace tarvo::transform {
namespace {

using com::ComPtr;
using testing::ElementsAre;
using tests::CFakeSource;
using tests::FilterPart;

/// As much of a filter graph as the splice needs. It keeps its filters in the order in which they came.
class CFakeGraph final : public com::CObject<IFilterGraph> {
public:
    /// What the nth call of a kind answers, from 1, instead of doing anything: {"connect", 2}.
    std::map<std::pair<std::string, int>, HRESULT> failures;
    std::vector<std::pair<std::basic_string<OLECHAR>, ComPtr<IBaseFilter>>> filters;

    STDMETHODIMP AddFilter(IBaseFilter* filter, LPCWSTR name) override {
        if (const HRESULT failure = failureOf("add"); failure != S_OK)
            return failure;
        filters.emplace_back(name, ComPtr<IBaseFilter>(filter));
        return filter->JoinFilterGraph(this, name);
    }
    STDMETHODIMP RemoveFilter(IBaseFilter* filter) override {
        if (const HRESULT failure = failureOf("remove"); failure != S_OK)
            return failure;
        for (const PIN_DIRECTION direction : {PINDIR_INPUT, PINDIR_OUTPUT}) {
            ComPtr<IPin> other;
            const auto pin = tests::pinOf(*filter, direction);
            if (pin && SUCCEEDED(pin->ConnectedTo(other.put()))) {
                other->Disconnect();
                pin->Disconnect();
            }
        }
        filter->JoinFilterGraph(nullptr, nullptr);
        std::erase_if(filters, [&](const auto& entry) { return entry.second.get() == filter; });
        return S_OK;
    }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) override {
        const HRESULT failure = failureOf("connect");
        return failure != S_OK ? failure : output->Connect(input, type);
    }
    STDMETHODIMP Reconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect(IPin* pin) override {
        const HRESULT failure = failureOf("disconnect");
        return failure != S_OK ? failure : pin->Disconnect();
    }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }

private:
    HRESULT failureOf(const std::string& call) {
        const auto found = failures.find({call, ++m_calls[call]});
        return found != failures.end() ? found->second : S_OK;
    }

    std::map<std::string, int> m_calls;
};

/// A filter that aggregates the transform, as the system's wrapper does. Its pin only connects.
class CWrapper final : public com::CObject<FilterPart> {
public:
    explicit CWrapper(diagnostics::Log& log) : m_pin(*this) {
        setPins({&m_pin});
        const auto make = [](diagnostics::ObjectLog deviceLog) -> std::unique_ptr<render::IRenderDevice> {
            return std::make_unique<render::reference::CReferenceDevice>(deviceLog);
        };
        auto* const inner =
            new CDewarpingTransform(com::Outer{controllingUnknown()}, TransformServices{log, make});
        m_inner.attach(&inner->innerUnknown());
    }

    IPin& input() noexcept { return m_pin; }
    /// What EnumPins answers instead, if it is no success.
    HRESULT enumeration = S_OK;
    HRESULT information = S_OK;
    bool hasPins = true;
    HRESULT typeAnswer = S_OK;

    STDMETHODIMP EnumPins(IEnumPins** enumerator) override {
        if (FAILED(enumeration))
            return enumeration;
        if (!hasPins)
            setPins({});
        return CBaseFilter::EnumPins(enumerator);
    }
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override {
        return FAILED(information) ? information : CBaseFilter::QueryFilterInfo(info);
    }

protected:
    ~CWrapper() override = default;
    CLSID classId() const noexcept override { return CLSID{3, 0, 0, {}}; }
    HRESULT queryOwn(REFIID iid, void** object) noexcept override {
        const HRESULT result = CObjectOn::queryOwn(iid, object);
        return result == E_NOINTERFACE && m_inner ? m_inner->QueryInterface(iid, object) : result;
    }

private:
    class CPin final : public dshow::CInputPin {
    public:
        explicit CPin(CWrapper& wrapper) : CInputPin(wrapper, OLESTR("in0")), m_wrapper(wrapper) {}
        HRESULT checkMediaType(const AM_MEDIA_TYPE&) override { return S_OK; }
        HRESULT mediaType(LONG, dshow::CPinType&) override { return VFW_S_NO_MORE_ITEMS; }
        STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override {
            return FAILED(m_wrapper.typeAnswer) ? m_wrapper.typeAnswer : CInputPin::ConnectionMediaType(type);
        }

    protected:
        HRESULT received(IMediaSample&) override { return S_OK; }
        HRESULT streamEnded() override { return S_OK; }
        HRESULT flushBegan() override { return S_OK; }
        HRESULT flushEnds() override { return S_OK; }
        HRESULT segmentBegan(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

    private:
        CWrapper& m_wrapper;
    };

    CPin m_pin;
    ComPtr<IUnknown> m_inner;
};

const tests::VideoKind kind{MEDIASUBTYPE_YUY2, 64, 48, 16, 64 * 48 * 2, 400'000};

class Injection : public testing::Test {
protected:
    Injection() {
        m_services.setDword("DBGView", 2);
        wrapper = com::makeObject<CWrapper>(m_log);
        transform = ComPtr<IBaseFilter>(wrapper).as<IDewarpingTransform>();
        EXPECT_EQ(graph->AddFilter(source.get(), OLESTR("Source")), S_OK);
        EXPECT_EQ(graph->AddFilter(wrapper.get(), OLESTR("Transform")), S_OK);
        m_services.debuggerLines.clear();
    }

    void connect() {
        const dshow::CPinType type = tests::typeOf(kind);
        ASSERT_EQ(source->pin().Connect(&wrapper->input(), &type.get()), S_OK);
    }

    HRESULT inject() { return transform->InjectAcceleratorFilter(accelerator.put()); }

    /// The lines of the splice since the last call: their category's letter and their text.
    std::vector<std::string> takeLines() {
        const std::string tag = "TvVideoTransform:";
        const std::string place = ":[1] - InjectAcceleratorFilter - ";
        std::vector<std::string> lines;
        for (const std::string& line : std::exchange(m_services.debuggerLines, {})) {
            if (line.starts_with(tag) && line.compare(tag.size() + 1, place.size(), place) == 0)
                lines.push_back(
                    line.substr(tag.size(), 1) + ": " +
                    line.substr(tag.size() + 1 + place.size(), line.size() - tag.size() - place.size() - 2));
        }
        return lines;
    }

    IPin* upstreamOf(IPin& pin) {
        ComPtr<IPin> other;
        pin.ConnectedTo(other.put());
        return other.get(); // which its filter keeps
    }

    void expectAsBefore() {
        EXPECT_EQ(graph->filters.size(), 2U);
        EXPECT_EQ(upstreamOf(wrapper->input()), static_cast<IPin*>(&source->pin()));
        EXPECT_EQ(upstreamOf(source->pin()), static_cast<IPin*>(&wrapper->input()));
    }

private:
    diagnostics::FakeLogServices m_services;
    diagnostics::Log m_log{m_services};

public:
    ComPtr<CFakeGraph> graph = com::makeObject<CFakeGraph>();
    ComPtr<CFakeSource> source = com::makeObject<CFakeSource>(kind);
    ComPtr<CWrapper> wrapper;
    ComPtr<IDewarpingTransform> transform;
    ComPtr<IAccelerator> accelerator;

    void TearDown() override {
        accelerator.reset();
        transform.reset();
        while (!graph->filters.empty())
            EXPECT_EQ(graph->RemoveFilter(graph->filters.back().second.get()), S_OK);
    }
};

TEST_F(Injection, comesBetweenTheTransformAndItsSource) {
    connect();
    ASSERT_EQ(inject(), S_OK);
    EXPECT_THAT(takeLines(), ElementsAre());
    ASSERT_EQ(graph->filters.size(), 3U);
    EXPECT_EQ(com::OleStringView(graph->filters[2].first), com::OleStringView(OLESTR("Accelerator")));
    IBaseFilter& filter = *graph->filters[2].second;
    EXPECT_TRUE(com::isSameObject(&filter, accelerator.get()));
    EXPECT_EQ(upstreamOf(wrapper->input()), tests::pinOf(filter, PINDIR_OUTPUT).get());
    EXPECT_EQ(upstreamOf(*tests::pinOf(filter, PINDIR_INPUT)), static_cast<IPin*>(&source->pin()));
    LONG settings = -1;
    EXPECT_EQ(accelerator->get_Settings(&settings), S_OK);
    EXPECT_EQ(settings, 1);
    dshow::CPinType type;
    ASSERT_EQ(wrapper->input().ConnectionMediaType(type.put()), S_OK);
    EXPECT_EQ(type->subtype, MEDIASUBTYPE_YUY2);
    EXPECT_EQ(type->lSampleSize, kind.imageBytes);
}

TEST_F(Injection, aSecondComesBetweenTheFirstAndTheTransform) {
    connect();
    ASSERT_EQ(inject(), S_OK);
    const ComPtr<IAccelerator> first = accelerator;
    ASSERT_EQ(inject(), S_OK);
    ASSERT_EQ(graph->filters.size(), 4U);
    IBaseFilter& second = *graph->filters[3].second;
    EXPECT_EQ(upstreamOf(wrapper->input()), tests::pinOf(second, PINDIR_OUTPUT).get());
    EXPECT_EQ(upstreamOf(*tests::pinOf(second, PINDIR_INPUT)),
              tests::pinOf(*graph->filters[2].second, PINDIR_OUTPUT).get());
    EXPECT_FALSE(com::isSameObject(first.get(), accelerator.get()));
}

TEST_F(Injection, fillsNoGapsOfACustomView) {
    connect();
    ASSERT_EQ(transform->put_ViewType(TarvoVideoTransformLib::custom), S_OK);
    ASSERT_EQ(inject(), S_OK);
    LONG settings = -1;
    EXPECT_EQ(accelerator->get_Settings(&settings), S_OK);
    EXPECT_EQ(settings, 0);
}

TEST_F(Injection, holdsNoReferenceOnTheWrapper) {
    connect();
    const auto count = [&] {
        wrapper->AddRef();
        return wrapper->Release();
    };
    const ULONG before = count();
    ASSERT_EQ(inject(), S_OK);
    // The accelerator's output instead of the source's is connected to the wrapper's pin.
    EXPECT_EQ(count(), before);
}

TEST_F(Injection, isNothingForATransformOutsideOfAFilter) {
    diagnostics::FakeLogServices services;
    services.setDword("DBGView", 2);
    diagnostics::Log log(services);
    const auto alone = com::makeObject<CDewarpingTransform>(com::Outer{}, TransformServices{log});
    services.debuggerLines.clear();
    auto* answer = reinterpret_cast<IAccelerator*>(&services);
    EXPECT_EQ(alone->InjectAcceleratorFilter(&answer), E_NOINTERFACE);
    EXPECT_EQ(answer, nullptr);
    EXPECT_THAT(services.debuggerLines,
                ElementsAre("TvVideoTransform:E:[1] - InjectAcceleratorFilter - "
                            "Dewarping Transform DMO not used as a DirectShow filter (0x80004002)\n"));
}

TEST_F(Injection, withoutAConnectionTheGraphStaysAsItIs) {
    EXPECT_EQ(inject(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(accelerator.get(), nullptr);
    EXPECT_THAT(takeLines(), ElementsAre("E: Filter not connected (0x80040209)"));
    EXPECT_EQ(graph->filters.size(), 2U);
}

TEST_F(Injection, whatTheWrapperRefusesIsNamed) {
    connect();
    wrapper->information = E_ACCESSDENIED;
    EXPECT_EQ(inject(), E_ACCESSDENIED);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to get filter info (0x80070005)"));
    wrapper->information = S_OK;
    wrapper->enumeration = E_OUTOFMEMORY;
    EXPECT_EQ(inject(), E_OUTOFMEMORY);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to get pin enumerator (0x8007000E)"));
    wrapper->enumeration = S_OK;
    wrapper->typeAnswer = E_OUTOFMEMORY;
    EXPECT_EQ(inject(), E_OUTOFMEMORY);
    EXPECT_THAT(takeLines(), ElementsAre("E: Could not get connection media type (0x8007000E)"));
    wrapper->typeAnswer = S_OK;
    expectAsBefore();
    wrapper->hasPins = false;
    EXPECT_EQ(inject(), E_FAIL);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to get input pin (0x80004005)"));
}

TEST_F(Injection, anAcceleratorThatCannotBeAddedLeavesTheGraph) {
    connect();
    graph->failures[{"add", 3}] = E_ACCESSDENIED;
    EXPECT_EQ(inject(), E_ACCESSDENIED);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to add Accelerator filter (0x80070005)"));
    expectAsBefore();
}

TEST_F(Injection, afterAFailedDisconnectionTheGraphIsLeftAsItThenIs) {
    connect();
    graph->failures[{"disconnect", 1}] = E_ACCESSDENIED;
    EXPECT_EQ(inject(), E_ACCESSDENIED);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to diconnect old input pin connection (0x80070005)"));
    EXPECT_EQ(graph->filters.size(), 3U) << "with the accelerator in it";
    EXPECT_EQ(upstreamOf(wrapper->input()), static_cast<IPin*>(&source->pin()));
    EXPECT_EQ(graph->RemoveFilter(graph->filters[2].second.get()), S_OK);

    graph->failures[{"disconnect", 3}] = E_FAIL;
    EXPECT_EQ(inject(), E_FAIL);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to diconnect old output pin connection (0x80004005)"));
    EXPECT_EQ(graph->filters.size(), 3U);
    EXPECT_EQ(upstreamOf(wrapper->input()), nullptr) << "this side was parted already";
}

TEST_F(Injection, afterAFailedConnectionTheOldOneIsRestored) {
    connect();
    graph->failures[{"connect", 1}] = E_OUTOFMEMORY;
    EXPECT_EQ(inject(), E_OUTOFMEMORY);
    EXPECT_EQ(accelerator.get(), nullptr);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to connect accelerator pin (input) (0x8007000E)",
                                         "_: Restoring connections..."));
    expectAsBefore();
    // The first splice took two, the restoration being the second.
    graph->failures[{"connect", 4}] = E_ABORT;
    EXPECT_EQ(inject(), E_ABORT);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to connect accelerator pin (output) (0x80004004)",
                                         "_: Restoring connections..."));
    expectAsBefore();
}

TEST_F(Injection, aRestorationThatFailsIsLoggedAndChangesNoResult) {
    connect();
    graph->failures[{"connect", 1}] = E_OUTOFMEMORY;
    graph->failures[{"remove", 1}] = E_ACCESSDENIED;
    graph->failures[{"connect", 2}] = E_FAIL;
    EXPECT_EQ(inject(), E_OUTOFMEMORY);
    EXPECT_THAT(takeLines(), ElementsAre("E: Failed to connect accelerator pin (input) (0x8007000E)",
                                         "_: Restoring connections...",
                                         "E: Failed to remove Accelerator filter (0x80070005)",
                                         "E: Failed to reconnect (0x80004005)"));
}

} // namespace
} // namespace tarvo::transform
