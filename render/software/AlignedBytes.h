#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tarvo::render::software {

/// Rows and arrays start at multiples of this: a cache line, and the widest vector.
inline constexpr std::size_t alignment = 64;

constexpr std::size_t alignedUp(std::size_t bytes) {
    return (bytes + alignment - 1) / alignment * alignment;
}

/// Where the large blocks come from. A test puts its own here to see what becomes of a refusal.
struct MemorySource {
    void* (*allocateZeroed)(std::size_t bytes); ///< null when there is no memory
    void (*release)(void* block, std::size_t bytes);
};

/// Bytes from a row to the next: an odd number of cache lines, so that what lies in one column does not fall
/// on the same few places of the caches.
constexpr std::size_t rowPitch(std::size_t rowBytes) {
    return alignedUp(rowBytes) / alignment % 2 == 0 ? alignedUp(rowBytes) + alignment : alignedUp(rowBytes);
}

/// Whether rows so far apart, too, leave those above one another room in the first cache. Its places repeat
/// every 4096 bytes: a multiple of 512 would leave eight or fewer of them, and a view that is turned looks at
/// more than a hundred rows at a time.
constexpr bool isSpread(std::size_t pitch) {
    return pitch % 512 != 0;
}

extern const MemorySource systemMemory;

/// An owned block of zeros, aligned; pages that nobody writes to cost no memory on most systems.
class CAlignedBytes {
public:
    CAlignedBytes() = default;
    /// Throws std::bad_alloc.
    CAlignedBytes(std::size_t size, const MemorySource& memory);
    ~CAlignedBytes() { release(); }
    CAlignedBytes(CAlignedBytes&& other) noexcept { swap(other); }
    CAlignedBytes& operator=(CAlignedBytes&& other) noexcept {
        CAlignedBytes moved(std::move(other));
        swap(moved);
        return *this;
    }
    CAlignedBytes(const CAlignedBytes&) = delete;
    CAlignedBytes& operator=(const CAlignedBytes&) = delete;

    std::uint8_t* data() const { return m_data; }
    std::size_t size() const { return m_size; }

private:
    void release() noexcept;
    void swap(CAlignedBytes& other) noexcept {
        std::swap(m_memory, other.m_memory);
        std::swap(m_block, other.m_block);
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
    }

    const MemorySource* m_memory = nullptr;
    void* m_block = nullptr;
    std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace tarvo::render::software
