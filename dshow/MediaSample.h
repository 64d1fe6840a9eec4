#pragma once

#include "com/ComPtr.h"
#include "dshow/PinType.h"
#include "platform/InterfaceTypes.h"

#include <atomic>

namespace tarvo::dshow {

class CMemoryAllocator;

/// A buffer of a CMemoryAllocator with what is said about its contents. Its last reference does not destroy
/// it but gives it back. As everywhere in a graph, whoever holds a sample alone may change it; nothing is
/// locked.
class CMediaSample final : public IMediaSample2 {
public:
    /// The memory is the allocator's and lasts as long as the sample.
    CMediaSample(CMemoryAllocator& allocator, BYTE* buffer, LONG size) noexcept;
    CMediaSample(const CMediaSample&) = delete;
    CMediaSample& operator=(const CMediaSample&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetPointer(BYTE** buffer) override;
    STDMETHODIMP_(LONG) GetSize() override;
    /// VFW_S_NO_STOP_TIME and a stop right after the start if only that is known, VFW_E_SAMPLE_TIME_NOT_SET
    /// without both.
    STDMETHODIMP GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    STDMETHODIMP SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    STDMETHODIMP IsSyncPoint() override;
    STDMETHODIMP SetSyncPoint(BOOL isSyncPoint) override;
    STDMETHODIMP IsPreroll() override;
    STDMETHODIMP SetPreroll(BOOL isPreroll) override;
    STDMETHODIMP_(LONG) GetActualDataLength() override;
    STDMETHODIMP SetActualDataLength(LONG length) override;
    /// S_FALSE and null if the type did not change.
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE** type) override;
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP IsDiscontinuity() override;
    STDMETHODIMP SetDiscontinuity(BOOL isDiscontinuity) override;
    STDMETHODIMP GetMediaTime(LONGLONG* start, LONGLONG* stop) override;
    STDMETHODIMP SetMediaTime(LONGLONG* start, LONGLONG* stop) override;

    /// The first `size` bytes of the record; the media type in it stays the sample's.
    STDMETHODIMP GetProperties(DWORD size, BYTE* properties) override;
    /// Takes over the first `size` bytes of a record; the buffer itself cannot be exchanged.
    STDMETHODIMP SetProperties(DWORD size, const BYTE* properties) override;

    // For the allocator, which holds its own lock.

    /// Free until now: becomes whole, unmarked and the caller's, with one reference and one on the allocator.
    void handOut() noexcept;

private:
    bool has(DWORD flag) const noexcept { return (m_properties.dwSampleFlags & flag) != 0; }
    HRESULT mark(DWORD flag, bool value) noexcept;
    void unmark() noexcept;

    CMemoryAllocator& m_allocator;
    std::atomic<ULONG> m_references{0};
    AM_SAMPLE2_PROPERTIES m_properties{};
    CPinType m_type;
    bool m_hasMediaTime = false;
    LONGLONG m_mediaStart = 0;
    LONGLONG m_mediaStop = 0;
};

} // namespace tarvo::dshow
