#include "diagnostics/Log.h"

#include "diagnostics/LogLine.h"
#include "platform/LastError.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>

namespace tarvo::diagnostics {
namespace {

constexpr const char* tag = "TvVideoTransform";

class LogTest : public testing::Test {
protected:
    const std::string& lastLine() const { return services.debuggerLines.back(); }

    tests::CTemporaryFolder folder;
    FakeLogServices services;
};

TEST_F(LogTest, withoutConfigurationNothingIsLogged) {
    Log log(services);
    EXPECT_EQ(log.Register(tag, FakeLogServices::configurationKey), 1);
    EXPECT_FALSE(log.Begin(2, LogCategory::error, 0, ""));
    EXPECT_FALSE(log.Begin(1, LogCategory::error, 0, ""));
    EXPECT_TRUE(services.debuggerLines.empty());
    EXPECT_TRUE(services.granted.empty());
}

TEST_F(LogTest, beforeRegistrationLinesGoToTheDebuggerWithoutTag) {
    Log log(services);
    ASSERT_TRUE(log.Begin(2, LogCategory::information, 0, ""));
    log.Print("early");
    EXPECT_EQ(lastLine(), ":_:early\n");
    EXPECT_FALSE(log.Begin(3, LogCategory::information, 0, ""));
}

TEST_F(LogTest, linesAreMadeOfTagMarkerIdNameAndMessage) {
    Log log(services);
    log.SetModule(tag, 2);
    TARVO_LOG(log, LogCategory::information, 1, "TARVO Accelerator Filter", "initializing");
    EXPECT_EQ(lastLine(), "TvVideoTransform:_:[1] - TARVO Accelerator Filter - initializing\n");
    TARVO_LOG(log, LogCategory::error, 0, "", "Unexpected media type!");
    EXPECT_EQ(lastLine(), "TvVideoTransform:E:Unexpected media type!\n");
    TARVO_LOG(log, LogCategory::error, -4, nullptr, "%s=%d", "x", 5);
    EXPECT_EQ(lastLine(), "TvVideoTransform:E:x=5\n");
    const char* marks[] = {":::", ":.:", ":E:", ":_:", ":D:"};
    for (int category = 0; category < 5; ++category) {
        TARVO_LOG(log, static_cast<LogCategory>(category), 12, "", "m");
        EXPECT_EQ(lastLine(), std::string(tag) + marks[category] + "[12] - m\n");
    }
}

TEST_F(LogTest, failedCallsAreTraced) {
    Log log(services);
    log.SetModule(tag, 2);
    const auto result = static_cast<std::int32_t>(0x8004FFFFU);
    logFailedCall(log, "CDewarpingTransform::InitDirect3D()", 7, 2652, result);
    EXPECT_EQ(lastLine(),
              "TvVideoTransform:E:CDewarpingTransform::InitDirect3D() [id: 7]  [line: 2652] Erroneous "
              "HRESULT on line 2652 error: IDispatch error #65023\n");
}

TEST_F(LogTest, longMessagesAreCutOffAt4096Characters) {
    Log log(services);
    log.SetModule("T", 2);
    const std::string longText(5000, 'x');
    TARVO_LOG(log, LogCategory::error, 0, "", "%s", longText.c_str());
    EXPECT_EQ(lastLine(), "T:E:" + std::string(4092, 'x') + "\n");
    TARVO_LOG(log, LogCategory::error, 0, longText.c_str(), "gone");
    EXPECT_EQ(lastLine(), "T:E:" + std::string(4092, 'x') + "\n");
    const std::string longTag(5000, 't');
    log.SetModule(longTag.c_str(), 2);
    TARVO_LOG(log, LogCategory::error, 3, "name", "gone");
    EXPECT_EQ(lastLine(), std::string(4096, 't') + "\n");
    TARVO_LOG(log, LogCategory::error, 0, "", "still works");
    EXPECT_EQ(lastLine().size(), 4097U);
}

TEST_F(LogTest, nestedLinesComeFirstAndLeaveTheOuterOneWhole) {
    Log log(services);
    log.SetModule("T", 2);
    const auto innermost = [&log] {
        TARVO_LOG(log, LogCategory::debug, 3, "c", "third");
        return 3;
    };
    const auto inner = [&] {
        TARVO_LOG(log, LogCategory::error, 2, "b", "second %d", innermost());
        return 2;
    };
    TARVO_LOG(log, LogCategory::information, 1, "a", "first %d", inner());
    EXPECT_EQ(services.debuggerLines,
              (std::vector<std::string>{"T:D:[3] - c - third\n", "T:E:[2] - b - second 3\n",
                                        "T:_:[1] - a - first 2\n"}));
    TARVO_LOG(log, LogCategory::information, 0, "", "after");
    EXPECT_EQ(lastLine(), "T:_:after\n");
}

TEST_F(LogTest, filteredLinesEvaluateNothing) {
    Log log(services);
    log.SetModule("T", 1);
    int evaluated = 0;
    TARVO_LOG(log, LogCategory::error, 0, "", "%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
}

TEST_F(LogTest, lastErrorSurvivesALine) {
    services.setDword("DBGFile", 2);
    services.setText("logpath", folder / "no-such-folder/log.log"); // every file call fails
    Log log(services);
    platform::setLastError(1234);
    log.Register(tag, FakeLogServices::configurationKey);
    EXPECT_EQ(platform::lastError(), 1234U);
    const auto disturb = [] {
        platform::setLastError(1);
        return 1;
    };
    TARVO_LOG(log, LogCategory::error, 0, "", "line %d", disturb());
    EXPECT_EQ(platform::lastError(), 1234U);
}

TEST_F(LogTest, lastErrorIsTheLinesOwnWhileItsArgumentsAreBuilt) {
    Log log(services);
    log.SetModule("T", 2);
    platform::setLastError(5);
    const auto nested = [&log] {
        platform::setLastError(6);
        TARVO_LOG(log, LogCategory::error, 0, "", "inner %u", static_cast<unsigned>(platform::lastError()));
        return static_cast<unsigned>(platform::lastError()); // given back as the inner line found it
    };
    TARVO_LOG(log, LogCategory::error, 0, "", "outer %u %u", static_cast<unsigned>(platform::lastError()),
              nested());
    EXPECT_EQ(services.debuggerLines[0], "T:E:inner 6\n");
    // Arguments are built in any order: the first is 5, or 6 after the inner line.
    EXPECT_TRUE(lastLine() == "T:E:outer 5 6\n" || lastLine() == "T:E:outer 6 6\n") << lastLine();
    EXPECT_EQ(platform::lastError(), 5U);
}

TEST_F(LogTest, lineWhoseArgumentThrowsIsDroppedAndHoldsNoLock) {
    Log log(services);
    log.SetModule("T", 2);
    const auto fail = []() -> int { throw std::runtime_error("no"); };
    EXPECT_THROW(TARVO_LOG(log, LogCategory::error, 0, "", "%d", fail()), std::runtime_error);
    EXPECT_TRUE(services.debuggerLines.empty());
    auto other = std::async(std::launch::async, [&log] { TARVO_LOG(log, LogCategory::error, 0, "", "on"); });
    ASSERT_EQ(other.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(lastLine(), "T:E:on\n");
}

TEST_F(LogTest, filteredLineNeverWaitsForOneInTheMaking) {
    Log log(services);
    log.SetModule("T", 1);
    ASSERT_TRUE(log.Begin(1, LogCategory::error, 0, "")); // holds the lock
    auto other = std::async(std::launch::async, [&log] { return log.Begin(2, LogCategory::error, 0, ""); });
    const bool hasEnded = other.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    log.Print("x");
    ASSERT_TRUE(hasEnded);
    EXPECT_FALSE(other.get());
}

TEST_F(LogTest, debuggerAndFileGetTheSameLine) {
    const std::string path = folder / "log.log";
    services.setDword("DBGView", 2);
    services.setDword("DBGFile", 2);
    services.setText("logpath", path);
    Log log(services);
    log.Register("T", FakeLogServices::configurationKey);
    TARVO_LOG(log, LogCategory::error, 0, "", "one");
    TARVO_LOG(log, LogCategory::error, 0, "", "two");
    EXPECT_EQ(services.debuggerLines, (std::vector<std::string>{"T:E:one\n", "T:E:two\n"}));
    EXPECT_EQ(tests::readText(path),
              "Log File (#0)\n11/16/26 00:44:58.123 T:E:one\n11/16/26 00:44:58.123 T:E:two\n");
}

TEST_F(LogTest, registryDefaultsAreTenMegabytesAndTenBackups) {
    const std::string path = folder / "log.log";
    services.setDword("DBGFile", 2);
    services.setText("logpath", path);
    services.mayCopy = [](const std::string&) { return false; };
    Log log(services);
    log.Register("T", FakeLogServices::configurationKey);
    services.position = 10'000'000;
    TARVO_LOG(log, LogCategory::error, 0, "", "at the limit");
    EXPECT_TRUE(services.copies.empty());
    services.position = 10'000'001;
    TARVO_LOG(log, LogCategory::error, 0, "", "past it");
    EXPECT_EQ(services.copies.size(), 10U);
}

TEST_F(LogTest, idsRunTo99999AndThenTheConfigurationIsReadAgain) {
    Log log(services);
    EXPECT_EQ(log.Register(tag, FakeLogServices::configurationKey), 1);
    services.setDword("DBGView", 2);
    for (int id = 2; id <= 99999; ++id) {
        ASSERT_EQ(log.Register(tag, FakeLogServices::configurationKey), id);
    }
    EXPECT_FALSE(log.Begin(2, LogCategory::error, 0, "")); // read once only
    EXPECT_EQ(log.Register(tag, FakeLogServices::configurationKey), 1);
    ASSERT_TRUE(log.Begin(2, LogCategory::error, 0, ""));
    log.Print("now");
    EXPECT_EQ(lastLine(), "TvVideoTransform:E:now\n");
}

TEST_F(LogTest, configurationIsReadKeyByKey) {
    services.setDword("DBGView", 2);
    Log log(services);
    log.Register(tag, FakeLogServices::configurationKey);
    EXPECT_EQ(services.fakeRegistry.opened,
              (std::vector<std::string>{"SOFTWARE", "SOFTWARE\\Tarvo",
                                        "SOFTWARE\\Tarvo\\TARVO Dewarping Transform DMO"}));
    EXPECT_EQ(services.fakeRegistry.closeCount, 3);
    EXPECT_TRUE(services.granted.empty()); // no file threshold, no file
    ASSERT_TRUE(log.Begin(2, LogCategory::error, 0, ""));
    log.Print("x");
}

TEST_F(LogTest, numberOfTheWrongTypeKeepsItsDefault) {
    services.setDword("DBGFile", 2);
    services.setText("DBGView", "2");
    services.setText("logpath", folder / "log.log");
    Log log(services);
    log.Register(tag, FakeLogServices::configurationKey);
    TARVO_LOG(log, LogCategory::error, 0, "", "x");
    EXPECT_TRUE(services.debuggerLines.empty());
}

TEST_F(LogTest, pathOfTheWrongTypeStillBecomesThePath) {
    const std::string path = folder / "log.log";
    services.setDword("DBGFile", 2);
    services.setText("logpath", path, platform::registryType::binary);
    Log log(services);
    log.Register(tag, FakeLogServices::configurationKey);
    EXPECT_EQ(services.granted, std::vector{path});
    EXPECT_EQ(tests::readText(path), "Log File (#0)\n");
}

TEST_F(LogTest, pathThatDoesNotFitLeavesTheDefault) {
    std::vector<std::string> asked;
    services.mayOpen = [&asked](const std::string& path, const std::string&) {
        asked.push_back(path);
        return false;
    };
    services.setDword("DBGFile", 2);
    services.setText("logpath", std::string(260, 'p')); // 261 bytes with its terminator
    Log log(services);
    log.Register(tag, FakeLogServices::configurationKey);
    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked[0], "c:\\log.log");
    asked.clear();
    services.configuration()["logpath"] = {platform::registryType::string,
                                           std::string(260, 'q')}; // no terminator
    Log other(services);
    other.Register(tag, FakeLogServices::configurationKey);
    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked[0], std::string(260, 'q'));
}

TEST_F(LogTest, fileIsThereWithHeaderAndAccessBeforeTheFirstLine) {
    const std::string path = folder / "log.log";
    services.setDword("DBGFile", 2);
    services.setText("logpath", path);
    Log log(services);
    log.Register(tag, FakeLogServices::configurationKey);
    EXPECT_EQ(tests::readText(path), "Log File (#0)\n");
    EXPECT_EQ(services.granted, std::vector{path});
    TARVO_LOG(log, LogCategory::information, 1, "TARVO Accelerator Filter", "initializing");
    EXPECT_EQ(tests::readText(path), "Log File (#0)\n11/16/26 00:44:58.123 TvVideoTransform:_:[1] - TARVO "
                                     "Accelerator Filter - initializing\n");
    EXPECT_TRUE(services.debuggerLines.empty());
}

} // namespace
} // namespace tarvo::diagnostics
