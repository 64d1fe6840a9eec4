#include "render/software/InputPlanes.h"

#include <algorithm>
#include <cstring>

namespace tarvo::render::software {
namespace {

constexpr std::size_t pieceBytes = 256 * 1024;

/// One row, however long.
void copyRow(const std::byte* source, std::size_t available, std::uint8_t* target, std::size_t wanted) {
    const std::size_t copied = std::min(available, wanted);
    if (copied != 0)
        std::memcpy(target, source, copied);
    std::memset(target + copied, 0, wanted - copied);
}

} // namespace

void copyRows(CThreadPool& pool, const SourceRows& source, std::uint8_t* target, std::size_t pitch,
              std::size_t rowBytes, int rows) {
    const int available = source.data == nullptr ? 0 : std::max(source.rowCount, 0);
    if (rows == 1) {
        // A packed frame is one long row.
        const auto pieces = static_cast<int>((rowBytes + pieceBytes - 1) / pieceBytes);
        const std::size_t sourceBytes = available > 0 ? source.rowBytes : 0;
        pool.run(pieces, [&](int piece) noexcept {
            const std::size_t begin = static_cast<std::size_t>(piece) * pieceBytes;
            const std::size_t left = sourceBytes > begin ? sourceBytes - begin : 0;
            copyRow(left == 0 ? nullptr : source.data + begin, left, target + begin,
                    std::min(pieceBytes, rowBytes - begin));
        });
        return;
    }
    const int rowsPerPiece =
        static_cast<int>(std::clamp<std::size_t>(pieceBytes / std::max<std::size_t>(rowBytes, 1), 1, 4096));
    pool.run((rows + rowsPerPiece - 1) / rowsPerPiece, [&](int piece) noexcept {
        const int first = piece * rowsPerPiece;
        const int end = std::min(first + rowsPerPiece, rows);
        std::uint8_t* const begin = target + static_cast<std::size_t>(first) * pitch;
        const bool isContiguous = source.stepBytes >= 0 &&
                                  static_cast<std::size_t>(source.stepBytes) == pitch &&
                                  source.rowBytes == pitch && rowBytes == pitch;
        if (isContiguous && end <= available) {
            std::memcpy(begin, source.data + first * source.stepBytes,
                        static_cast<std::size_t>(end - first) * pitch);
            return;
        }
        for (int y = first; y < end; ++y) {
            const bool isThere = y < available;
            copyRow(isThere ? source.data + y * source.stepBytes : nullptr, isThere ? source.rowBytes : 0,
                    target + static_cast<std::size_t>(y) * pitch, rowBytes);
        }
    });
}

void copyThroughCaches(std::uint8_t* target, const std::uint8_t* source, std::size_t count) noexcept {
    std::memcpy(target, source, count);
}

void RawRows::lend(const SourceRows& source) {
    lender = source;
    // Rows as far apart as the lender's are copied in one go.
    const bool fits =
        source.stepBytes >= static_cast<std::ptrdiff_t>(rowBytes) &&
        static_cast<std::size_t>(source.stepBytes) * static_cast<std::size_t>(rows) <= bytes.size();
    pitch = fits ? static_cast<std::size_t>(source.stepBytes) : rowPitch(rowBytes);
}

void RawRows::keep(int top, int bottom, CopyBytes copyBytes) noexcept {
    const int end = std::min(bottom, rows);
    if (top >= end)
        return;
    const auto rowAt = [&](int y) { return bytes.data() + static_cast<std::size_t>(y) * pitch; };
    if (step() == static_cast<std::ptrdiff_t>(pitch)) {
        copyBytes(rowAt(top), data() + top * step(),
                  static_cast<std::size_t>(end - top - 1) * pitch + rowBytes);
        return;
    }
    for (int y = top; y < end; ++y)
        copyBytes(rowAt(y), data() + y * step(), rowBytes);
}

void RawRows::keepBytes(std::size_t begin, std::size_t end, CopyBytes copyBytes) noexcept {
    const std::size_t last = std::min(end, rowBytes);
    if (begin < last)
        copyBytes(bytes.data() + begin, data() + begin, last - begin);
}

bool canBeLent(const SourceRows& source, std::size_t rowBytes, int rows) {
    return source.isLent && source.data != nullptr && source.rowBytes >= rowBytes && source.rowCount >= rows;
}

void CInputPlane::chooseMemory() noexcept {
    RawRows& current = m_current.get() == &m_sets[0] ? m_sets[0] : m_sets[1];
    RawRows& others = m_current.get() == &m_sets[0] ? m_sets[1] : m_sets[0];
    if (others.shares() == 0 && others.bytes.data() == m_memory)
        std::swap(current.bytes, others.bytes);
    m_memory = current.bytes.data();
}

RawRows* CInputPlane::writable() {
    for (RawRows& rows : m_sets) {
        const int own = &rows == m_current.get() ? 1 : 0;
        if (rows.shares() == own)
            return &rows;
    }
    return nullptr;
}

} // namespace tarvo::render::software
