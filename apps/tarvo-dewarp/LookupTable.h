#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::apps {

/// Most cells of a table that is made, read or written; it bounds the memory that any command takes.
inline constexpr std::uint64_t maxTableCells = std::uint64_t{1} << 25U;

/// Where in the input a cell looks and how much that counts, as fractions of 65535: 0 is the left or upper
/// edge, 65535 the right or lower one.
struct TableEntry {
    std::uint16_t x = 0;
    std::uint16_t y = 0;
    std::uint16_t weight = 0;

    friend constexpr bool operator==(const TableEntry&, const TableEntry&) = default;
};

inline constexpr std::uint16_t fullWeight = 65535;

/// One lookup table of the custom view, row by row. The component spreads it between the centres of its outer
/// cells: cell (0, 0) is the upper left, cell (width - 1, height - 1) the lower right corner of the output.
struct LookupTable {
    int width = 0;
    int height = 0;
    std::vector<TableEntry> entries;
};

/// The bytes that the component's SetCustomTransformData takes. Throws std::bad_alloc.
std::vector<std::uint8_t> encodeTable(const LookupTable& table);

/// What such bytes say of themselves.
struct TablesHead {
    std::uint64_t tableCount;
    std::uint64_t width;
    std::uint64_t height;
};

/// Throws CodingError for bytes that are not as many as their head says.
TablesHead readTablesHead(std::span<const std::uint8_t> bytes);

/// The single table in such bytes; its sides are 1 to maxPictureSide. Throws CodingError for anything else,
/// std::bad_alloc.
LookupTable decodeTable(std::span<const std::uint8_t> bytes);

} // namespace tarvo::apps
