#pragma once

#include "render/RenderDevice.h"
#include "render/software/AlignedBytes.h"
#include "render/software/ThreadPool.h"

#include <cstddef>
#include <cstdint>

namespace tarvo::render::software {

/// As many tables count as a custom view can have; further ones are ignored.
inline constexpr int mostLayers = 8;

/// The tables that a program looks through, as TableRow in RowKernels.h has them.
struct TableView {
    const float* texels = nullptr; ///< null: the program looks through none
    std::ptrdiff_t pitch = 0;      ///< texels from a row to the next
    int columns = 0;
    int rows = 0;   ///< of all tables
    int layers = 0; ///< that count, 0 … mostLayers
    std::uint64_t version = 0;

    bool isThere() const { return texels != nullptr; }
    friend bool operator==(const TableView&, const TableView&) = default;
};

/// The lookup surface: the tables of the custom programs, one below the other. They come as four 16-bit
/// channels a texel and are kept as floats, since every pixel looks at four of them whenever a view moves.
class CLookupTables {
public:
    /// Zeros; throws std::bad_alloc. The version is that of the contents: as no two ever have the same, what
    /// was worked out from them can be told from what has to be worked out anew.
    CLookupTables(int width, int height, const MemorySource& memory, std::uint64_t version);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// What the rows lack is zero.
    void upload(const SourceRows& rows, CThreadPool& pool, std::uint64_t version);
    TableView view(int layers) const;

private:
    int m_width;
    int m_height;
    std::ptrdiff_t m_pitch;
    CAlignedBytes m_texels;
    std::uint64_t m_version;
};

} // namespace tarvo::render::software
