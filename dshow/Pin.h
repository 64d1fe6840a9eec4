#pragma once

#include "com/BStr.h"
#include "com/ComPtr.h"
#include "dshow/PinType.h"
#include "platform/InterfaceTypes.h"

#include <atomic>
#include <string>

namespace tarvo::dshow {

class CBaseFilter;

/// What input and output pins share. A pin is a part of its filter: it has an IUnknown of its own, yet counts
/// its references on the filter and lives as long as that.
///
/// Connections are made and ended under the filter's lock and only while the filter is stopped. That lock may
/// be taken again by the same thread: the other pin calls back while a connection is made.
class CPin : public IPin {
public:
    /// `name` is what people see and what FindPin knows the pin by.
    CPin(CBaseFilter& filter, PIN_DIRECTION direction, com::OleStringView name);
    CPin(const CPin&) = delete;
    CPin& operator=(const CPin&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    /// S_FALSE if there was no connection, VFW_E_NOT_STOPPED while the filter is at work.
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** pin) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override;
    STDMETHODIMP QueryId(LPWSTR* id) override;
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** enumerator) override;
    /// E_NOTIMPL: every input of the filter feeds every output.
    STDMETHODIMP QueryInternalConnections(IPin** pins, ULONG* count) override;

    // The rest is for the filter, its other pins and enumerators. Under the filter's lock where the
    // connection is looked at.

    bool isConnected() const noexcept { return static_cast<bool>(m_connected); }
    IPin* connected() const noexcept { return m_connected.get(); }
    const AM_MEDIA_TYPE& connectionType() const noexcept { return m_type.get(); }
    com::OleStringView name() const noexcept { return m_name; }
    PIN_DIRECTION direction() const noexcept { return m_direction; }
    CBaseFilter& filter() const noexcept { return m_filter; }

    /// S_OK if the pin takes the type, S_FALSE if not.
    virtual HRESULT checkMediaType(const AM_MEDIA_TYPE& type) = 0;
    /// The preferred types in order: S_OK and the type, VFW_S_NO_MORE_ITEMS beyond the last, E_INVALIDARG
    /// before the first.
    virtual HRESULT mediaType(LONG position, CPinType& type) = 0;
    /// Another number after each change of the preferred types.
    LONG typesVersion() const noexcept { return m_typesVersion.load(); }
    void typesChanged() noexcept { ++m_typesVersion; }

    /// The filter leaves or enters the stopped state.
    virtual HRESULT activate() { return S_OK; }
    virtual void deactivate() noexcept {}

protected:
    ~CPin() = default;

    /// For interfaces besides IPin; the pointer is counted. E_NOINTERFACE if there is none.
    virtual HRESULT queryMore(REFIID iid, void** object);
    /// Both sides agreed on the type; a failure ends the connection that is being made.
    virtual HRESULT connectionMade() { return S_OK; }
    /// A connection ended, or one that was being made failed.
    virtual void connectionEnded() noexcept {}

    /// Keeps other and type as the connection in the making; ends what there was of it.
    HRESULT keepConnection(IPin& other, const AM_MEDIA_TYPE& type) noexcept;
    void dropConnection() noexcept;
    HRESULT replaceType(const AM_MEDIA_TYPE& type) noexcept { return m_type.assign(type); }

private:
    CBaseFilter& m_filter;
    PIN_DIRECTION m_direction;
    std::basic_string<OLECHAR> m_name;
    com::ComPtr<IPin> m_connected;
    CPinType m_type;
    std::atomic<LONG> m_typesVersion{0};
};

} // namespace tarvo::dshow
