#include "apps/tarvo-dewarp/program/TarvoDewarp.h"
#include "tests/apps/video/VideoTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tarvo::apps {
namespace {

/// Writes straight to a file of the system.
class CDescriptorOutput : public std::streambuf {
public:
    explicit CDescriptorOutput(int descriptor) : m_descriptor(descriptor) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        return ::write(m_descriptor, text, static_cast<std::size_t>(count));
    }
    int_type overflow(int_type c) override {
        const char one = traits_type::to_char_type(c);
        return ::write(m_descriptor, &one, 1) == 1 ? c : traits_type::eof();
    }

private:
    int m_descriptor;
};

class BrokenPipe : public CVideoTest {
protected:
    Outcome runInto(int descriptor) const {
        writeBytes(file("in.y4m"), noiseClip(16, 16, 2));
        CDescriptorOutput buffer(descriptor);
        std::ostream out(&buffer);
        std::ostringstream err;
        const int status = runTarvoDewarp(video(fileText("in.y4m"), "-"), out, err);
        return {status, "", err.str()};
    }
};

TEST_F(BrokenPipe, endsTheProgramQuietly) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const Outcome outcome = runInto(ends[1]);
    close(ends[1]);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "");
}

TEST_F(BrokenPipe, isNotTakenForAFullDisc) {
    const int full = open("/dev/full", O_WRONLY);
    if (full < 0) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    const Outcome outcome = runInto(full);
    close(full);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, testing::AllOf(testing::HasSubstr("standard output: No space left"),
                                            testing::EndsWith("\n")));
}

/// The program as a process of its own, its input a pipe that says nothing; gives its wait status.
int statusAfter(int signal, const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe(ends) != 0) {
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        close(ends[1]);
        std::vector<std::string> words{TARVO_DEWARP_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    close(ends[0]);
    // What it is to do before the signal: it has its header and waits for a frame.
    const std::string begin = noiseClip(16, 16, 1).substr(0, 100);
    EXPECT_EQ(write(ends[1], begin.data(), begin.size()), static_cast<ssize_t>(begin.size()));
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    kill(child, signal);
    int status = -1;
    waitpid(child, &status, 0);
    close(ends[1]);
    return status;
}

TEST_F(BrokenPipe, andAnIdleOneDoNotKeepTheProgramFromEnding) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const int status = statusAfter(signal, video("-", fileText("out.y4m")));
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 128 + signal);
        EXPECT_TRUE(names().empty());
    }
}

} // namespace
} // namespace tarvo::apps
