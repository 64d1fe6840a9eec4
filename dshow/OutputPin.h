#pragma once

#include "dshow/Pin.h"

namespace tarvo::dshow {

/// A pin that delivers samples. It makes the connection, agrees with the other pin on type and allocator, and
/// holds the allocator ready while the filter is at work.
class COutputPin : public CPin, public IQualityControl {
public:
    COutputPin(CBaseFilter& filter, com::OleStringView name) : CPin(filter, PINDIR_OUTPUT, name) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        return CPin::QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return CPin::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return CPin::Release(); }

    /// `type` may be null or leave major type, subtype or format open: then the other pin's preferred types
    /// are tried, then this one's, those that fit it. VFW_E_NO_ACCEPTABLE_TYPES if none was agreed on, or the
    /// error of the last attempt that came further than that.
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    /// These four come from upstream, where an output pin has nobody: E_UNEXPECTED.
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    STDMETHODIMP Notify(IBaseFilter* sender, Quality quality) override;
    /// E_NOTIMPL: messages go upstream.
    STDMETHODIMP SetSink(IQualityControl* sink) override;

    // Delivery, for the filter's streaming thread while the filter is at work; VFW_E_NOT_CONNECTED without
    // connection.

    HRESULT deliveryBuffer(com::ComPtr<IMediaSample>& sample);
    HRESULT deliver(IMediaSample& sample);
    HRESULT deliverEndOfStream();
    HRESULT deliverBeginFlush();
    HRESULT deliverEndFlush();
    HRESULT deliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

    HRESULT activate() override;
    void deactivate() noexcept override;

protected:
    ~COutputPin() = default;

    HRESULT queryMore(REFIID iid, void** object) override;
    HRESULT connectionMade() override;
    void connectionEnded() noexcept override;

    /// Settles with the allocator how many buffers of which size there are; `wanted` holds what the other pin
    /// asks for.
    virtual HRESULT decideBufferSize(IMemAllocator& allocator, ALLOCATOR_PROPERTIES& wanted) = 0;
    /// What to do with a message about quality; E_NOTIMPL unless the filter knows somebody to pass it to.
    virtual HRESULT passQuality(const Quality& quality);

private:
    struct Receiver {
        com::ComPtr<IPin> pin;
        com::ComPtr<IMemInputPin> input;
        com::ComPtr<IMemAllocator> allocator;
    };

    HRESULT attempt(IPin& receiver, const AM_MEDIA_TYPE& type);
    HRESULT attemptPreferredOf(IPin& owner, IPin& receiver, const AM_MEDIA_TYPE* wanted, HRESULT& best);
    HRESULT tryAllocator(IMemInputPin& input, IMemAllocator& allocator, ALLOCATOR_PROPERTIES wanted);
    /// The connection as it is now: calls go out without the lock.
    Receiver receiverNow() const;

    com::ComPtr<IMemInputPin> m_input;
    com::ComPtr<IMemAllocator> m_allocator;
};

} // namespace tarvo::dshow
