#pragma once

#include "dshow/Pin.h"

#include <atomic>

namespace tarvo::dshow {

/// A pin that takes samples. The connecting output pin drives: this one is asked.
class CInputPin : public CPin, public IMemInputPin {
public:
    CInputPin(CBaseFilter& filter, com::OleStringView name) : CPin(filter, PINDIR_INPUT, name) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        return CPin::QueryInterface(iid, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return CPin::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return CPin::Release(); }

    /// E_UNEXPECTED: connections are made from the output's side.
    STDMETHODIMP Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    /// E_NOTIMPL: none.
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    STDMETHODIMP Receive(IMediaSample* sample) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) override;
    /// S_OK: it may.
    STDMETHODIMP ReceiveCanBlock() override;

    bool isFlushing() const noexcept { return m_isFlushing.load(); }
    /// Whether NotifyAllocator said that samples must not be written to.
    bool isReadOnly() const noexcept { return m_isReadOnly.load(); }

protected:
    ~CInputPin() = default;

    HRESULT queryMore(REFIID iid, void** object) override;
    void connectionEnded() noexcept override { m_allocator.reset(); }

    /// What the filter does with the stream; on the thread of whoever upstream calls. The pin has taken note
    /// already.
    virtual HRESULT received(IMediaSample& sample) = 0;
    virtual HRESULT streamEnded() = 0;
    virtual HRESULT flushBegan() = 0;
    /// The pin still counts as flushing.
    virtual HRESULT flushEnds() = 0;
    virtual HRESULT segmentBegan(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) = 0;
    /// A sample came with another type, which the pin takes and now has as its connection's.
    virtual HRESULT typeChanged() { return S_OK; }

    /// Takes over the type that a sample brings, if it brings one: S_OK, or VFW_E_INVALIDMEDIATYPE for one
    /// that is not accepted.
    HRESULT followType(IMediaSample& sample);

private:
    com::ComPtr<IMemAllocator> m_allocator;
    std::atomic<bool> m_isFlushing{false};
    std::atomic<bool> m_isReadOnly{false};
};

} // namespace tarvo::dshow
