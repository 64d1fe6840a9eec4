#include "diagnostics/Log.h"
#include "diagnostics/LogLine.h"
#include "platform/LastError.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>

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

TEST(LogSystem, lineBearsTheLocalTime) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "log.log";
    // To the minute, and once more should that change in between.
    for (int attempt = 0; attempt < 3; ++attempt) {
        Log log(systemLogServices());
        log.SetModule("T", 0);
        log.SetFileOutput(path.c_str(), 2, 1000, 3);
        const platform::LocalTime before = platform::localTime();
        TARVO_LOG(log, LogCategory::error, 0, "", "attempt %d", attempt);
        const platform::LocalTime after = platform::localTime();
        if (before.minute != after.minute) {
            continue;
        }
        char expected[32];
        std::snprintf(expected, sizeof expected, "%02d/%02d/%02d %02d:%02d:", before.month, before.day,
                      before.year % 100, before.hour, before.minute);
        const std::string text = tests::readText(path);
        const auto line = text.rfind('\n', text.size() - 2) + 1;
        EXPECT_EQ(text.substr(line, 15), expected);
        const int second = std::stoi(text.substr(line + 15, 2));
        EXPECT_TRUE(second >= before.second && second <= after.second);
        EXPECT_EQ(text.substr(line + 17, 1), ".");
        return;
    }
    FAIL() << "no three lines within a minute each";
}

} // namespace
} // namespace tarvo::diagnostics
