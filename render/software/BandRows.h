#pragma once

#include "render/software/AlignedBytes.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvo::render::software {

/// The rows of a band for each thread that draws at the same time: where every band is handed over at once,
/// these few stay in the cache, and nothing goes to memory that nobody will look at.
class CBandRows {
public:
    /// `bytes` of rows for each of so many threads; throws std::bad_alloc.
    CBandRows(int threads, std::size_t bytes, const MemorySource& memory);

    /// Rows of its own until its end. Where more threads than that ask at once, waits for another's.
    class CLoan {
    public:
        explicit CLoan(CBandRows& owner) noexcept;
        ~CLoan();
        CLoan(const CLoan&) = delete;
        CLoan& operator=(const CLoan&) = delete;

        std::uint8_t* rows() const { return m_owner.m_bytes.data() + m_place * m_owner.m_step; }

    private:
        CBandRows& m_owner;
        std::size_t m_place = 0;
    };

private:
    std::size_t m_step;
    CAlignedBytes m_bytes;
    std::vector<std::atomic<bool>> m_isTaken;
};

} // namespace tarvo::render::software
