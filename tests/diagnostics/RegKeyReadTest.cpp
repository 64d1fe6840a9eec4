#include "diagnostics/RegKeyRead.h"

#include "diagnostics/RegKey.h"
#include "tests/diagnostics/FakeLogServices.h"

#include <gtest/gtest.h>

namespace tarvo::diagnostics {
namespace {

using platform::registryError::invalidDatatype;
using platform::registryError::success;
using std::chrono::milliseconds;

class RegKeyReadTest : public testing::Test {
protected:
    RegKeyReadTest() {
        registry.keys["Key"]["Number"] = {platform::registryType::dword, std::string("\x2A\0\0\0", 4)};
    }

    RegKeyRead openKey() { return {RegKeyRead(registry, platform::localMachine), "Key", sleep}; }

    FakeRegistry registry;
    std::vector<milliseconds> sleeps;
    Sleeper sleep = [this](milliseconds duration) { sleeps.push_back(duration); };
};

TEST_F(RegKeyReadTest, rootIsWrappedWithoutOpening) {
    {
        const RegKeyRead root(registry, platform::localMachine);
        EXPECT_TRUE(root.isOpen());
    }
    EXPECT_TRUE(registry.opened.empty());
    EXPECT_EQ(registry.closeCount, 0);
}

TEST_F(RegKeyReadTest, everyOpenedKeyIsClosedOnce) {
    {
        const RegKeyRead key = openKey();
        const RegKeyRead again(
            key); // NOLINT(performance-unnecessary-copy-initialization): opening it again is tested
        EXPECT_TRUE(key.isOpen());
        EXPECT_TRUE(again.isOpen());
        const RegKey derived(RegKeyRead(registry, platform::localMachine), "Key", sleep);
        EXPECT_TRUE(derived.isOpen());
    }
    EXPECT_EQ(registry.openCount, 3);
    EXPECT_EQ(registry.closeCount, 3);
}

TEST_F(RegKeyReadTest, absentKeyIsAskedForOnceAndStaysEmpty) {
    const RegKeyRead key(RegKeyRead(registry, platform::localMachine), "Nothing", sleep);
    EXPECT_FALSE(key.isOpen());
    EXPECT_EQ(registry.opened.size(), 1U);
    EXPECT_EQ(sleeps, (std::vector{milliseconds(0)})); // it waits after every attempt, also the last
}

TEST_F(RegKeyReadTest, passingErrorsAreTriedFiveTimesWithGrowingWaits) {
    for (const auto error :
         {platform::registryError::invalidHandle, platform::registryError::insufficientBuffer}) {
        registry.opened.clear();
        sleeps.clear();
        registry.openResult = [error](const std::string&) { return error; };
        const RegKeyRead key(RegKeyRead(registry, platform::localMachine), "Key", sleep);
        EXPECT_FALSE(key.isOpen());
        EXPECT_EQ(registry.opened.size(), 5U);
        EXPECT_EQ(sleeps, (std::vector{milliseconds(0), milliseconds(10), milliseconds(20), milliseconds(30),
                                       milliseconds(40)}));
    }
}

TEST_F(RegKeyReadTest, retryThatSucceedsEndsTheWaiting) {
    int failures = 2;
    registry.openResult = [&failures](const std::string&) {
        return failures-- > 0 ? platform::registryError::invalidHandle : success;
    };
    const RegKeyRead key = openKey();
    EXPECT_TRUE(key.isOpen());
    EXPECT_EQ(sleeps, (std::vector{milliseconds(0), milliseconds(10), milliseconds(20)}));
}

TEST_F(RegKeyReadTest, numberMustBeOfTheNumbersType) {
    registry.keys["Key"]["Text"] = {platform::registryType::string, std::string("abc\0", 4)};
    registry.keys["Key"]["Long"] = {platform::registryType::dword, std::string(8, 'x')};
    const RegKeyRead key = openKey();
    std::uint32_t value = 7;
    EXPECT_EQ(key.readDword("Text", value), invalidDatatype);
    EXPECT_EQ(value, 7U);
    EXPECT_EQ(key.readDword("Missing", value), platform::registryError::fileNotFound);
    EXPECT_EQ(key.readDword("Long", value), platform::registryError::moreData);
    EXPECT_EQ(value, 7U);
    EXPECT_EQ(key.readDword("Number", value), success);
    EXPECT_EQ(value, 42U);
}

TEST_F(RegKeyReadTest, textOfAnotherTypeIsReportedThoughItsBytesAreThere) {
    registry.keys["Key"]["Text"] = {platform::registryType::string, std::string("abc\0", 4)};
    registry.keys["Key"]["Path"] = {platform::registryType::expandString, std::string("%a%\0", 4)};
    registry.keys["Key"]["Bytes"] = {platform::registryType::binary, "xy"};
    const RegKeyRead key = openKey();
    char buffer[16] = "0123456789";
    EXPECT_EQ(key.readString("Text", buffer, sizeof buffer), success);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(key.readString("Path", buffer, sizeof buffer), success);
    EXPECT_STREQ(buffer, "%a%"); // not expanded
    EXPECT_EQ(key.readString("Bytes", buffer, sizeof buffer), invalidDatatype);
    EXPECT_STREQ(buffer, "xy%");
}

} // namespace
} // namespace tarvo::diagnostics
