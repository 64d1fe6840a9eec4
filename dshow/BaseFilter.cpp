#include "dshow/BaseFilter.h"

#include "com/Guarded.h"
#include "dshow/LiveEnumerator.h"
#include "dshow/Pin.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tarvo::dshow {
namespace {

/// The pins of a filter, for an enumerator.
class CPinSource {
public:
    using Item = IPin*;

    explicit CPinSource(CBaseFilter& filter) : m_keep(&filter), m_filter(&filter) {}

    LONG version() const noexcept { return m_filter->pinsVersion(); }
    HRESULT item(ULONG index, IPin*& pin) {
        const std::lock_guard lock(m_filter->lock());
        if (index >= m_filter->pins().size())
            return S_FALSE;
        pin = m_filter->pins()[index];
        pin->AddRef();
        return S_OK;
    }
    static void discard(IPin* pin) noexcept { pin->Release(); }

private:
    com::ComPtr<IBaseFilter> m_keep;
    CBaseFilter* m_filter;
};

/// A text in a record of fixed size, cut if need be.
template<std::size_t size>
void storeText(const std::basic_string<OLECHAR>& text, OLECHAR (&target)[size]) noexcept {
    const std::size_t length = std::min(text.size(), size - 1);
    std::copy_n(text.begin(), length, target);
    target[length] = 0;
}

} // namespace

void CBaseFilter::setPins(std::vector<CPin*> pins) {
    m_pins = std::move(pins);
    ++m_pinsVersion;
}

STDMETHODIMP CBaseFilter::GetClassID(CLSID* id) {
    if (id == nullptr)
        return E_POINTER;
    *id = classId();
    return S_OK;
}

STDMETHODIMP CBaseFilter::Stop() {
    const std::lock_guard change(m_changeLock);
    {
        const std::lock_guard lock(m_lock);
        if (m_state == State_Stopped)
            return S_OK;
        m_state = State_Stopped;
        deactivatePins();
    }
    stopped();
    return S_OK;
}

STDMETHODIMP CBaseFilter::Pause() {
    const std::lock_guard change(m_changeLock);
    HRESULT result = S_OK;
    {
        const std::lock_guard lock(m_lock);
        if (m_state == State_Stopped)
            result = activate();
        if (SUCCEEDED(result))
            m_state = State_Paused;
        else
            deactivatePins();
    }
    if (FAILED(result))
        stopped();
    return result;
}

STDMETHODIMP CBaseFilter::Run(REFERENCE_TIME) {
    const std::lock_guard change(m_changeLock);
    if (m_state == State_Stopped) {
        const HRESULT result = Pause();
        if (FAILED(result))
            return result;
    }
    const std::lock_guard lock(m_lock);
    m_state = State_Running;
    return S_OK;
}

STDMETHODIMP CBaseFilter::GetState(DWORD, FILTER_STATE* state) {
    if (state == nullptr)
        return E_POINTER;
    *state = m_state;
    return S_OK;
}

STDMETHODIMP CBaseFilter::SetSyncSource(IReferenceClock* clock) {
    com::ComPtr<IReferenceClock> old(clock);
    const std::lock_guard lock(m_lock);
    std::swap(m_clock, old);
    return S_OK;
}

STDMETHODIMP CBaseFilter::GetSyncSource(IReferenceClock** clock) {
    const std::lock_guard lock(m_lock);
    return m_clock.copyTo(clock);
}

STDMETHODIMP CBaseFilter::EnumPins(IEnumPins** enumerator) {
    if (enumerator == nullptr)
        return E_POINTER;
    *enumerator = nullptr;
    return com::guarded([&] {
        *enumerator = com::makeObject<CLiveEnumerator<IEnumPins, CPinSource>>(CPinSource(*this)).detach();
    });
}

STDMETHODIMP CBaseFilter::FindPin(LPCWSTR id, IPin** pin) {
    if (id == nullptr || pin == nullptr)
        return E_POINTER;
    *pin = nullptr;
    const std::lock_guard lock(m_lock);
    const auto found = std::find_if(m_pins.begin(), m_pins.end(),
                                    [&](const CPin* one) { return one->name() == com::OleStringView(id); });
    if (found == m_pins.end())
        return VFW_E_NOT_FOUND;
    *pin = *found;
    (*pin)->AddRef();
    return S_OK;
}

STDMETHODIMP CBaseFilter::QueryFilterInfo(FILTER_INFO* info) {
    if (info == nullptr)
        return E_POINTER;
    const std::lock_guard lock(m_lock);
    storeText(m_name, info->achName);
    info->pGraph = m_graph;
    if (m_graph != nullptr)
        m_graph->AddRef();
    return S_OK;
}

STDMETHODIMP CBaseFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
    return com::guarded([&] {
        std::basic_string<OLECHAR> newName(name != nullptr ? com::OleStringView(name) : com::OleStringView());
        const auto sink = com::ComPtr<IFilterGraph>(graph).as<IMediaEventSink>();
        const std::lock_guard lock(m_lock);
        m_name = std::move(newName);
        m_graph = graph;
        m_eventSink = sink.get();
    });
}

STDMETHODIMP CBaseFilter::QueryVendorInfo(LPWSTR* vendor) {
    if (vendor == nullptr)
        return E_POINTER;
    *vendor = nullptr;
    return E_NOTIMPL;
}

HRESULT CBaseFilter::notifyGraph(LONG event, LONG_PTR first, LONG_PTR second) {
    com::ComPtr<IMediaEventSink> sink;
    {
        const std::lock_guard lock(m_lock);
        sink = com::ComPtr<IMediaEventSink>(m_eventSink);
    }
    return sink ? sink->Notify(event, first, second) : E_NOTIMPL;
}

HRESULT CBaseFilter::activate() noexcept {
    return com::guarded([&]() -> HRESULT {
        HRESULT result = starting();
        for (auto pin = m_pins.begin(); SUCCEEDED(result) && pin != m_pins.end(); ++pin) {
            if ((*pin)->isConnected())
                result = (*pin)->activate();
        }
        return result;
    });
}

void CBaseFilter::deactivatePins() noexcept {
    for (CPin* pin : m_pins) {
        if (pin->isConnected())
            pin->deactivate();
    }
}

} // namespace tarvo::dshow
