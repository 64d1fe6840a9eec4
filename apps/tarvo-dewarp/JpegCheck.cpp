#include "apps/tarvo-dewarp/JpegCheck.h"

#include "apps/tarvo-dewarp/PictureCoding.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace tarvo::apps {
namespace {

constexpr std::uint8_t endOfImage = 0xD9;
constexpr std::uint8_t codeTables = 0xC4;

/// True for the markers that stand alone; all others but the end begin a segment with a length.
constexpr bool hasNoContent(std::uint8_t marker) {
    const bool isEscapedData = marker == 0x00;
    const bool isRestart = marker >= 0xD0 && marker <= 0xD7;
    return isEscapedData || marker == 0x01 || isRestart;
}

/// Code tables in a row: a byte that names the table, for each of 16 code lengths how many codes have it, and
/// a byte for each code.
void checkCodeTables(std::span<const std::uint8_t> tables) {
    constexpr std::size_t headLength = 17;
    while (!tables.empty()) {
        const auto head = tables.first(std::min(headLength, tables.size()));
        const std::size_t codes = std::accumulate(head.begin() + 1, head.end(), std::size_t{0});
        if (codes > 256 || headLength + codes > tables.size()) {
            throw CodingError("it cannot be read as a picture: it has a bad code table");
        }
        tables = tables.subspan(headLength + codes);
    }
}

} // namespace

bool isJpeg(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF;
}

void checkJpeg(std::span<const std::uint8_t> bytes) {
    std::size_t at = 2;
    while (at + 1 < bytes.size()) {
        const std::uint8_t marker = bytes[at + 1];
        if (bytes[at] != 0xFF || marker == 0xFF) {
            ++at; // coded data, or a fill byte
            continue;
        }
        if (marker == endOfImage) {
            return;
        }
        at += 2;
        if (hasNoContent(marker)) {
            continue;
        }
        // The content may hold a small picture with an end of its own, so it is stepped over as a whole.
        const auto rest = bytes.subspan(at);
        const std::size_t length = rest.size() < 2 ? 0 : rest[0] * std::size_t{256} + rest[1];
        if (length < 2 || length > rest.size()) {
            break;
        }
        if (marker == codeTables) {
            checkCodeTables(rest.subspan(2, length - 2));
        }
        at += length;
    }
    throw CodingError("it cannot be read as a picture: its end is missing");
}

} // namespace tarvo::apps
