#include "transform/ImageBuffer.h"

#include "transform/OutArgument.h"

#include <cstring>

namespace tarvo::transform {
namespace {

constexpr LONG formatBgrx = 0;
constexpr std::chrono::milliseconds waitAtTheEnd{5000};
constexpr std::uint32_t forEver = 0xFFFFFFFF;

} // namespace

CImageBuffer::CImageBuffer(const render::MappedRows& rows)
    : m_size(rows.pitchBytes * static_cast<std::size_t>(rows.height)), m_width(rows.width),
      m_height(rows.height), m_data(std::make_unique<std::byte[]>(m_size)) {}

void CImageBuffer::finalRelease() noexcept {
    lockWithin(waitAtTheEnd);
    CObjectOn::finalRelease();
}

bool CImageBuffer::fits(const render::MappedRows& rows) const {
    return rows.pitchBytes * static_cast<std::size_t>(rows.height) == m_size && rows.width == m_width &&
           rows.height == m_height;
}

void CImageBuffer::store(const render::MappedRows& rows, std::int64_t timestamp, std::int64_t duration) {
    std::memcpy(m_data.get(), rows.data, m_size);
    m_timestamp = timestamp;
    m_duration = duration;
}

bool CImageBuffer::lockWithin(std::chrono::milliseconds time) {
    std::unique_lock guard(m_guard);
    if (!m_unlocked.wait_for(guard, time, [this] { return !m_isLocked; }))
        return false;
    m_isLocked = true;
    return true;
}

STDMETHODIMP CImageBuffer::get_DataPointer(INT_PTR* theDataPointer) {
    return give(theDataPointer, reinterpret_cast<INT_PTR>(m_data.get()));
}

STDMETHODIMP CImageBuffer::get_Size(LONG* theSize) {
    return give(theSize, static_cast<LONG>(m_size));
}

STDMETHODIMP CImageBuffer::get_Width(LONG* theWidth) {
    return give(theWidth, LONG{m_width});
}

STDMETHODIMP CImageBuffer::get_Height(LONG* theHeight) {
    return give(theHeight, LONG{m_height});
}

STDMETHODIMP CImageBuffer::get_Format(LONG* theFormat) {
    return give(theFormat, formatBgrx);
}

STDMETHODIMP CImageBuffer::get_Timestamp(LONGLONG* theTimestamp) {
    return give(theTimestamp, static_cast<LONGLONG>(m_timestamp.load()));
}

STDMETHODIMP CImageBuffer::get_Duration(LONGLONG* theDuration) {
    return give(theDuration, static_cast<LONGLONG>(m_duration.load()));
}

STDMETHODIMP CImageBuffer::LockBuffer(LONG theTimeoutMs, VARIANT_BOOL* isLocked) {
    if (isLocked == nullptr)
        return E_POINTER;
    const auto time = static_cast<std::uint32_t>(theTimeoutMs);
    if (time == forEver) {
        std::unique_lock guard(m_guard);
        m_unlocked.wait(guard, [this] { return !m_isLocked; });
        m_isLocked = true;
        *isLocked = VARIANT_TRUE;
        return S_OK;
    }
    *isLocked = lockWithin(std::chrono::milliseconds(time)) ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CImageBuffer::UnlockBuffer() {
    const std::lock_guard guard(m_guard);
    m_isLocked = false;
    m_unlocked.notify_one();
    return S_OK;
}

} // namespace tarvo::transform
