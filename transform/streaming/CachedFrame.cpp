#include "transform/streaming/CachedFrame.h"

#include <new>

namespace tarvo::transform {

std::span<std::byte> CCachedFrame::allocate(std::size_t bytes) {
    honourRequest();
    if (m_bytes == nullptr || m_size != bytes) {
        free();
        m_bytes.reset(new (std::nothrow) std::byte[bytes]());
        m_size = m_bytes != nullptr ? bytes : 0;
    }
    return {m_bytes.get(), m_size};
}

std::span<const std::byte> CCachedFrame::frame() {
    honourRequest();
    return {m_bytes.get(), m_size};
}

void CCachedFrame::free() {
    m_bytes.reset();
    m_size = 0;
}

void CCachedFrame::honourRequest() {
    if (m_isFreeRequested.exchange(false))
        free();
}

} // namespace tarvo::transform
