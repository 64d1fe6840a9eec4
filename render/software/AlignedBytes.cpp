#include "render/software/AlignedBytes.h"

#include "platform/PageMemory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace tarvo::render::software {
namespace {

/// From here on a block is worth pages of its own. Where the address sanitizer watches, none is: it sees
/// nothing beyond the end of pages.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t pagesFrom = std::numeric_limits<std::size_t>::max();
#else
constexpr std::size_t pagesFrom = std::size_t{256} * 1024;
#endif

// The system's zeros come without being written, which the usual aligned allocation cannot offer.
void* zeroedBlock(std::size_t bytes) {
    return bytes < pagesFrom ? std::calloc(bytes, 1) // NOLINT(cppcoreguidelines-no-malloc)
                             : platform::allocatePages(bytes);
}

void releaseBlock(void* block, std::size_t bytes) {
    if (bytes < pagesFrom) {
        std::free(block); // NOLINT(cppcoreguidelines-no-malloc)
    } else {
        platform::releasePages(block, bytes);
    }
}

} // namespace

const MemorySource systemMemory{zeroedBlock, releaseBlock};

CAlignedBytes::CAlignedBytes(std::size_t size, const MemorySource& memory)
    : m_memory(&memory), m_block(size <= std::numeric_limits<std::size_t>::max() - alignment
                                     ? memory.allocateZeroed(size + alignment)
                                     : nullptr),
      m_size(size) {
    if (m_block == nullptr)
        throw std::bad_alloc();
    const std::size_t misplaced = reinterpret_cast<std::uintptr_t>(m_block) % alignment;
    m_data = static_cast<std::uint8_t*>(m_block) + (misplaced == 0 ? 0 : alignment - misplaced);
}

void CAlignedBytes::release() noexcept {
    if (m_block != nullptr)
        m_memory->release(m_block, m_size + alignment);
}

} // namespace tarvo::render::software
