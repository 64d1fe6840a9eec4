#include "diagnostics/LogFile.h"

#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace tarvo::diagnostics {
namespace {

using tests::readText;

/// Every line bears 22 characters of date and time in front.
constexpr const char* stamp = "11/16/26 00:44:58.123 ";

class LogFileTest : public testing::Test {
protected:
    /// One line that alone fills the file past 1,000 bytes, whatever a line's end is on this system.
    static std::string longLine(char fill) { return std::string(1000, fill); }
    std::string header(int number) const { return "Log File (#" + std::to_string(number) + ")\n"; }
    std::string backup(const std::string& number) const { return path + number + ".log"; }
    bool exists(const std::string& name) const { return std::filesystem::exists(name); }

    tests::CTemporaryFolder folder;
    const std::string path = folder / "log.log";
    FakeLogServices services;
};

TEST_F(LogFileTest, fileThatIsThereIsKeptAndAppendedTo) {
    std::ofstream(path) << "Log File (#4)\nold\n";
    CLogFile file(services);
    file.use(path);
    EXPECT_EQ(services.granted, std::vector{path});
    file.writeLine("new");
    EXPECT_EQ(readText(path), "Log File (#4)\nold\n" + std::string(stamp) + "new\n");
}

TEST_F(LogFileTest, rotationReusesTheNumberedBackupsInTurn) {
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    EXPECT_EQ(readText(path), header(0));
    const char* numbers[] = {" 0", " 1", " 2"};
    for (int round = 0; round < 7; ++round) {
        const auto fill = static_cast<char>('a' + round);
        file.writeLine("first");
        EXPECT_EQ(services.copies.size(), static_cast<std::size_t>(round)); // still below the limit
        file.writeLine(longLine(fill).c_str());
        const std::string copy = backup(numbers[round % 3]);
        EXPECT_EQ(services.copies.back(), copy);
        EXPECT_EQ(readText(copy), header(round % 3) + stamp + "first\n" + stamp + longLine(fill) + "\n");
        EXPECT_EQ(readText(path), header((round + 1) % 3));
    }
    EXPECT_EQ(services.granted,
              (std::vector{path, backup(" 0"), path, backup(" 1"), path, backup(" 2"), path, backup(" 0"),
                           path, backup(" 1"), path, backup(" 2"), path, backup(" 0"), path}));
}

TEST_F(LogFileTest, fileJustAtItsLimitIsNotRotated) {
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    const auto headerSize = std::filesystem::file_size(path);
    const std::size_t lineEnd = headerSize - header(0).size() + 1; // two bytes where a line ends so
    file.writeLine(std::string(1000 - headerSize - 22 - lineEnd, 'x').c_str());
    EXPECT_EQ(std::filesystem::file_size(path), 1000U);
    EXPECT_TRUE(services.copies.empty());
    file.writeLine("");
    EXPECT_EQ(services.copies.size(), 1U);
}

TEST_F(LogFileTest, headerSaysWhichBackupTheFileBecomes) {
    std::ofstream(path) << header(1);
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_TRUE(exists(backup(" 1")));
    EXPECT_EQ(readText(path), header(2));
}

TEST_F(LogFileTest, numbersOfTwoDigitsNeedNoBlank) {
    std::ofstream(path) << header(11);
    CLogFile file(services);
    file.setLimits(1, 20);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_TRUE(exists(backup("11")));
    EXPECT_EQ(readText(path), header(12));
}

TEST_F(LogFileTest, numberBeyondTheCountGoesBackToZero) {
    std::ofstream(path) << header(77);
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_TRUE(exists(backup("77")));
    EXPECT_EQ(readText(path), header(0));
}

TEST_F(LogFileTest, fileWithoutHeaderKeepsTheNumber) {
    std::ofstream(path) << "something else\n";
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_TRUE(exists(backup(" 0")));
    EXPECT_EQ(readText(path), header(1));
}

TEST_F(LogFileTest, withoutBackupsTheFileIsEmptied) {
    for (const int count : {0, -5}) {
        CLogFile file(services);
        file.setLimits(1, count);
        file.use(path);
        file.writeLine(longLine('x').c_str());
        EXPECT_EQ(readText(path), header(0));
        EXPECT_TRUE(services.copies.empty());
    }
}

TEST_F(LogFileTest, failedBackupsAreReportedAndTheNextNumberTried) {
    services.mayCopy = [this](const std::string& name) { return name == backup(" 2"); };
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_EQ(services.debuggerLines, (std::vector{"Failed to backup log to file: " + backup(" 0") + "\n",
                                                   "Failed to backup log to file: " + backup(" 1") + "\n"}));
    EXPECT_TRUE(exists(backup(" 2")));
    EXPECT_EQ(readText(path), header(0));
}

TEST_F(LogFileTest, whenNoBackupWorksTheFileStartsAnewAllTheSame) {
    services.mayCopy = [](const std::string&) { return false; };
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_EQ(services.copies.size(), 3U);
    EXPECT_EQ(services.debuggerLines.size(), 3U);
    EXPECT_EQ(readText(path), header(0));
    file.writeLine("goes on");
    EXPECT_EQ(readText(path), header(0) + stamp + "goes on\n");
}

TEST_F(LogFileTest, unconfiguredLimitsAreTenMegabytesAndOneBackup) {
    services.mayCopy = [](const std::string&) { return false; };
    CLogFile file(services);
    file.use(path);
    services.position = 10'000'000;
    file.writeLine("at the limit");
    EXPECT_TRUE(services.copies.empty());
    services.position = 10'000'001;
    file.writeLine("past it");
    EXPECT_EQ(services.copies.size(), 1U);
}

TEST_F(LogFileTest, manyFailingBackupsAreGivenUp) {
    services.mayCopy = [](const std::string&) { return false; };
    CLogFile file(services);
    file.setLimits(1, 0x7FFFFFFF);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_EQ(services.copies.size(), 100U);
    file.writeLine(longLine('x').c_str()); // the numbers go on all the same
    EXPECT_EQ(services.copies.back(), backup("199"));
}

TEST_F(LogFileTest, headersWithUnusableNumbersKeepTheNumber) {
    for (const char* const number : {"x", "2147483647", "99999999999999999999", "-2147483648", ""}) {
        services.copies.clear();
        std::ofstream(path) << "Log File (#" << number << ")\n";
        CLogFile file(services);
        file.setLimits(1, 3);
        file.use(path);
        file.writeLine(longLine('x').c_str());
        EXPECT_EQ(services.copies, std::vector{backup(" 0")}) << number;
    }
}

TEST_F(LogFileTest, backupOntoAFolderFails) {
    std::filesystem::create_directory(backup(" 0"));
    CLogFile file(services);
    file.setLimits(1, 2);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    EXPECT_EQ(services.debuggerLines.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_regular_file(backup(" 1")));
}

TEST_F(LogFileTest, fileThatCannotBeOpenedIsTriedOnEveryLine) {
    int attempts = 0;
    bool mayOpen = false;
    services.mayOpen = [&](const std::string&, const std::string& mode) {
        attempts += mode == "a" ? 1 : 0;
        return mayOpen;
    };
    CLogFile file(services);
    file.use(path);
    file.writeLine("lost");
    file.writeLine("lost too");
    EXPECT_EQ(attempts, 2);
    mayOpen = true;
    file.writeLine("kept");
    file.writeLine("kept too");
    EXPECT_EQ(attempts, 3);
    EXPECT_EQ(readText(path), std::string(stamp) + "kept\n" + stamp + "kept too\n");
}

TEST_F(LogFileTest, folderAsThePathIsHarmless) {
    CLogFile file(services);
    file.setLimits(0, 1);
    file.use(folder.path());
    file.writeLine("nowhere");
    file.use("");
    file.writeLine("nowhere");
    EXPECT_TRUE(services.debuggerLines.empty());
}

TEST_F(LogFileTest, unknownPositionNeverRotates) {
    services.canTellPosition = false;
    CLogFile file(services);
    file.setLimits(1, 3);
    file.use(path);
    file.writeLine(longLine('x').c_str());
    file.writeLine(longLine('y').c_str());
    EXPECT_TRUE(services.copies.empty());
}

TEST_F(LogFileTest, anotherPathClosesTheFirst) {
    CLogFile file(services);
    file.use(path);
    file.writeLine("one");
    const std::string second = folder / "second.log";
    file.use(second);
    file.writeLine("two");
    EXPECT_EQ(readText(path), header(0) + stamp + "one\n");
    EXPECT_EQ(readText(second), header(0) + stamp + "two\n");
    EXPECT_TRUE(std::filesystem::remove(path)); // nobody holds it any more
}

} // namespace
} // namespace tarvo::diagnostics
