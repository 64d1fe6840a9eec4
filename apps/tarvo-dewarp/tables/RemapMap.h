#pragma once

#include "apps/tarvo-dewarp/LookupTable.h"
#include "apps/tarvo-dewarp/Values.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tarvo::apps {

/// One coordinate of the pixel to take, for every pixel of an output: what FFmpeg's filter `remap` reads and
/// OpenCV's remap() after conversion. Pixels count from 0; what is not in the input stays black.
struct RemapMap {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> pixels;
};

/// What is written for a place without picture: no input is that large.
inline constexpr std::uint16_t noPixel = 65535;

/// The map in a binary PGM file of 16-bit samples, the only kind that is taken: largest sample 65535, nothing
/// behind the last sample, at most maxTableCells pixels. Throws CodingError, std::bad_alloc.
RemapMap decodeMap(std::span<const std::uint8_t> bytes);

/// The bytes of such a file. Throws std::bad_alloc.
std::vector<std::uint8_t> encodeMap(const RemapMap& map);

/// The table whose cells look at the centres of the pixels that the maps, of one size, name; what is outside
/// the input has no weight. Cells and pixels of the maps correspond one to one. Throws std::bad_alloc.
LookupTable tableOfMaps(const RemapMap& x, const RemapMap& y, PictureSize input);

struct RemapMaps {
    RemapMap x;
    RemapMap y;
};

/// The maps that name the pixels which the table's cells look at. Throws CodingError for a table with weights
/// between none and all, which maps cannot say; std::bad_alloc.
RemapMaps mapsOfTable(const LookupTable& table, PictureSize input);

} // namespace tarvo::apps
