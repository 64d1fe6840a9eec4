#include "bench/measure/WorkFilter.h"

#include <gtest/gtest.h>

namespace tarvo::bench {
namespace {

TEST(WorkFilter, WantsEverythingWithoutParts) {
    EXPECT_TRUE(CWorkFilter({}).wants("quad"));
    EXPECT_TRUE(CWorkFilter({}).wants(""));
}

TEST(WorkFilter, WantsRowsThatContainAnyOfTheParts) {
    const CWorkFilter filter({"rest", "quad"});
    EXPECT_TRUE(filter.wants("rest-1024x768"));
    EXPECT_TRUE(filter.wants("the-quad"));
    EXPECT_FALSE(filter.wants("moving-1024x768"));
    EXPECT_FALSE(filter.wants("res"));
}

} // namespace
} // namespace tarvo::bench
