#pragma once

#include "com/OwnTypeLibrary.h"
#include "interfaces/TarvoVideoTransform.h"
#include "render/RenderDevice.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

namespace tarvo::transform {

/// The picture that sinks of image events are handed: rows of 4-byte pixels, blue, green, red and an unused
/// byte, from the top.
///
/// Its lock is an event which one waiter takes, and which the one who took it sets again; it belongs to no
/// thread. Getters do not take it: who wants data that belong together locks the buffer first. Any thread.
class CImageBuffer final : public com::CObject<com::Dual<IImageBuffer>> {
public:
    /// A buffer for pictures like this, unlocked and black. Throws std::bad_alloc.
    explicit CImageBuffer(const render::MappedRows& rows);

    /// Whether pictures of these rows fill the buffer exactly.
    bool fits(const render::MappedRows& rows) const;
    /// Takes over rows that fit. The caller has locked the buffer.
    void store(const render::MappedRows& rows, std::int64_t timestamp, std::int64_t duration);
    /// What LockBuffer does; false after the time without the lock.
    bool lockWithin(std::chrono::milliseconds time);

    STDMETHODIMP get_DataPointer(INT_PTR* theDataPointer) override;
    STDMETHODIMP get_Size(LONG* theSize) override;
    STDMETHODIMP get_Width(LONG* theWidth) override;
    STDMETHODIMP get_Height(LONG* theHeight) override;
    STDMETHODIMP get_Format(LONG* theFormat) override;
    STDMETHODIMP get_Timestamp(LONGLONG* theTimestamp) override;
    STDMETHODIMP get_Duration(LONGLONG* theDuration) override;
    /// The time is a count of 32 bits without sign; all of them set mean for ever.
    STDMETHODIMP LockBuffer(LONG theTimeoutMs, VARIANT_BOOL* isLocked) override;
    STDMETHODIMP UnlockBuffer() override;

protected:
    /// Waits a while for a client who still has it locked, and may still be reading.
    void finalRelease() noexcept override;

private:
    const std::size_t m_size;
    const int m_width;
    const int m_height;
    std::unique_ptr<std::byte[]> m_data;
    std::atomic<std::int64_t> m_timestamp{0};
    std::atomic<std::int64_t> m_duration{0};

    std::mutex m_guard;
    std::condition_variable m_unlocked;
    bool m_isLocked = false;
};

} // namespace tarvo::transform
