#pragma once

#include "render/RenderDevice.h"
#include "render/software/AlignedBytes.h"
#include "render/software/Counted.h"
#include "render/software/ThreadPool.h"

#include <array>

namespace tarvo::render::software {

/// How what was lent is copied: straight, or past the caches, which then keep what somebody needs sooner.
using CopyBytes = void (*)(std::uint8_t* target, const std::uint8_t* source, std::size_t count) noexcept;
void copyThroughCaches(std::uint8_t* target, const std::uint8_t* source, std::size_t count) noexcept;

/// Rows of bytes as they were uploaded: a plane or a packed frame. While they are lent
/// they lie where the lender has them.
struct RawRows : CCounted {
    CAlignedBytes bytes;
    std::size_t rowBytes = 0;
    std::size_t pitch = 0;
    int rows = 0;
    SourceRows lender;   ///< of all rows; no data: not lent
    bool isWhole = true; ///< else only what was not yet converted was kept

    RawRows() = default;
    /// Zeros; throws std::bad_alloc.
    RawRows(std::size_t theRowBytes, int theRows, const MemorySource& memory)
        : bytes(rowPitch(theRowBytes) * static_cast<std::size_t>(theRows), memory), rowBytes(theRowBytes),
          pitch(rowPitch(theRowBytes)), rows(theRows) {}
    RawRows(const RawRows&) = delete;
    RawRows& operator=(const RawRows&) = delete;
    void unused() {}

    bool isLent() const { return lender.data != nullptr; }
    const std::uint8_t* data() const {
        return isLent() ? static_cast<const std::uint8_t*>(static_cast<const void*>(lender.data))
                        : bytes.data();
    }
    std::ptrdiff_t step() const { return isLent() ? lender.stepBytes : static_cast<std::ptrdiff_t>(pitch); }
    void lend(const SourceRows& source);
    /// Copies the rows from `top` up to `bottom`, as far as there are such, from the lender.
    void keep(int top, int bottom, CopyBytes copyBytes) noexcept;
    /// The same of a stretch of bytes of a single row.
    void keepBytes(std::size_t begin, std::size_t end, CopyBytes copyBytes) noexcept;
};

/// Whether these rows can stay where they are until they are asked to be kept.
bool canBeLent(const SourceRows& source, std::size_t rowBytes, int rows);

/// Fills `rows` rows of `rowBytes` bytes with what the source has of them, and with zeros where it ends.
void copyRows(CThreadPool& pool, const SourceRows& source, std::uint8_t* target, std::size_t pitch,
              std::size_t rowBytes, int rows);

/// An uploaded surface. Pictures that were not converted yet go on looking at the frame before, so there are
/// two sets of rows, and a new frame goes to the one that nobody looks at.
class CInputPlane {
public:
    CInputPlane(std::size_t rowBytes, int rows, const MemorySource& memory)
        : m_sets{RawRows(rowBytes, rows, memory), RawRows(rowBytes, rows, memory)}, m_current(m_sets[0]) {}

    const CShare<RawRows>& current() const { return m_current; }
    /// The rows that the next frame goes to, or null while both sets are looked at.
    RawRows* writable();
    /// That of the two which is not the current one.
    const RawRows& other() const { return &m_sets[0] == m_current.get() ? m_sets[1] : m_sets[0]; }
    /// Where the current rows, which are lent, will be kept: where the last ones were, if nobody looks at
    /// those any more. The second set's memory is then never touched.
    void chooseMemory() noexcept;
    void replaceWith(RawRows& rows) { m_current = CShare<RawRows>(rows); }
    std::array<RawRows, 2>& sets() { return m_sets; }

private:
    std::array<RawRows, 2> m_sets;
    CShare<RawRows> m_current;
    const std::uint8_t* m_memory = nullptr; ///< which rows were kept in the last time
};

} // namespace tarvo::render::software
