#include "tests/render/conformance/Pairwise.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace tarvo::tests {
namespace {

constexpr int counts[] = {3, 4, 2, 2, 4, 3, 2};

TEST(Pairwise, anyTwoLevelsMeet) {
    const std::vector<Levels> rows = pairwise(counts);
    std::set<std::tuple<std::size_t, int, std::size_t, int>> met;
    for (const Levels& row : rows) {
        ASSERT_EQ(row.size(), std::size(counts));
        for (std::size_t a = 0; a < row.size(); ++a) {
            ASSERT_GE(row[a], 0);
            ASSERT_LT(row[a], counts[a]);
            for (std::size_t b = a + 1; b < row.size(); ++b) {
                met.emplace(a, row[a], b, row[b]);
            }
        }
    }
    // The sum of the products of any two counts: ((Σn)² − Σn²) / 2 with Σn = 20 and Σn² = 62.
    EXPECT_EQ(met.size(), (20U * 20U - 62U) / 2U);
    // The two largest factors alone need 4 · 4 rows.
    EXPECT_GE(rows.size(), 16U);
    EXPECT_LE(rows.size(), 24U);
}

TEST(Pairwise, alwaysGivesTheSameRows) {
    EXPECT_EQ(pairwise(counts), pairwise(counts));
}

TEST(Pairwise, ofOneFactorAreItsLevels) {
    constexpr int single[] = {3};
    EXPECT_EQ(pairwise(single), (std::vector<Levels>{{0}, {1}, {2}}));
}

TEST(WholeProduct, hasEveryCombinationOnce) {
    constexpr int small[] = {2, 1, 3};
    EXPECT_EQ(wholeProduct(small),
              (std::vector<Levels>{{0, 0, 0}, {0, 0, 1}, {0, 0, 2}, {1, 0, 0}, {1, 0, 1}, {1, 0, 2}}));
    EXPECT_EQ(wholeProduct({}), (std::vector<Levels>{{}}));
}

} // namespace
} // namespace tarvo::tests
