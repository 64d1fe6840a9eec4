#include "custom/tables/LookupTexels.h"

#include <algorithm>

namespace tarvo::custom {
namespace {

constexpr float fullScale = 65535.0F;

struct Entry {
    std::uint16_t x;
    std::uint16_t y;
    std::uint16_t weight;
};

/// Place `index` of `count` as a fraction of 65535, cut off. The product stays below 2^32.
std::uint16_t ownPlace(std::uint32_t index, std::uint32_t count) {
    return static_cast<std::uint16_t>(index * 65535U / count);
}

std::uint16_t blended(float level, float own, std::uint16_t given) {
    return static_cast<std::uint16_t>(own + static_cast<float>(given) * level);
}

/// The entry of a cell at an effect level below 1.
Entry blendedEntry(const TableDimensions& dimensions, float level, std::uint32_t column, std::uint32_t row,
                   Entry given) {
    // The products are formed from the left, which decides how they round.
    const float share = (1.0F - level) * fullScale;
    Entry result{ownPlace(column, dimensions.width), ownPlace(row, dimensions.height),
                 blended(level, share / static_cast<float>(dimensions.tableCount), given.weight)};
    if (given.weight > 0) {
        result.x = blended(level, share * static_cast<float>(column) / static_cast<float>(dimensions.width),
                           given.x);
        result.y =
            blended(level, share * static_cast<float>(row) / static_cast<float>(dimensions.height), given.y);
    }
    return result;
}

} // namespace

std::vector<std::uint16_t> lookupTexels(const CustomTables& tables, float effectLevel) {
    const TableDimensions& dimensions = tables.dimensions;
    const std::size_t texelCount = tables.entries.size() / 3;
    std::vector<std::uint16_t> texels(texelCount * wordsPerTexel);
    // As many bytes as there are words, which is half of them; it shows in the last word only.
    std::fill_n(texels.begin(), texels.size() / 2, std::uint16_t{0xFFFF});
    const std::uint16_t* source = tables.entries.data();
    std::uint16_t* target = texels.data();
    for (std::uint32_t table = 0; table < dimensions.tableCount; ++table) {
        for (std::uint32_t row = 0; row < dimensions.height; ++row) {
            for (std::uint32_t column = 0; column < dimensions.width; ++column) {
                Entry entry{source[0], source[1], source[2]};
                if (effectLevel != 1.0F)
                    entry = blendedEntry(dimensions, effectLevel, column, row, entry);
                target[0] = entry.x;
                target[1] = entry.y;
                target[2] = entry.weight;
                source += 3;
                target += wordsPerTexel;
            }
        }
    }
    return texels;
}

} // namespace tarvo::custom
