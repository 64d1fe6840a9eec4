#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvo::custom {

/// How many lookup tables there are and how large the grid of each is. The fields are as wide as those of the
/// host's data, so that no product of the three leaves 64 bits.
struct TableDimensions {
    std::uint16_t tableCount = 1;
    std::uint16_t width = 0;  ///< columns
    std::uint16_t height = 0; ///< rows

    /// 16-bit words that the entries of all tables take.
    constexpr std::uint64_t entryWordCount() const { return std::uint64_t{3} * tableCount * width * height; }

    friend constexpr bool operator==(const TableDimensions&, const TableDimensions&) = default;
};

/// The tables as the host gave them: one after the other, each row by row, three words an entry - x and y of
/// the place to look at and the weight of what is seen there. All are fractions of 65535; 0 is the left or
/// upper edge of the input, 65535 its right or lower edge.
struct CustomTables {
    TableDimensions dimensions;
    std::vector<std::uint16_t> entries; ///< dimensions.entryWordCount() words, or none

    bool isEmpty() const { return entries.empty(); }
};

/// As many tables as the programs read; further ones are stored but not seen.
inline constexpr int tablesRead = 8;

} // namespace tarvo::custom
