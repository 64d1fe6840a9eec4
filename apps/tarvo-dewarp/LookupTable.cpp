#include "apps/tarvo-dewarp/LookupTable.h"

#include "apps/tarvo-dewarp/PictureCoding.h"

#include <string>

namespace tarvo::apps {
namespace {

constexpr std::size_t headerBytes = 8;
constexpr std::size_t entryBytes = 6;

// All numbers are little-endian.
void append(std::vector<std::uint8_t>& bytes, std::uint16_t word) {
    bytes.push_back(static_cast<std::uint8_t>(word & 0xFFU));
    bytes.push_back(static_cast<std::uint8_t>(word >> 8U));
}

std::uint16_t wordAt(std::span<const std::uint8_t> bytes, std::size_t index) {
    return static_cast<std::uint16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8U);
}

} // namespace

std::vector<std::uint8_t> encodeTable(const LookupTable& table) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(headerBytes + entryBytes * table.entries.size());
    append(bytes, 1); // table
    append(bytes, 0); // block size, which has no use
    append(bytes, static_cast<std::uint16_t>(table.width));
    append(bytes, static_cast<std::uint16_t>(table.height));
    for (const TableEntry& entry : table.entries) {
        append(bytes, entry.x);
        append(bytes, entry.y);
        append(bytes, entry.weight);
    }
    return bytes;
}

TablesHead readTablesHead(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < headerBytes) {
        throw CodingError("it holds no tables: it is shorter than their 8 bytes of head");
    }
    const TablesHead head{wordAt(bytes, 0), wordAt(bytes, 2), wordAt(bytes, 3)};
    const auto& [count, width, height] = head;
    const std::uint64_t expected = headerBytes + entryBytes * count * width * height;
    if (bytes.size() != expected) {
        throw CodingError("it holds no tables: " + std::to_string(count) + " of " + std::to_string(width) +
                          "x" + std::to_string(height) + " cells take " + std::to_string(expected) +
                          " bytes, but it has " + std::to_string(bytes.size()));
    }
    return head;
}

LookupTable decodeTable(std::span<const std::uint8_t> bytes) {
    const auto [count, width, height] = readTablesHead(bytes);
    if (count != 1) {
        throw CodingError("it holds " + std::to_string(count) +
                          " tables; only a single one can be converted");
    }
    if (width < 1 || height < 1 || width > maxPictureSide || height > maxPictureSide) {
        throw CodingError("its table has " + std::to_string(width) + "x" + std::to_string(height) +
                          " cells; each side must be 1 to " + std::to_string(maxPictureSide));
    }
    LookupTable table{static_cast<int>(width), static_cast<int>(height), {}};
    table.entries.resize(static_cast<std::size_t>(width * height));
    std::size_t word = headerBytes / 2;
    for (TableEntry& entry : table.entries) {
        entry = {wordAt(bytes, word), wordAt(bytes, word + 1), wordAt(bytes, word + 2)};
        word += 3;
    }
    return table;
}

} // namespace tarvo::apps
