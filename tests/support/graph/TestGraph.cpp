#include "tests/support/graph/TestGraph.h"

#include "com/BStr.h"
#include "dshow/LiveEnumerator.h"

#include <algorithm>
#include <evcode.h>

namespace tarvo::tests {
namespace {

using com::ComPtr;

class CFilterSource {
public:
    using Item = IBaseFilter*;

    explicit CFilterSource(CTestGraph& graph) : m_graph(&graph) {}

    LONG version() const noexcept { return m_graph->version(); }
    HRESULT item(ULONG index, IBaseFilter*& filter) const { return m_graph->filterAt(index, filter); }
    static void discard(IBaseFilter* filter) noexcept { filter->Release(); }

private:
    ComPtr<CTestGraph> m_graph;
};

ComPtr<IBaseFilter> filterOf(IPin& pin) {
    PIN_INFO info{};
    com::throwIfFailed(pin.QueryPinInfo(&info));
    ComPtr<IBaseFilter> filter;
    filter.attach(info.pFilter);
    return filter;
}

template<class Visit>
void forEachPin(IBaseFilter& filter, const Visit& visit) {
    ComPtr<IEnumPins> pins;
    com::throwIfFailed(filter.EnumPins(pins.put()));
    ComPtr<IPin> pin;
    ULONG fetched = 0;
    while (pins->Next(1, pin.put(), &fetched) == S_OK)
        visit(*pin);
}

/// The filters to which one delivers.
std::vector<ComPtr<IBaseFilter>> downstreamOf(IBaseFilter& filter) {
    std::vector<ComPtr<IBaseFilter>> found;
    forEachPin(filter, [&](IPin& pin) {
        PIN_DIRECTION direction{};
        ComPtr<IPin> other;
        if (SUCCEEDED(pin.QueryDirection(&direction)) && direction == PINDIR_OUTPUT &&
            SUCCEEDED(pin.ConnectedTo(other.put())))
            found.push_back(filterOf(*other));
    });
    return found;
}

/// One that reports the end of its stream.
bool isRenderer(IBaseFilter* filter) {
    const auto flags = ComPtr<IBaseFilter>(filter).as<IAMFilterMiscFlags>();
    return flags && (flags->GetMiscFlags() & AM_FILTER_MISC_FLAGS_IS_RENDERER) != 0;
}

void partAllPins(IBaseFilter& filter) {
    forEachPin(filter, [](IPin& pin) {
        ComPtr<IPin> other;
        if (FAILED(pin.ConnectedTo(other.put())))
            return;
        // The other filter must be stopped for it, too.
        filterOf(*other)->Stop();
        other->Disconnect();
        pin.Disconnect();
    });
}

} // namespace

STDMETHODIMP CTestGraph::AddFilter(IBaseFilter* filter, LPCWSTR name) {
    if (filter == nullptr)
        return E_POINTER;
    return com::guarded([&]() -> HRESULT {
        const Name wanted(name != nullptr ? com::OleStringView(name) : com::OleStringView(OLESTR("Filter")));
        Name given = wanted;
        for (int number = 1; hasName(given); ++number) {
            const std::string digits = std::to_string(number);
            given = wanted + OLESTR(' ') + Name(digits.begin(), digits.end());
        }
        m_entries.push_back({given, ComPtr<IBaseFilter>(filter)});
        ++m_version;
        const HRESULT result = filter->JoinFilterGraph(this, given.c_str());
        if (FAILED(result)) {
            m_entries.pop_back();
            return result;
        }
        return given == wanted ? S_OK : VFW_S_DUPLICATE_NAME;
    });
}

STDMETHODIMP CTestGraph::RemoveFilter(IBaseFilter* filter) {
    if (filter == nullptr)
        return E_POINTER;
    return com::guarded([&]() -> HRESULT {
        const auto found =
            std::ranges::find_if(m_entries, [&](const Entry& entry) { return entry.filter.get() == filter; });
        if (found == m_entries.end())
            return VFW_E_NOT_IN_GRAPH;
        const ComPtr<IBaseFilter> keep = found->filter;
        filter->Stop();
        partAllPins(*filter);
        filter->JoinFilterGraph(nullptr, nullptr);
        m_entries.erase(found);
        ++m_version;
        return S_OK;
    });
}

STDMETHODIMP CTestGraph::EnumFilters(IEnumFilters** enumerator) {
    if (enumerator == nullptr)
        return E_POINTER;
    *enumerator = nullptr;
    return com::guarded([&] {
        using Enumerator = dshow::CLiveEnumerator<IEnumFilters, CFilterSource>;
        *enumerator = com::makeObject<Enumerator>(CFilterSource(*this)).detach();
    });
}

STDMETHODIMP CTestGraph::FindFilterByName(LPCWSTR name, IBaseFilter** filter) {
    if (name == nullptr || filter == nullptr)
        return E_POINTER;
    *filter = nullptr;
    const auto found = std::ranges::find_if(m_entries, [&](const Entry& entry) {
        return com::OleStringView(entry.name) == com::OleStringView(name);
    });
    return found != m_entries.end() ? found->filter.copyTo(filter) : VFW_E_NOT_FOUND;
}

STDMETHODIMP CTestGraph::ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) {
    if (output == nullptr || input == nullptr)
        return E_POINTER;
    return com::guarded([&]() -> HRESULT {
        if (!has(filterOf(*output).get()) || !has(filterOf(*input).get()))
            return VFW_E_NOT_IN_GRAPH;
        return output->Connect(input, type);
    });
}

