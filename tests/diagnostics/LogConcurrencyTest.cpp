#include "diagnostics/Log.h"
#include "diagnostics/LogLine.h"
#include "tests/diagnostics/FakeLogServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

namespace tarvo::diagnostics {
namespace {

/// Services of the real system but for the registry, safe for many threads.
class FileOnlyServices final : public ILogServices {
public:
    FakeRegistry fakeRegistry;
    std::atomic<int> debuggerLines{0};

    platform::IRegistry& registry() override { return fakeRegistry; }
    void sleep(std::chrono::milliseconds) override {}
    void writeToDebugger(const char*) override { ++debuggerLines; }
    platform::LocalTime localTime() override { return platform::localTime(); }
    std::FILE* openFile(const char* path, const char* mode) override {
        return platform::openFile(path, mode);
    }
    std::int64_t filePosition(std::FILE* file) override { return platform::filePosition(file); }
    bool copyFile(const char* from, const char* to) override { return platform::copyFile(from, to); }
    void grantAccessToEveryone(const char* path) override { platform::grantAccessToEveryone(path); }
};

constexpr int threadCount = 8;
/// What a nested line counts beside the ones of its number.
constexpr int nestedUnit = 1000;
#if defined(TARVO_SLOW_LOGGING)
constexpr int linesPerThread = 5000;
#else
constexpr int linesPerThread = 100000;
#endif

/// How often each of a thread's lines stands in a file; adds to what `seen` holds. Every line must be whole.
void countLines(const std::string& path, std::vector<std::vector<int>>& seen) {
    std::ifstream stream(path);
    std::string line;
    ASSERT_TRUE(std::getline(stream, line));
    EXPECT_EQ(line.rfind("Log File (#", 0), 0U) << line;
    while (std::getline(stream, line)) {
        int month = 0;
        int day = 0;
        int year = 0;
        int hour = 0;
        int minute = 0;
        int second = 0;
        int millisecond = 0;
        int id = 0;
        int number = 0;
        int again = 0;
        char end = 0;
        const int fields = std::sscanf(
            line.c_str(), "%2d/%2d/%2d %2d:%2d:%2d.%3d T:E:[%d] - name - line %d of inner %d%c", &month, &day,
            &year, &hour, &minute, &second, &millisecond, &id, &number, &again, &end);
        if (fields == 8) {
            // The line that was logged while another one's arguments were built; counted in its own unit.
            const auto at = line.find("- inner - nested in ");
            ASSERT_NE(at, std::string::npos) << line;
            number = std::stoi(line.substr(at + 20));
            ASSERT_TRUE(id >= 1 && id <= threadCount && number >= 0 && number < linesPerThread) << line;
            seen[static_cast<std::size_t>(id - 1)][static_cast<std::size_t>(number)] += nestedUnit;
            continue;
        }
        ASSERT_EQ(fields, 10) << line;
        ASSERT_EQ(number, again) << line;
        ASSERT_TRUE(id >= 1 && id <= threadCount && number >= 0 && number < linesPerThread) << line;
        ++seen[static_cast<std::size_t>(id - 1)][static_cast<std::size_t>(number)];
    }
}

TEST(LogConcurrency, everyLineIsWholeAndOnlyRotationLosesAny) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "log.log";
    FileOnlyServices services;
    {
        Log log(services);
        log.SetModule("T", 0);
        // Some twenty rotations and backups for twice as many: nothing may be lost.
        constexpr int backups = 40;
        log.SetFileOutput(path.c_str(), 2, linesPerThread / 40, backups);
        std::vector<std::thread> threads;
        for (int id = 1; id <= threadCount; ++id) {
            threads.emplace_back([&log, id] {
                for (int number = 0; number < linesPerThread; ++number) {
                    const auto nested = [&log, id, number] {
                        if (number % 100 == 0) {
                            TARVO_LOG(log, LogCategory::error, id, "inner", "nested in %d", number);
                        }
                        return number;
                    };
                    TARVO_LOG(log, LogCategory::error, id, "name", "line %d of inner %d", number, nested());
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::vector<std::vector<int>> seen(threadCount, std::vector<int>(linesPerThread));
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path())) {
        ++files;
        countLines(entry.path().string(), seen);
    }
    EXPECT_GT(files, 10);
    EXPECT_LT(files, 40);
    for (const auto& lines : seen) {
        for (std::size_t number = 0; number < lines.size(); ++number) {
            ASSERT_EQ(lines[number], number % 100 == 0 ? 1 + nestedUnit : 1) << number;
        }
    }
    EXPECT_EQ(services.debuggerLines, 0);
}

TEST(LogConcurrency, registrationsAndLinesMayMeet) {
    FileOnlyServices services;
    Log log(services);
    std::vector<std::thread> threads;
    std::vector<std::vector<std::int32_t>> ids(4);
    for (auto& mine : ids) {
        threads.emplace_back([&log, &mine] {
            for (int i = 0; i < 500; ++i) {
                mine.push_back(log.Register("T", "key"));
                TARVO_LOG(log, LogCategory::error, 0, "", "x");
                log.SetModule("U", i % 3);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::vector<std::int32_t> all;
    for (const auto& mine : ids) {
        all.insert(all.end(), mine.begin(), mine.end());
    }
    std::sort(all.begin(), all.end());
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(all[i], static_cast<std::int32_t>(i + 1));
    }
}

} // namespace
} // namespace tarvo::diagnostics
