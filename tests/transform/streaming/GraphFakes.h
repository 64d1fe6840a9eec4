#pragma once

#include "platform/InterfaceTypes.h"

#include <atomic>
#include <utility>
#include <vector>

namespace tarvo::transform {

/// IUnknown of an object on the stack, which answers for one interface and whose references can be read.
template<class Interface>
class CCounted : public Interface {
public:
    int references() const { return m_references; }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (iid == __uuidof(Interface) || iid == __uuidof(IUnknown)) {
            *object = static_cast<Interface*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++m_references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--m_references); }

private:
    std::atomic<int> m_references{0};
};

/// The upstream pin's part that hears of quality.
class CFakeQualitySink final : public CCounted<IQualityControl> {
public:
    struct Message {
        IBaseFilter* sender;
        Quality quality;
    };
    std::vector<Message> messages;
    HRESULT result = S_OK;

    std::vector<Message> takeMessages() { return std::exchange(messages, {}); }

    STDMETHODIMP Notify(IBaseFilter* sender, Quality quality) override {
        messages.push_back({sender, quality});
        return result;
    }
    STDMETHODIMP SetSink(IQualityControl*) override { return E_NOTIMPL; }
};

/// A pin that may be connected and may hear of quality.
class CFakePin final : public CCounted<IPin> {
public:
    IPin* peer = nullptr;
    IQualityControl* quality = nullptr;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (iid == __uuidof(IQualityControl) && quality != nullptr)
            return quality->QueryInterface(iid, object);
        return CCounted::QueryInterface(iid, object);
    }
    STDMETHODIMP ConnectedTo(IPin** other) override {
        *other = peer;
        if (peer == nullptr)
            return E_FAIL;
        peer->AddRef();
        return S_OK;
    }
    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect() override { return E_NOTIMPL; }
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryPinInfo(PIN_INFO*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryDirection(PIN_DIRECTION*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryId(LPWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override { return E_NOTIMPL; }
    STDMETHODIMP BeginFlush() override { return E_NOTIMPL; }
    STDMETHODIMP EndFlush() override { return E_NOTIMPL; }
    STDMETHODIMP NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return E_NOTIMPL; }
};

class CFakeEnumPins final : public CCounted<IEnumPins> {
public:
    std::vector<IPin*> pins;

    STDMETHODIMP Next(ULONG count, IPin** target, ULONG*) override {
        if (count != 1 || pins.empty())
            return S_FALSE;
        *target = pins.front();
        pins.front()->AddRef();
        return S_OK;
    }
    STDMETHODIMP Skip(ULONG) override { return E_NOTIMPL; }
    STDMETHODIMP Reset() override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IEnumPins**) override { return E_NOTIMPL; }
};

/// The filter around the object, and its controlling unknown too.
class CFakeFilter final : public CCounted<IBaseFilter> {
public:
    IEnumPins* pins = nullptr;
    bool isFilter = true;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!isFilter && iid != __uuidof(IUnknown)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return CCounted::QueryInterface(iid, object);
    }
    STDMETHODIMP EnumPins(IEnumPins** target) override {
        *target = pins;
        if (pins == nullptr)
            return E_OUTOFMEMORY;
        pins->AddRef();
        return S_OK;
    }
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP Stop() override { return E_NOTIMPL; }
    STDMETHODIMP Pause() override { return E_NOTIMPL; }
    STDMETHODIMP Run(REFERENCE_TIME) override { return E_NOTIMPL; }
    STDMETHODIMP GetState(DWORD, FILTER_STATE*) override { return E_NOTIMPL; }
    STDMETHODIMP SetSyncSource(IReferenceClock*) override { return E_NOTIMPL; }
    STDMETHODIMP GetSyncSource(IReferenceClock**) override { return E_NOTIMPL; }
    STDMETHODIMP FindPin(LPCWSTR, IPin**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryFilterInfo(FILTER_INFO*) override { return E_NOTIMPL; }
    STDMETHODIMP JoinFilterGraph(IFilterGraph*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP QueryVendorInfo(LPWSTR*) override { return E_NOTIMPL; }
};

} // namespace tarvo::transform
