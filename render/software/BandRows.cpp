#include "render/software/BandRows.h"

#include <thread>

namespace tarvo::render::software {

CBandRows::CBandRows(int threads, std::size_t bytes, const MemorySource& memory)
    : m_step((bytes + alignment - 1) / alignment * alignment),
      m_bytes(m_step * static_cast<std::size_t>(threads), memory),
      m_isTaken(static_cast<std::size_t>(threads)) {}

CBandRows::CLoan::CLoan(CBandRows& owner) noexcept : m_owner(owner) {
    for (;;) {
        for (m_place = 0; m_place < owner.m_isTaken.size(); ++m_place) {
            if (!owner.m_isTaken[m_place].exchange(true, std::memory_order_acquire))
                return;
        }
        std::this_thread::yield();
    }
}

CBandRows::CLoan::~CLoan() {
    m_owner.m_isTaken[m_place].store(false, std::memory_order_release);
}

} // namespace tarvo::render::software
