#pragma once

#include "com/ConnectionPointContainer.h"
#include "com/Event.h"
#include "com/Object.h"
#include "tests/com/TestObjects.h"

#include <atomic>
#include <functional>
#include <utility>

namespace tarvo::com {

/// A source of two kinds of events: IDispatch stands for a dispatch interface, IObjectWithSite for another.
class CSource : public CObject<IPersist, Implementing<CConnectionPointContainer<IDispatch, IObjectWithSite>,
                                                      IConnectionPointContainer>> {
public:
    explicit CSource(Outer outer = {}) noexcept : CObjectOn(outer) {}
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }

    CConnectionPoint& dispatchEvents() { return connectionPoint<IDispatch>(); }
    CConnectionPoint& siteEvents() { return connectionPoint<IObjectWithSite>(); }

private:
    CLiving m_living;
};

/// A sink of dispatch events that does what it is told.
class CSink : public CObject<IDispatch> {
public:
    using Handler = std::function<HRESULT(DISPID, const DISPPARAMS&)>;
    explicit CSink(Handler handler) : m_handler(std::move(handler)) {}

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, OLECHAR**, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        m_wasCalledRight = iid == GUID{} && locale == 1024 && flags == DISPATCH_METHOD && result == nullptr &&
                           exception == nullptr && badArgument == nullptr;
        return m_handler(member, *parameters);
    }

    /// Whether the last event came as one should.
    bool wasCalledRight() const { return m_wasCalledRight; }

private:
    Handler m_handler;
    std::atomic<bool> m_wasCalledRight{false};
    CLiving m_living;
};

inline ComPtr<CSink> makeSink(CSink::Handler handler) {
    return makeObject<CSink>(std::move(handler));
}

/// Connects a sink to the source's dispatch events.
inline DWORD connect(CSource& source, const ComPtr<CSink>& sink) {
    DWORD cookie = 0;
    throwIfFailed(source.dispatchEvents().Advise(sink.get(), &cookie));
    return cookie;
}

} // namespace tarvo::com
