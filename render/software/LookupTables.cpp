#include "render/software/LookupTables.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace tarvo::render::software {
namespace {

constexpr std::size_t channels = 4;
constexpr std::size_t wordBytes = sizeof(std::uint16_t) * channels;
constexpr std::size_t texelBytes = sizeof(float) * channels;

void convertRow(std::span<const std::byte> row, int texels, float* target) {
    for (int i = 0; i < texels; ++i, target += channels) {
        std::array<std::uint16_t, channels> words{};
        const std::size_t begin = static_cast<std::size_t>(i) * wordBytes;
        if (begin < row.size())
            std::memcpy(words.data(), row.data() + begin, std::min(wordBytes, row.size() - begin));
        std::copy(words.begin(), words.end(), target);
    }
}

} // namespace

CLookupTables::CLookupTables(int width, int height, const MemorySource& memory, std::uint64_t version)
    : m_width(width), m_height(height),
      // A lone column has a neighbour that is read, whatever its share.
      m_pitch(std::max(width, 2)),
      m_texels(static_cast<std::size_t>(m_pitch) * static_cast<std::size_t>(height) * texelBytes, memory),
      m_version(version) {}

void CLookupTables::upload(const SourceRows& rows, CThreadPool& pool, std::uint64_t version) {
    constexpr int rowsPerPiece = 16;
    auto* const texels = static_cast<float*>(static_cast<void*>(m_texels.data()));
    const int available = rows.data == nullptr ? 0 : rows.rowCount;
    pool.run((m_height + rowsPerPiece - 1) / rowsPerPiece, [&](int piece) noexcept {
        const int end = std::min((piece + 1) * rowsPerPiece, m_height);
        for (int y = piece * rowsPerPiece; y < end; ++y) {
            std::span<const std::byte> row;
            if (y < available)
                row = {rows.data + y * rows.stepBytes, rows.rowBytes};
            convertRow(row, m_width, texels + y * m_pitch * static_cast<std::ptrdiff_t>(channels));
        }
    });
    m_version = version;
}

TableView CLookupTables::view(int layers) const {
    return {static_cast<const float*>(static_cast<const void*>(m_texels.data())),
            m_pitch,
            m_width,
            m_height,
            layers,
            m_version};
}

} // namespace tarvo::render::software
