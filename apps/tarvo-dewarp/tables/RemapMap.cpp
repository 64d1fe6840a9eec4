#include "apps/tarvo-dewarp/tables/RemapMap.h"

#include "apps/tarvo-dewarp/PictureCoding.h"

#include <algorithm>
#include <string>

namespace tarvo::apps {
namespace {

constexpr std::uint32_t fullScale = 65535;

constexpr bool isSpace(std::uint8_t byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

constexpr bool isDigit(std::uint8_t byte) {
    return byte >= '0' && byte <= '9';
}

/// The head of a PGM file: numbers parted by white space and comments.
class CMapHead {
public:
    explicit CMapHead(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    std::uint32_t number(const char* meaning) {
        skipSpaceAndComments();
        if (m_at == m_bytes.size() || !isDigit(m_bytes[m_at]))
            throw CodingError(std::string("it is not a 16-bit PGM picture: its head holds no ") + meaning);
        std::uint32_t value = 0;
        for (; m_at < m_bytes.size() && isDigit(m_bytes[m_at]); ++m_at) {
            // Stopping to count well above every limit keeps the number from overflowing.
            value = std::min<std::uint32_t>(value * 10 + (m_bytes[m_at] - '0'), 1000000);
        }
        return value;
    }

    std::span<const std::uint8_t> samples() {
        if (m_at == m_bytes.size() || !isSpace(m_bytes[m_at]))
            throw CodingError("it is not a 16-bit PGM picture: its head does not end");
        return m_bytes.subspan(m_at + 1);
    }

private:
    void skipSpaceAndComments() {
        bool isComment = false;
        for (; m_at < m_bytes.size(); ++m_at) {
            const std::uint8_t byte = m_bytes[m_at];
            if (isComment) {
                isComment = byte != '\n' && byte != '\r';
            } else if (byte == '#') {
                isComment = true;
            } else if (!isSpace(byte)) {
                return;
            }
        }
    }

    std::span<const std::uint8_t> m_bytes;
    std::size_t m_at = 2; // behind the two letters of the kind
};

/// The centre of pixel `index` of `count`, rounded; both are at most maxPictureSide.
std::uint16_t centreOf(std::uint32_t index, std::uint32_t count) {
    return static_cast<std::uint16_t>(((2 * std::uint64_t{index} + 1) * fullScale + count) / (2 * count));
}

/// The pixel of `count` that a fraction of 65535 lies in.
std::uint16_t pixelAt(std::uint16_t fraction, std::uint32_t count) {
    return static_cast<std::uint16_t>(std::min(fraction * count / fullScale, count - 1));
}

} // namespace

RemapMap decodeMap(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 3 || bytes[0] != 'P' || bytes[1] != '5' || (!isSpace(bytes[2]) && bytes[2] != '#'))
        throw CodingError("it is not a binary PGM picture");
    CMapHead head(bytes);
    const std::uint32_t width = head.number("width");
    const std::uint32_t height = head.number("height");
    const std::uint32_t largest = head.number("largest sample");
    const std::span<const std::uint8_t> samples = head.samples();
    if (width < 1 || height < 1 || width > maxPictureSide || height > maxPictureSide) {
        throw CodingError("its sides are not 1 to " + std::to_string(maxPictureSide));
    }
    if (largest != fullScale) {
        throw CodingError("its samples are not of 16 bits: their largest is " + std::to_string(largest) +
                          " instead of 65535");
    }
    const std::uint64_t count = std::uint64_t{width} * height;
    if (count > maxTableCells)
        throw CodingError("it has more than " + std::to_string(maxTableCells) + " pixels");
    if (samples.size() < 2 * count)
        throw CodingError("its end is missing");
    if (samples.size() > 2 * count)
        throw CodingError("it goes on behind its last sample");
    RemapMap map{static_cast<int>(width), static_cast<int>(height), {}};
    map.pixels.resize(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < map.pixels.size(); ++i) {
        // The upper byte comes first.
        map.pixels[i] = static_cast<std::uint16_t>(samples[2 * i] << 8U | samples[2 * i + 1]);
    }
    return map;
}

std::vector<std::uint8_t> encodeMap(const RemapMap& map) {
    const std::string head =
        "P5\n" + std::to_string(map.width) + " " + std::to_string(map.height) + "\n65535\n";
    std::vector<std::uint8_t> bytes;
    bytes.reserve(head.size() + 2 * map.pixels.size());
    bytes.assign(head.begin(), head.end());
    for (const std::uint16_t pixel : map.pixels) {
        bytes.push_back(static_cast<std::uint8_t>(pixel >> 8U));
        bytes.push_back(static_cast<std::uint8_t>(pixel & 0xFFU));
    }
    return bytes;
}

LookupTable tableOfMaps(const RemapMap& x, const RemapMap& y, PictureSize input) {
    LookupTable table{x.width, x.height, {}};
    table.entries.resize(x.pixels.size());
    for (std::size_t i = 0; i < table.entries.size(); ++i) {
        const std::uint32_t column = x.pixels[i];
        const std::uint32_t row = y.pixels[i];
        const bool isInside = column < input.width && row < input.height;
        table.entries[i] = {centreOf(std::min(column, input.width - 1), input.width),
                            centreOf(std::min(row, input.height - 1), input.height),
                            isInside ? fullWeight : std::uint16_t{0}};
    }
    return table;
}

RemapMaps mapsOfTable(const LookupTable& table, PictureSize input) {
    RemapMaps maps{{table.width, table.height, {}}, {table.width, table.height, {}}};
    maps.x.pixels.reserve(table.entries.size());
    maps.y.pixels.reserve(table.entries.size());
    for (const TableEntry& entry : table.entries) {
        if (entry.weight != 0 && entry.weight != fullWeight) {
            throw CodingError("one of its cells has a weight of " + std::to_string(entry.weight) +
                              "; maps know only all (65535) or none (0)");
        }
        const bool isSeen = entry.weight == fullWeight;
        maps.x.pixels.push_back(isSeen ? pixelAt(entry.x, input.width) : noPixel);
        maps.y.pixels.push_back(isSeen ? pixelAt(entry.y, input.height) : noPixel);
    }
    return maps;
}

} // namespace tarvo::apps
