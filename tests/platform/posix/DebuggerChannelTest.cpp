#include "platform/DebuggerChannel.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tarvo::platform {
namespace {

/// What becomes of the standard error while it lives.
class CStandardError {
public:
    explicit CStandardError(int instead) : m_before(dup(STDERR_FILENO)) { dup2(instead, STDERR_FILENO); }
    CStandardError(const CStandardError&) = delete;
    CStandardError& operator=(const CStandardError&) = delete;
    ~CStandardError() {
        dup2(m_before, STDERR_FILENO);
        close(m_before);
    }

private:
    int m_before;
};

/// What `writing` leaves on the standard error.
template<typename Writing>
std::string captured(Writing&& writing) {
    const tests::CTemporaryFolder folder;
    const std::string path = folder / "stderr";
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    EXPECT_GE(file, 0);
    {
        const CStandardError standardError(file);
        writing();
    }
    close(file);
    return tests::readFile(path);
}

TEST(DebuggerChannel, isTheStandardError) {
    const auto write = [] { writeToDebugger("Tarvo:_:100% %s\n"); };
    unsetenv("TARVO_DEBUG_CHANNEL");
    EXPECT_EQ(captured(write), "Tarvo:_:100% %s\n");
    for (const char* channel : {"stderr", "", "unheard of"}) {
        setenv("TARVO_DEBUG_CHANNEL", channel, 1);
        EXPECT_EQ(captured(write), "Tarvo:_:100% %s\n") << channel;
    }
}

TEST(DebuggerChannel, mayBeElsewhere) {
    for (const char* channel : {"none", "journal"}) {
        setenv("TARVO_DEBUG_CHANNEL", channel, 1);
        EXPECT_EQ(captured([] { writeToDebugger("x\n"); }), "") << channel;
    }
}

TEST(DebuggerChannel, takesNothing) {
    unsetenv("TARVO_DEBUG_CHANNEL");
    EXPECT_EQ(captured([] {
                  writeToDebugger(nullptr);
                  writeToDebugger("");
              }),
              "");
}

TEST(DebuggerChannel, keepsTheLastError) {
    for (const char* channel : {"stderr", "none", "journal"}) {
        setenv("TARVO_DEBUG_CHANNEL", channel, 1);
        const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
        const CStandardError standardError(full);
        errno = 77;
        writeToDebugger("x\n");
        EXPECT_EQ(errno, 77) << channel;
        close(full);
    }
}

TEST(DebuggerChannel, survivesAReaderThatIsGone) {
    unsetenv("TARVO_DEBUG_CHANNEL");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    {
        const CStandardError standardError(ends[1]);
        writeToDebugger("x\n");
    }
    close(ends[1]);
    sigset_t pending;
    ASSERT_EQ(sigpending(&pending), 0);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    sigset_t mask;
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, nullptr, &mask), 0);
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
}

TEST(DebuggerChannel, leavesAnothersSignalPending) {
    unsetenv("TARVO_DEBUG_CHANNEL");
    sigset_t pipeSignal;
    sigset_t before;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &pipeSignal, &before), 0);
    ASSERT_EQ(pthread_kill(pthread_self(), SIGPIPE), 0);
    EXPECT_EQ(captured([] { writeToDebugger("x\n"); }), "x\n");
    sigset_t pending;
    ASSERT_EQ(sigpending(&pending), 0);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 1);
    const timespec atOnce{};
    EXPECT_EQ(sigtimedwait(&pipeSignal, nullptr, &atOnce), SIGPIPE);
    ASSERT_EQ(pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
}

TEST(DebuggerChannel, keepsLinesOfSeveralThreadsApart) {
    unsetenv("TARVO_DEBUG_CHANNEL");
    constexpr int lines = 500;
    const std::string text = captured([] {
        std::vector<std::thread> threads;
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            threads.emplace_back([letter] {
                for (int i = 0; i < lines; ++i)
                    writeToDebugger((std::string(100, letter) + "\n").c_str());
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    });
    ASSERT_EQ(text.size(), 4U * lines * 101U);
    for (std::size_t start = 0; start < text.size(); start += 101)
        ASSERT_EQ(text.substr(start, 101), std::string(100, text[start]) + "\n");
    EXPECT_EQ(std::ranges::count(text, 'c'), lines * 100);
}

} // namespace
} // namespace tarvo::platform