STDMETHODIMP CTestGraph::Disconnect(IPin* pin) {
    return pin != nullptr ? pin->Disconnect() : E_POINTER;
}

STDMETHODIMP CTestGraph::Notify(LONG event, LONG_PTR, LONG_PTR) {
    if (event == EC_COMPLETE) {
        const std::lock_guard lock(m_lock);
        ++m_ended;
        m_changed.notify_all();
    }
    return S_OK;
}

HRESULT CTestGraph::run() {
    return com::guarded([&]() -> HRESULT {
        const std::vector<IBaseFilter*> order = sinksFirst();
        {
            const std::lock_guard lock(m_lock);
            m_ended = 0;
            m_sinks = static_cast<int>(std::ranges::count_if(order, isRenderer));
        }
        HRESULT result = S_OK;
        for (IBaseFilter* filter : order) {
            if (SUCCEEDED(result))
                result = filter->Pause();
        }
        for (IBaseFilter* filter : order) {
            if (SUCCEEDED(result))
                result = filter->Run(0);
        }
        if (FAILED(result))
            stop();
        return result;
    });
}

HRESULT CTestGraph::stop() {
    return com::guarded([&]() -> HRESULT {
        HRESULT result = S_OK;
        for (IBaseFilter* filter : sinksFirst()) {
            const HRESULT stopped = filter->Stop();
            if (FAILED(stopped))
                result = stopped;
        }
        return result;
    });
}

bool CTestGraph::waitForCompletion(std::chrono::seconds limit) {
    std::unique_lock lock(m_lock);
    return m_changed.wait_for(lock, limit, [&] { return m_ended >= m_sinks; });
}

HRESULT CTestGraph::filterAt(ULONG index, IBaseFilter*& filter) const {
    return index < m_entries.size() ? m_entries[index].filter.copyTo(&filter) : S_FALSE;
}

void CTestGraph::finalRelease() noexcept {
    while (!m_entries.empty() && SUCCEEDED(RemoveFilter(m_entries.back().filter.get()))) {
    }
    CObjectOn::finalRelease();
}

bool CTestGraph::hasName(const Name& name) const {
    return std::ranges::any_of(m_entries, [&](const Entry& entry) { return entry.name == name; });
}

bool CTestGraph::has(const IBaseFilter* filter) const {
    return std::ranges::any_of(m_entries, [&](const Entry& entry) { return entry.filter.get() == filter; });
}

std::vector<IBaseFilter*> CTestGraph::sinksFirst() const {
    std::vector<IBaseFilter*> order;
    const auto isPlaced = [&](const IBaseFilter* filter) {
        return !has(filter) || std::ranges::find(order, filter) != order.end();
    };
    // Each round places one at least, or there is a circle, which nobody could play.
    for (std::size_t placed = m_entries.size() + 1; placed != order.size();) {
        placed = order.size();
        for (const Entry& entry : m_entries) {
            const auto downstream = downstreamOf(*entry.filter);
            if (!isPlaced(entry.filter.get()) &&
                std::ranges::all_of(downstream, [&](const auto& filter) { return isPlaced(filter.get()); }))
                order.push_back(entry.filter.get());
        }
    }
    return order;
}

} // namespace tarvo::tests
