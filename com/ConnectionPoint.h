#pragma once

#include "com/ComPtr.h"
#include "platform/InterfaceTypes.h"

#include <mutex>
#include <utility>
#include <vector>

namespace tarvo::com {

/// The sinks of one event interface. Part of its container: it shares the container's reference count, so
/// holding a connection point holds the container. Any thread.
///
/// No lock is held while a sink is called or released - only its AddRef is called under one - so a sink may
/// connect and disconnect sinks, itself too, from inside an event.
class CConnectionPoint final : public IConnectionPoint {
public:
    /// The container owns this object; `eventInterface` lives as long as the program.
    CConnectionPoint(IConnectionPointContainer& container, REFIID eventInterface) noexcept
        : m_container(container), m_eventInterface(eventInterface) {}
    ~CConnectionPoint() = default;
    CConnectionPoint(const CConnectionPoint&) = delete;
    CConnectionPoint& operator=(const CConnectionPoint&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return m_container.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return m_container.Release(); }

    STDMETHODIMP GetConnectionInterface(IID* iid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    /// Asks the sink for the event interface: CONNECT_E_CANNOTCONNECT if it has none.
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    /// CONNECT_E_NOCONNECTION for a cookie that stands for no connection (any more).
    STDMETHODIMP Unadvise(DWORD cookie) override;
    /// Enumerates the connections as they are now.
    STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

    /// Lets all sinks go. One that calls back while it is released finds the others gone too.
    void disconnectAll() noexcept;

    /// Whether a sink has ever been connected, gone or not.
    bool hasEverConnected() const noexcept;

    /// Calls `visit(IUnknown& sink)`, which returns an HRESULT, for each sink in the order of their
    /// connection. The pointer is the sink's event interface. Sinks connected meanwhile wait for the next
    /// event, those disconnected meanwhile are not called any more. An error stops nobody; the result is the
    /// last sink's, S_OK without sinks.
    template<class Visit>
    HRESULT fire(Visit&& visit) {
        HRESULT result = S_OK;
        const DWORD last = lastCookie();
        DWORD cookie = 0;
        while (const ComPtr<IUnknown> sink = sinkAfter(cookie, last))
            result = visit(*sink);
        return result;
    }

private:
    struct Connection {
        DWORD cookie;
        ComPtr<IUnknown> sink;
    };

    DWORD lastCookie() const noexcept;
    /// The first sink whose cookie is above `cookie` and not above `last`, null if there is none; `cookie`
    /// becomes its.
    ComPtr<IUnknown> sinkAfter(DWORD& cookie, DWORD last) const noexcept;

    IConnectionPointContainer& m_container;
    const IID& m_eventInterface;
    mutable std::mutex m_lock;
    // In ascending order of the cookies, which are never used again.
    std::vector<Connection> m_connections;
    DWORD m_lastCookie = 0;
};

} // namespace tarvo::com
