#include "bench/measure/Formatted.h"

#include <gtest/gtest.h>

namespace tarvo::bench {
namespace {

TEST(Formatted, PutsValuesIntoThePattern) {
    EXPECT_EQ(formatted("| %s | %.2f | %d |\n", "row", 1.005 + 0.001, -3), "| row | 1.01 | -3 |\n");
    EXPECT_EQ(formatted("%s", ""), "");
}

TEST(Formatted, TakesTextsOfAnyLength) {
    const std::string text(5000, 'x');
    EXPECT_EQ(formatted("<%s>", text.c_str()), "<" + text + ">");
}

} // namespace
} // namespace tarvo::bench
