#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <random>
#include <span>

namespace tarvo::render {

/// How the rows of a plane lie in memory.
struct PlaneShape {
    int rowBytes = 0;
    int rows = 0;
    int padding = 0;       ///< bytes from the end of a row to the next
    bool bottomUp = false; ///< the first row lies last, the step is negative
    int alignment = 0;     ///< 0 … 63: address of the first byte in memory modulo 64
};

/// Rows of bytes at an alignment of choice. Without a guard they end where their memory does, so that the
/// address sanitizer sees the first byte touched behind them; with one, 64 bytes on either side count to the
/// content.
class CPlane {
public:
    explicit CPlane(const PlaneShape& shape, int guardBytes = 0)
        : m_shape(shape), m_distance(shape.rowBytes + shape.padding),
          m_size(static_cast<std::size_t>(m_distance) * (shape.rows - 1) + shape.rowBytes + 2 * guardBytes),
          m_memory(
              static_cast<std::uint8_t*>(::operator new (m_size + shape.alignment, std::align_val_t{64}))),
          m_content(m_memory.get() + shape.alignment), m_lowest(m_content + guardBytes) {
        std::memset(m_memory.get(), 0xA5, m_size + shape.alignment);
    }

    std::ptrdiff_t step() const { return m_shape.bottomUp ? -m_distance : m_distance; }

    std::uint8_t* row(int y) const {
        return m_lowest + m_distance * (m_shape.bottomUp ? m_shape.rows - 1 - y : y);
    }
    std::uint8_t* first() const { return row(0); }

    /// Everything: rows, what lies between them, guards.
    std::span<std::uint8_t> content() const { return {m_content, m_size}; }

    void fill(std::uint32_t seed) const {
        std::minstd_rand random(seed + 1);
        for (std::uint8_t& byte : content())
            byte = static_cast<std::uint8_t>(random() >> 8);
    }

private:
    struct Release {
        void operator()(std::uint8_t* memory) const { ::operator delete (memory, std::align_val_t{64}); }
    };

    PlaneShape m_shape;
    std::ptrdiff_t m_distance;
    std::size_t m_size;
    std::unique_ptr<std::uint8_t[], Release> m_memory;
    std::uint8_t* m_content;
    std::uint8_t* m_lowest;
};

inline bool sameContent(const CPlane& a, const CPlane& b) {
    const std::span<const std::uint8_t> left = a.content();
    const std::span<const std::uint8_t> right = b.content();
    return left.size() == right.size() && std::memcmp(left.data(), right.data(), left.size()) == 0;
}

inline constexpr int guard = 64;

} // namespace tarvo::render
