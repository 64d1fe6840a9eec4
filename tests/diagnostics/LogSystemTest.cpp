#include "diagnostics/Log.h"
#include "diagnostics/LogLine.h"
#include "platform/LastError.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

// The log over the system's real services, in places where they fail.

namespace tarvo::diagnostics {
namespace {

TEST(LogSystem, moduleLogIsThereAndDropsWhatNobodyWants) {
    EXPECT_FALSE(moduleLog.Begin(3, LogCategory::error, 0, ""));
}

TEST(LogSystem, unwritablePathsAreHarmless) {
    const tests::CTemporaryFolder folder;
    const std::string paths[] = {folder.path(),         folder / "no/such/folder/log.log", "", "/dev/full",
                                 std::string(300, 'x'), folder / "bad\x01name?*.log"};
    for (const std::string& path : paths) {
        Log log(systemLogServices());
        platform::setLastError(77);
        log.SetModule("T", 0);
        log.SetFileOutput(path.c_str(), 2, 1, 3);
        for (int i = 0; i < 3; ++i) {
            TARVO_LOG(log, LogCategory::error, 0, "", "%s", std::string(1500, 'x').c_str());
        }
        EXPECT_EQ(platform::lastError(), 77U) << path;
    }
}

TEST(LogSystem, fileIsOpenToEveryone) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "log.log";
    Log log(systemLogServices());
    log.SetFileOutput(path.c_str(), 2, 1000, 3);
    const auto permissions = std::filesystem::status(path).permissions();
    using std::filesystem::perms;
    EXPECT_NE(permissions & perms::others_write, perms::none);
    EXPECT_NE(permissions & perms::others_read, perms::none);
}

TEST(LogSystem, lineBearsTheLocalTime) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "log.log";
    Log log(systemLogServices());
    log.SetModule("T", 0);
    log.SetFileOutput(path.c_str(), 2, 1000, 3);
    const platform::LocalTime before = platform::localTime();
    TARVO_LOG(log, LogCategory::error, 0, "", "x");
    const std::string text = tests::readText(path);
    int month = 0;
    int day = 0;
    int year = 0;
    int hour = 0;
    ASSERT_EQ(std::sscanf(text.c_str(), "Log File (#0)\n%2d/%2d/%2d %2d:", &month, &day, &year, &hour), 4);
    EXPECT_EQ(year, before.year % 100);
    EXPECT_TRUE(month == before.month || before.day >= 28);
    EXPECT_TRUE(hour == before.hour || hour == (before.hour + 1) % 24);
}

} // namespace
} // namespace tarvo::diagnostics
