#include "dshow/Pin.h"

#include "com/Guarded.h"
#include "dshow/BaseFilter.h"
#include "dshow/LiveEnumerator.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace tarvo::dshow {
namespace {

/// The preferred types of a pin, for an enumerator.
class CTypeSource {
public:
    using Item = AM_MEDIA_TYPE*;

    explicit CTypeSource(CPin& pin) : m_keep(&pin), m_pin(&pin) {}

    LONG version() const noexcept { return m_pin->typesVersion(); }
    HRESULT item(ULONG index, AM_MEDIA_TYPE*& type) {
        if (index > static_cast<ULONG>(std::numeric_limits<LONG>::max()))
            return S_FALSE;
        CPinType preferred;
        const HRESULT result = m_pin->mediaType(static_cast<LONG>(index), preferred);
        if (result != S_OK)
            return result;
        type = preferred.allocateCopy();
        return type != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    static void discard(AM_MEDIA_TYPE* type) noexcept { CPinType::freeAllocated(type); }

private:
    com::ComPtr<IPin> m_keep;
    CPin* m_pin;
};

} // namespace

CPin::CPin(CBaseFilter& filter, PIN_DIRECTION direction, com::OleStringView name)
    : m_filter(filter), m_direction(direction), m_name(name) {}

STDMETHODIMP CPin::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (iid == __uuidof(IUnknown) || iid == __uuidof(IPin)) {
        *object = static_cast<IPin*>(this);
        AddRef();
        return S_OK;
    }
    return queryMore(iid, object);
}

STDMETHODIMP_(ULONG) CPin::AddRef() {
    return m_filter.AddRef();
}

STDMETHODIMP_(ULONG) CPin::Release() {
    return m_filter.Release();
}

HRESULT CPin::queryMore(REFIID, void**) {
    return E_NOINTERFACE;
}

STDMETHODIMP CPin::Disconnect() {
    const std::lock_guard lock(m_filter.lock());
    if (!m_filter.isStopped())
        return VFW_E_NOT_STOPPED;
    if (!isConnected())
        return S_FALSE;
    dropConnection();
    return S_OK;
}

STDMETHODIMP CPin::ConnectedTo(IPin** pin) {
    if (pin == nullptr)
        return E_POINTER;
    const std::lock_guard lock(m_filter.lock());
    m_connected.copyTo(pin);
    return isConnected() ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CPin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (type == nullptr)
        return E_POINTER;
    *type = AM_MEDIA_TYPE{};
    const std::lock_guard lock(m_filter.lock());
    return isConnected() ? m_type.copyTo(type) : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CPin::QueryPinInfo(PIN_INFO* info) {
    if (info == nullptr)
        return E_POINTER;
    info->pFilter = &m_filter;
    m_filter.AddRef();
    info->dir = m_direction;
    const std::size_t length = std::min(m_name.size(), std::size(info->achName) - 1);
    std::copy_n(m_name.begin(), length, info->achName);
    info->achName[length] = 0;
    return S_OK;
}

STDMETHODIMP CPin::QueryDirection(PIN_DIRECTION* direction) {
    if (direction == nullptr)
        return E_POINTER;
    *direction = m_direction;
    return S_OK;
}

STDMETHODIMP CPin::QueryId(LPWSTR* id) {
    if (id == nullptr)
        return E_POINTER;
    const std::size_t size = (m_name.size() + 1) * sizeof(OLECHAR);
    *id = static_cast<LPWSTR>(CoTaskMemAlloc(size));
    if (*id == nullptr)
        return E_OUTOFMEMORY;
    std::memcpy(*id, m_name.c_str(), size);
    return S_OK;
}

STDMETHODIMP CPin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (type == nullptr)
        return E_POINTER;
    return com::guarded([&]() -> HRESULT {
        const std::lock_guard lock(m_filter.lock());
        return checkMediaType(*type) == S_OK ? S_OK : S_FALSE;
    });
}

STDMETHODIMP CPin::EnumMediaTypes(IEnumMediaTypes** enumerator) {
    if (enumerator == nullptr)
        return E_POINTER;
    *enumerator = nullptr;
    return com::guarded([&] {
        *enumerator =
            com::makeObject<CLiveEnumerator<IEnumMediaTypes, CTypeSource>>(CTypeSource(*this)).detach();
    });
}

STDMETHODIMP CPin::QueryInternalConnections(IPin**, ULONG*) {
    return E_NOTIMPL;
}

HRESULT CPin::keepConnection(IPin& other, const AM_MEDIA_TYPE& type) noexcept {
    const HRESULT result = m_type.assign(type);
    if (SUCCEEDED(result))
        m_connected = com::ComPtr<IPin>(&other);
    return result;
}

void CPin::dropConnection() noexcept {
    connectionEnded();
    m_connected.reset();
    m_type.reset();
}

} // namespace tarvo::dshow
