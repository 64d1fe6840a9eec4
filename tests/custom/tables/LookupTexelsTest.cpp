#include "custom/tables/LookupTexels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tarvo::custom {
namespace {

using testing::ElementsAre;

using Texel = std::array<int, 3>;

Texel texelAt(const std::vector<std::uint16_t>& texels, std::size_t index) {
    return {texels.at(4 * index), texels.at(4 * index + 1), texels.at(4 * index + 2)};
}

CustomTables randomTables(TableDimensions dimensions, unsigned seed) {
    std::mt19937 random(seed);
    CustomTables tables{dimensions, {}};
    for (std::uint64_t i = 0; i < dimensions.entryWordCount() / 3; ++i) {
        tables.entries.push_back(static_cast<std::uint16_t>(random()));
        tables.entries.push_back(static_cast<std::uint16_t>(random()));
        // A third of the cells without weight, some with all of it.
        const auto kind = random() % 6;
        tables.entries.push_back(kind < 2    ? std::uint16_t{0}
                                 : kind == 2 ? std::uint16_t{65535}
                                             : static_cast<std::uint16_t>(random()));
    }
    return tables;
}

TEST(LookupTexels, areTheTablesAtFullEffect) {
    const CustomTables tables = randomTables({3, 5, 4}, 1);
    const std::vector<std::uint16_t> texels = lookupTexels(tables, 1.0F);
    ASSERT_EQ(texels.size(), 3U * 5U * 4U * 4U);
    for (std::size_t i = 0; i < 60; ++i) {
        EXPECT_EQ(texelAt(texels, i),
                  (Texel{tables.entries[3 * i], tables.entries[3 * i + 1], tables.entries[3 * i + 2]}));
    }
}

TEST(LookupTexels, areTheIdentityWithoutEffect) {
    // Whatever the tables hold: each cell looks at its own place, 1/4 and 3/4 of the way in the columns
    // named, and all tables together weigh 1.
    for (const unsigned seed : {2U, 3U, 4U}) {
        const std::vector<std::uint16_t> texels = lookupTexels(randomTables({5, 4, 2}, seed), 0.0F);
        for (std::size_t table = 0; table < 5; ++table) {
            EXPECT_EQ(texelAt(texels, 8 * table), (Texel{0, 0, 13107}));
            EXPECT_EQ(texelAt(texels, 8 * table + 1), (Texel{16383, 0, 13107}));
            EXPECT_EQ(texelAt(texels, 8 * table + 3), (Texel{49151, 0, 13107}));
            EXPECT_EQ(texelAt(texels, 8 * table + 4), (Texel{0, 32767, 13107}));
            EXPECT_EQ(texelAt(texels, 8 * table + 7), (Texel{49151, 32767, 13107}));
        }
    }
}

TEST(LookupTexels, areHalfwayAtHalfEffect) {
    // Half of everything is exact in single precision. Two tables of 2 x 2; the second one's last cell has no
    // weight.
    const CustomTables tables{{2, 2, 2}, {100,  200, 300, 101, 201, 301, 102, 202, 302, 103, 203, 303,
                                          1000, 10,  2,   1,   1,   1,   0,   0,   1,   999, 999, 0}};
    const std::vector<std::uint16_t> texels = lookupTexels(tables, 0.5F);
    EXPECT_EQ(texelAt(texels, 0), (Texel{50, 100, 16383 + 150})); // 16383.75 + 150
    EXPECT_EQ(texelAt(texels, 1), (Texel{16434, 100, 16534}));    // 16383.75 + 50.5; 16383.75 + 150.5
    EXPECT_EQ(texelAt(texels, 2), (Texel{51, 16484, 16534}));     // 16383.75 + 101; 16383.75 + 151
    EXPECT_EQ(texelAt(texels, 3), (Texel{16435, 16485, 16535}));
    EXPECT_EQ(texelAt(texels, 4), (Texel{500, 5, 16384}));
    // Pinned to its own place, 65535 / 2 cut off, where it has the identity's share.
    EXPECT_EQ(texelAt(texels, 7), (Texel{32767, 32767, 16383}));
}

TEST(LookupTexels, followTheBlendAtAnyLevel) {
    // Real arithmetic with the level as it is stored. In single precision at most six operations round, each
    // by 2^-24 of no more than 65535.
    constexpr double rounding = 6.0 * 65535.0 / 16777216.0;
    for (const float level : {0.3F, 0.001F, 0.77F, 0.999999F}) {
        const double e = static_cast<double>(level);
        const TableDimensions dimensions{3, 37, 23};
        const CustomTables tables = randomTables(dimensions, 5);
        const std::vector<std::uint16_t> texels = lookupTexels(tables, level);
        const auto expectCutOff = [&](int texel, double exact) {
            EXPECT_GE(texel, std::floor(exact - rounding)) << exact;
            EXPECT_LE(texel, std::floor(exact + rounding)) << exact;
        };
        for (std::size_t i = 0; i < tables.entries.size() / 3; ++i) {
            SCOPED_TRACE(i);
            const auto column = static_cast<double>(i % 37);
            const auto row = static_cast<double>(i / 37 % 23);
            const std::uint16_t* entry = tables.entries.data() + 3 * i;
            const Texel texel = texelAt(texels, i);
            expectCutOff(texel[2], (1.0 - e) * 65535.0 / 3.0 + entry[2] * e);
            if (entry[2] > 0) {
                expectCutOff(texel[0], (1.0 - e) * 65535.0 * column / 37.0 + entry[0] * e);
                expectCutOff(texel[1], (1.0 - e) * 65535.0 * row / 23.0 + entry[1] * e);
            } else {
                EXPECT_EQ(texel[0], static_cast<int>(i % 37 * 65535 / 37));
                EXPECT_EQ(texel[1], static_cast<int>(i / 37 % 23 * 65535 / 23));
            }
        }
    }
    // One by hand, at 0.3: 0.7 x 65535 + 9000 = 54874.5, and places 3000.0 and 6000.0 of a grid of one cell.
    EXPECT_EQ(texelAt(lookupTexels({{1, 1, 1}, {10000, 20000, 30000}}, 0.3F), 0), (Texel{3000, 6000, 54874}));
}

TEST(LookupTexels, pinACellOfTheWidestGridWithoutOverflow) {
    CustomTables tables{{1, 65535, 1}, {}};
    tables.entries.resize(3 * 65535);
    const std::vector<std::uint16_t> texels = lookupTexels(tables, 0.0F);
    for (const std::size_t column : {0U, 1U, 32768U, 65534U})
        EXPECT_EQ(texelAt(texels, column), (Texel{static_cast<int>(column), 0, 65535}));
}

TEST(LookupTexels, haveASetAlphaInTheirFirstHalf) {
    const std::vector<std::uint16_t> texels = lookupTexels(randomTables({1, 2, 2}, 6), 1.0F);
    EXPECT_THAT((std::vector<int>{texels[3], texels[7], texels[11], texels[15]}),
                ElementsAre(65535, 65535, 0, 0));
}

} // namespace
} // namespace tarvo::custom
