#include "transform/CurrentImage.h"

#include "com/Guarded.h"

#include <limits>
#include <utility>

namespace tarvo::transform {

void CCurrentImage::setTimes(std::int64_t timestamp, std::int64_t duration) {
    m_timestamp = timestamp;
    m_duration = duration;
    m_isNew = false;
}

HRESULT CCurrentImage::visit(const render::MappedRows& rows) {
    constexpr std::size_t largest = std::numeric_limits<std::uint32_t>::max();
    if (rows.pitchBytes * static_cast<std::size_t>(rows.height) > largest)
        return S_OK;
    // Without memory there is no event this time.
    static_cast<void>(com::guarded([&] {
        if (!m_buffer)
            m_buffer = com::makeObject<CImageBuffer>(rows);
        if (!m_buffer->lockWithin(std::chrono::milliseconds(0)))
            return;
        if (m_buffer->fits(rows)) {
            m_buffer->store(rows, m_timestamp, m_duration);
            m_isNew = true;
        }
        m_buffer->UnlockBuffer();
    }));
    return S_OK;
}

com::ComPtr<CImageBuffer> CCurrentImage::takeNew() {
    return std::exchange(m_isNew, false) ? m_buffer : nullptr;
}

com::ComPtr<CImageBuffer> CCurrentImage::giveUp() {
    m_isNew = false;
    return std::exchange(m_buffer, nullptr);
}

} // namespace tarvo::transform
