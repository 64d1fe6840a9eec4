#include "tests/house/RoomTable.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tarvo::house {
namespace {

constexpr std::string_view tableText = R"(# a remark
low       0  standard-library-only
lowToo    0  system-checks-allowed

middle    1
middleToo 1
high      2
beside    3  only:low
besideToo 3  only:low only:high
host      4  anything
host/odd  4  anything system-checks-allowed
)";

bool allows(std::string_view from, std::string_view to) {
    const CRoomTable table(tableText);
    return mayInclude(*table.roomOf(from), *table.roomOf(to));
}

TEST(RoomTable, readsNamesTiersAndRules) {
    const CRoomTable table(tableText);
    ASSERT_EQ(table.rooms().size(), 9U);
    EXPECT_EQ(table.roomOf("high")->tier, 2);
    EXPECT_TRUE(table.roomOf("low")->standardLibraryOnly);
    EXPECT_TRUE(table.roomOf("lowToo")->systemChecksAllowed);
    EXPECT_FALSE(table.roomOf("middle")->systemChecksAllowed);
    EXPECT_EQ(table.roomOf("besideToo")->only, (std::vector<std::string>{"low", "high"}));
    EXPECT_TRUE(table.roomOf("host")->anything);
}

TEST(RoomTable, findsTheRoomWithTheLongestName) {
    const CRoomTable table(tableText);
    EXPECT_EQ(table.roomOf("host/tool/Main.cpp")->name, "host");
    EXPECT_EQ(table.roomOf("host/odd/Main.cpp")->name, "host/odd");
    EXPECT_EQ(table.roomOf("host/oddity/Main.cpp")->name, "host");
    EXPECT_EQ(table.roomOf("lowToo/A.h")->name, "lowToo");
    EXPECT_EQ(table.roomOf("hostel/Main.cpp"), nullptr);
    EXPECT_EQ(table.roomOf("A.h"), nullptr);
}

TEST(RoomTable, allowsTheOwnRoomAndLowerTiers) {
    EXPECT_TRUE(allows("middle", "middle"));
    EXPECT_TRUE(allows("high", "middle"));
    EXPECT_TRUE(allows("high", "low"));
    EXPECT_FALSE(allows("middle", "middleToo"));
    EXPECT_FALSE(allows("middle", "high"));
    EXPECT_FALSE(allows("high", "host"));
}

TEST(RoomTable, appliesTheRules) {
    EXPECT_TRUE(allows("beside", "low"));
    EXPECT_FALSE(allows("beside", "lowToo"));
    EXPECT_FALSE(allows("beside", "middle"));
    EXPECT_TRUE(allows("besideToo", "low"));
    EXPECT_TRUE(allows("besideToo", "high"));
    EXPECT_FALSE(allows("besideToo", "middle"));
    EXPECT_TRUE(allows("low", "low"));
    EXPECT_FALSE(allows("low", "lowToo"));
    EXPECT_TRUE(allows("host", "high"));
    EXPECT_TRUE(allows("host", "host/odd"));
}

TEST(RoomTable, refusesWhatItDoesNotUnderstand) {
    EXPECT_THROW(CRoomTable("room\n"), std::invalid_argument);
    EXPECT_THROW(CRoomTable("room high\n"), std::invalid_argument);
    EXPECT_THROW(CRoomTable("room -1\n"), std::invalid_argument);
    EXPECT_THROW(CRoomTable("room 1 onyl:low\n"), std::invalid_argument);
    EXPECT_THROW(CRoomTable("room 1 only:\n"), std::invalid_argument);
    EXPECT_THROW(CRoomTable("room 1\nroom 2\n"), std::invalid_argument);
    EXPECT_THROW(CRoomTable("# nothing\n"), std::invalid_argument);
}

} // namespace
} // namespace tarvo::house
