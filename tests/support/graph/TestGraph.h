#pragma once

#include "com/Object.h"
#include "platform/InterfaceTypes.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace tarvo::tests {

/// A filter graph as far as tests need one: it keeps filters, connects their pins directly, plays them and
/// hears of the end. It has no clock and looks for no filters by itself.
///
/// All but Notify belongs to one thread, the test's. The last reference takes every filter out of it.
class CTestGraph final : public com::CObject<IFilterGraph, IMediaEventSink> {
public:
    /// A name that is taken already gets a number behind it: VFW_S_DUPLICATE_NAME.
    STDMETHODIMP AddFilter(IBaseFilter* filter, LPCWSTR name) override;
    /// Stops the filter and parts its connections. VFW_E_NOT_IN_GRAPH if it is not here.
    STDMETHODIMP RemoveFilter(IBaseFilter* filter) override;
    STDMETHODIMP EnumFilters(IEnumFilters** enumerator) override;
    STDMETHODIMP FindFilterByName(LPCWSTR name, IBaseFilter** filter) override;
    /// VFW_E_NOT_IN_GRAPH for a pin of a filter that is not here.
    STDMETHODIMP ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP Reconnect(IPin*) override { return E_NOTIMPL; }
    /// This side only, as everywhere.
    STDMETHODIMP Disconnect(IPin* pin) override;
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }

    /// Any thread. EC_COMPLETE counts, everything else is taken note of by nobody.
    STDMETHODIMP Notify(LONG event, LONG_PTR first, LONG_PTR second) override;

    /// Pauses all filters and then runs them, each time beginning with the sinks, so that nobody delivers to
    /// one that is stopped. After a failure all are stopped.
    HRESULT run();
    /// From the sinks upwards.
    HRESULT stop();
    /// Whether every sink reported its end since the last run(), within the time.
    bool waitForCompletion(std::chrono::seconds limit);

    // For the enumerator.

    LONG version() const noexcept { return m_version; }
    /// S_FALSE beyond the last.
    HRESULT filterAt(ULONG index, IBaseFilter*& filter) const;

protected:
    ~CTestGraph() override = default;
    void finalRelease() noexcept override;

private:
    using Name = std::basic_string<OLECHAR>;
    struct Entry {
        Name name;
        com::ComPtr<IBaseFilter> filter;
    };

    bool hasName(const Name& name) const;
    bool has(const IBaseFilter* filter) const;
    /// Every filter after all those that it delivers to.
    std::vector<IBaseFilter*> sinksFirst() const;

    std::vector<Entry> m_entries;
    LONG m_version = 0;

    std::mutex m_lock;
    std::condition_variable m_changed;
    int m_sinks = 0;
    int m_ended = 0;
};

} // namespace tarvo::tests
