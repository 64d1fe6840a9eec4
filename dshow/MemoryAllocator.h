#pragma once

#include "com/Object.h"
#include "dshow/MediaSample.h"
#include "platform/InterfaceTypes.h"

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace tarvo::dshow {

/// A fixed number of buffers in memory, made by Commit. Decommit ends all waiting at once; the memory goes
/// when the last buffer has come back. A buffer that is out keeps its allocator alive. Any thread.
class CMemoryAllocator final : public com::CObject<IMemAllocator> {
public:
    CMemoryAllocator() = default;

    /// VFW_E_ALREADY_COMMITTED, VFW_E_BUFFERS_OUTSTANDING, VFW_E_BADALIGN unless the alignment is a power of
    /// two, E_INVALIDARG for what is negative.
    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
    STDMETHODIMP GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    /// VFW_E_SIZENOTSET before SetProperties.
    STDMETHODIMP Commit() override;
    STDMETHODIMP Decommit() override;
    /// Waits for a buffer, but for AM_GBF_NOWAIT, which gives VFW_E_TIMEOUT instead; VFW_E_NOT_COMMITTED. The
    /// times are not looked at.
    STDMETHODIMP GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override;
    /// Only for samples of its own, which come back by their last Release: S_OK.
    STDMETHODIMP ReleaseBuffer(IMediaSample* sample) override;

    /// For the sample whose last reference is gone.
    void takeBack(CMediaSample& sample) noexcept;

protected:
    ~CMemoryAllocator() override = default;

private:
    void freeMemory() noexcept;

    std::mutex m_lock;
    std::condition_variable m_cameBack;
    ALLOCATOR_PROPERTIES m_properties{};
    bool m_isCommitted = false;
    std::vector<std::byte> m_memory;
    std::vector<std::unique_ptr<CMediaSample>> m_samples;
    std::vector<CMediaSample*> m_free;
};

} // namespace tarvo::dshow
