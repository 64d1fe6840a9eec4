#pragma once

#include "com/Object.h"
#include "com/SafeArray.h"
#include "com/Variant.h"
#include "interfaces/TarvoVideoTransform.h"
#include "tests/transform/TransformHost.h"

#include <functional>
#include <utility>

namespace tarvo::transform {

/// A sink of one of the event interfaces that does what it is told.
template<class Event>
class CEventSink final : public com::CObject<Event, com::Through<IDispatch, Event>> {
public:
    using Handler = std::function<HRESULT(const DISPPARAMS&)>;
    explicit CEventSink(Handler handler) : m_handler(std::move(handler)) {}

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, OLECHAR**, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT*,
                        EXCEPINFO*, UINT*) override {
        EXPECT_EQ(member, 1);
        EXPECT_EQ(locale, 1024U);
        EXPECT_EQ(flags, DISPATCH_METHOD);
        EXPECT_EQ(parameters->cNamedArgs, 0U);
        return m_handler(*parameters);
    }

private:
    Handler m_handler;
};

/// A sink that is connected to a transform for as long as this lives.
template<class Event>
class CConnected {
public:
    CConnected(CTransformHost& host, typename CEventSink<Event>::Handler handler) {
        const auto container = host.object.as<IConnectionPointContainer>();
        EXPECT_EQ(container->FindConnectionPoint(__uuidof(Event), m_point.put()), S_OK);
        const auto sink = com::makeObject<CEventSink<Event>>(std::move(handler));
        EXPECT_EQ(m_point->Advise(sink.get(), &m_cookie), S_OK);
    }
    CConnected(const CConnected&) = delete;
    CConnected& operator=(const CConnected&) = delete;
    ~CConnected() {
        if (m_cookie != 0) {
            EXPECT_EQ(disconnect(), S_OK);
        }
    }

    HRESULT disconnect() { return m_point->Unadvise(std::exchange(m_cookie, 0)); }

private:
    ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
};

using PrepareSink = CConnected<IDewarpingTransformEvents>;
using ImageSink = CConnected<IImageSourceEvents>;

/// The buffer that an image event brings.
inline ComPtr<IImageBuffer> imageOf(const DISPPARAMS& parameters) {
    EXPECT_EQ(parameters.cArgs, 1U);
    EXPECT_EQ(parameters.rgvarg[0].vt, VT_DISPATCH);
    return ComPtr<IDispatch>(parameters.rgvarg[0].pdispVal).as<IImageBuffer>();
}

/// What GetCurrentImage gives, as bytes; empty after a failure.
inline std::vector<std::uint8_t> currentImage(IDewarpingTransform& transform, LONGLONG* time = nullptr,
                                              HRESULT* result = nullptr) {
    com::CVariant image;
    const HRESULT answer = transform.GetCurrentImage(image.put(), time, 0);
    if (result != nullptr)
        *result = answer;
    if (FAILED(answer)) {
        EXPECT_EQ(image.type(), VT_EMPTY);
        return {};
    }
    EXPECT_EQ(image.type(), VT_ARRAY | VT_UI1);
    const com::CSafeArrayAccess<std::uint8_t> access(image.get().parray);
    EXPECT_EQ(image.get().parray->rgsabound[0].lLbound, 0);
    return {access.elements().begin(), access.elements().end()};
}

} // namespace tarvo::transform
