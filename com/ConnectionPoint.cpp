#include "com/ConnectionPoint.h"

#include "com/Enumerator.h"
#include "com/Guarded.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace tarvo::com {
namespace {

struct ConnectionPolicy {
    struct Stored {
        DWORD cookie;
        ComPtr<IUnknown> sink;
    };
    using Item = CONNECTDATA;
    static void give(const Stored& stored, Item& item) noexcept {
        stored.sink.copyTo(&item.pUnk);
        item.dwCookie = stored.cookie;
    }
};

} // namespace

void CConnectionPoint::disconnectAll() noexcept {
    std::vector<Connection> released;
    const std::lock_guard lock(m_lock);
    released.swap(m_connections);
    // The lock goes first, the sinks after it.
}

HRESULT STDMETHODCALLTYPE CConnectionPoint::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (iid != __uuidof(IUnknown) && iid != __uuidof(IConnectionPoint))
        return E_NOINTERFACE;
    AddRef();
    *object = static_cast<IConnectionPoint*>(this);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CConnectionPoint::GetConnectionInterface(IID* iid) {
    if (iid == nullptr)
        return E_POINTER;
    *iid = m_eventInterface;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE
CConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    return ComPtr<IConnectionPointContainer>(&m_container).copyTo(container);
}

HRESULT STDMETHODCALLTYPE CConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (cookie == nullptr)
        return E_POINTER;
    *cookie = 0;
    if (sink == nullptr)
        return E_POINTER;
    void* events = nullptr;
    const HRESULT result = sink->QueryInterface(m_eventInterface, &events);
    if (FAILED(result))
        return result == E_NOINTERFACE ? CONNECT_E_CANNOTCONNECT : result;
    // Null ends the list of an event.
    if (events == nullptr)
        return CONNECT_E_CANNOTCONNECT;
    ComPtr<IUnknown> connected;
    connected.attach(static_cast<IUnknown*>(events));
    return guarded([&]() -> HRESULT {
        const std::lock_guard lock(m_lock);
        if (m_lastCookie == std::numeric_limits<DWORD>::max())
            return CONNECT_E_ADVISELIMIT;
        // The sink goes in last: without memory for it, it is not released before the lock is.
        m_connections.push_back({m_lastCookie + 1, nullptr});
        m_connections.back().sink = std::move(connected);
        *cookie = ++m_lastCookie;
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE CConnectionPoint::Unadvise(DWORD cookie) {
    ComPtr<IUnknown> released;
    const std::lock_guard lock(m_lock);
    const auto found = std::ranges::find(m_connections, cookie, &Connection::cookie);
    if (found == m_connections.end())
        return CONNECT_E_NOCONNECTION;
    released = std::move(found->sink);
    m_connections.erase(found);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CConnectionPoint::EnumConnections(IEnumConnections** connections) {
    if (connections == nullptr)
        return E_POINTER;
    *connections = nullptr;
    return guarded([&] {
        auto list = std::make_shared<std::vector<ConnectionPolicy::Stored>>();
        {
            const std::lock_guard lock(m_lock);
            list->reserve(m_connections.size());
            for (const Connection& connection : m_connections)
                list->push_back({connection.cookie, connection.sink});
        }
        using Enumerator = CEnumerator<IEnumConnections, ConnectionPolicy>;
        *connections = makeObject<Enumerator>(std::move(list)).detach();
    });
}

bool CConnectionPoint::hasEverConnected() const noexcept {
    return lastCookie() != 0;
}

DWORD CConnectionPoint::lastCookie() const noexcept {
    const std::lock_guard lock(m_lock);
    return m_lastCookie;
}

ComPtr<IUnknown> CConnectionPoint::sinkAfter(DWORD& cookie, DWORD last) const noexcept {
    const std::lock_guard lock(m_lock);
    const auto next = std::ranges::upper_bound(m_connections, cookie, {}, &Connection::cookie);
    if (next == m_connections.end() || next->cookie > last)
        return nullptr;
    cookie = next->cookie;
    return next->sink;
}

} // namespace tarvo::com
