#pragma once

#include "com/BStr.h"
#include "com/ComPtr.h"
#include "platform/InterfaceTypes.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace tarvo::dshow {

class CPin;

/// The part of an object that is a filter in a media graph: an object lists
/// `Implementing<CBaseFilter, IBaseFilter, IMediaFilter, IPersist>`, hands its pins over in its constructor,
/// and stops before its end.
///
/// Changes of state end before they return, so GetState never has anything to wait for. Calls may come from
/// any thread. Order of locks: a filter's lock before those that its stream takes; nothing that waits for a
/// streaming thread holds the filter's lock while that thread may want it.
class CBaseFilter : public IBaseFilter {
public:
    CBaseFilter(const CBaseFilter&) = delete;
    CBaseFilter& operator=(const CBaseFilter&) = delete;

    STDMETHODIMP GetClassID(CLSID* id) override;

    STDMETHODIMP Stop() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP GetState(DWORD milliseconds, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;

    STDMETHODIMP EnumPins(IEnumPins** enumerator) override;
    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override;
    /// The graph holds its filters, so a filter does not hold its graph.
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    /// E_NOTIMPL.
    STDMETHODIMP QueryVendorInfo(LPWSTR* vendor) override;

    // For the filter's pins, enumerators and threads.

    /// Guards state, graph and connections. May be taken again by its thread.
    std::recursive_mutex& lock() const noexcept { return m_lock; }
    /// Any thread, without the lock.
    FILTER_STATE state() const noexcept { return m_state.load(); }
    bool isStopped() const noexcept { return state() == State_Stopped; }

    const std::vector<CPin*>& pins() const noexcept { return m_pins; }
    /// Another number after each change of the pins.
    LONG pinsVersion() const noexcept { return m_pinsVersion.load(); }
    /// Tells the graph what happened; E_NOTIMPL if it does not listen. Not under the lock.
    HRESULT notifyGraph(LONG event, LONG_PTR first, LONG_PTR second);

protected:
    CBaseFilter() = default;
    ~CBaseFilter() = default;

    virtual CLSID classId() const noexcept = 0;

    /// For the constructor: the pins, which live as long as the filter.
    void setPins(std::vector<CPin*> pins);

    /// Before the pins become active, under the lock. After a failure, here or of a pin, stopped() follows.
    virtual HRESULT starting() { return S_OK; }
    /// After the pins became inactive, without the lock: here threads may be waited for.
    virtual void stopped() noexcept {}

private:
    HRESULT activate() noexcept;
    void deactivatePins() noexcept;

    mutable std::recursive_mutex m_lock;
    // Changes of state wait for one another as a whole; the lock above is free while threads end.
    std::recursive_mutex m_changeLock;
    std::atomic<FILTER_STATE> m_state{State_Stopped};
    std::vector<CPin*> m_pins;
    std::atomic<LONG> m_pinsVersion{0};
    com::ComPtr<IReferenceClock> m_clock;
    // Neither is counted.
    IFilterGraph* m_graph = nullptr;
    IMediaEventSink* m_eventSink = nullptr;
    std::basic_string<OLECHAR> m_name;
};

} // namespace tarvo::dshow
