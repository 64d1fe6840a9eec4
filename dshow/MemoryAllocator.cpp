#include "dshow/MemoryAllocator.h"

#include "com/Guarded.h"

#include <algorithm>
#include <cstdint>

namespace tarvo::dshow {
namespace {

bool isPowerOfTwo(LONG number) noexcept {
    return number > 0 && (number & (number - 1)) == 0;
}

/// More than any machine gives to one stream; asking for it would only fail later and less clearly.
constexpr std::uintptr_t mostMemory = std::uintptr_t{1} << 36U;

std::uintptr_t roundedUp(std::uintptr_t value, std::uintptr_t step) noexcept {
    return (value + step - 1) / step * step;
}

} // namespace

STDMETHODIMP CMemoryAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
    if (request == nullptr || actual == nullptr)
        return E_POINTER;
    if (!isPowerOfTwo(request->cbAlign))
        return VFW_E_BADALIGN;
    if (request->cBuffers < 0 || request->cbBuffer < 0 || request->cbPrefix < 0)
        return E_INVALIDARG;
    const std::lock_guard lock(m_lock);
    if (m_isCommitted)
        return VFW_E_ALREADY_COMMITTED;
    if (m_free.size() != m_samples.size())
        return VFW_E_BUFFERS_OUTSTANDING;
    m_properties = *request;
    m_properties.cBuffers = std::max<LONG>(m_properties.cBuffers, 1);
    m_properties.cbBuffer = std::max<LONG>(m_properties.cbBuffer, 1);
    *actual = m_properties;
    return S_OK;
}

STDMETHODIMP CMemoryAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    if (properties == nullptr)
        return E_POINTER;
    const std::lock_guard lock(m_lock);
    *properties = m_properties;
    return S_OK;
}

STDMETHODIMP CMemoryAllocator::Commit() {
    return com::guarded([&]() -> HRESULT {
        const std::lock_guard lock(m_lock);
        if (m_properties.cbBuffer == 0)
            return VFW_E_SIZENOTSET;
        // After a Decommit that still waits for buffers the old memory goes on serving.
        if (m_isCommitted || !m_samples.empty()) {
            m_isCommitted = true;
            return S_OK;
        }
        const auto align = static_cast<std::uintptr_t>(m_properties.cbAlign);
        const auto prefix = static_cast<std::uintptr_t>(m_properties.cbPrefix);
        const auto count = static_cast<std::uintptr_t>(m_properties.cBuffers);
        const std::uintptr_t step =
            roundedUp(prefix + static_cast<std::uintptr_t>(m_properties.cbBuffer), align);
        if (count > mostMemory / step)
            return E_OUTOFMEMORY;
        try {
            m_memory.resize(step * count + align);
            const auto start = reinterpret_cast<std::uintptr_t>(m_memory.data());
            std::byte* buffer = m_memory.data() + (roundedUp(start + prefix, align) - start);
            m_samples.reserve(count);
            m_free.reserve(count);
            for (std::uintptr_t i = 0; i < count; ++i, buffer += step) {
                m_samples.push_back(std::make_unique<CMediaSample>(*this, reinterpret_cast<BYTE*>(buffer),
                                                                   m_properties.cbBuffer));
                m_free.push_back(m_samples.back().get());
            }
        } catch (...) {
            freeMemory();
            throw;
        }
        m_isCommitted = true;
        return S_OK;
    });
}

STDMETHODIMP CMemoryAllocator::Decommit() {
    const std::lock_guard lock(m_lock);
    m_isCommitted = false;
    if (m_free.size() == m_samples.size())
        freeMemory();
    m_cameBack.notify_all();
    return S_OK;
}

STDMETHODIMP CMemoryAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME*, REFERENCE_TIME*,
                                         DWORD flags) {
    if (sample == nullptr)
        return E_POINTER;
    *sample = nullptr;
    std::unique_lock lock(m_lock);
    if (m_isCommitted && m_free.empty()) {
        if ((flags & AM_GBF_NOWAIT) != 0)
            return VFW_E_TIMEOUT;
        m_cameBack.wait(lock, [&] { return !m_isCommitted || !m_free.empty(); });
    }
    if (!m_isCommitted)
        return VFW_E_NOT_COMMITTED;
    CMediaSample* const taken = m_free.back();
    m_free.pop_back();
    taken->handOut();
    *sample = taken;
    return S_OK;
}

STDMETHODIMP CMemoryAllocator::ReleaseBuffer(IMediaSample* sample) {
    return sample != nullptr ? S_OK : E_POINTER;
}

void CMemoryAllocator::takeBack(CMediaSample& sample) noexcept {
    {
        const std::lock_guard lock(m_lock);
        m_free.push_back(&sample);
        if (!m_isCommitted && m_free.size() == m_samples.size())
            freeMemory();
        m_cameBack.notify_one();
    }
    // The sample's own reference, last: nobody else may be left.
    Release();
}

void CMemoryAllocator::freeMemory() noexcept {
    m_free.clear();
    m_samples.clear();
    m_memory = {};
}

} // namespace tarvo::dshow
