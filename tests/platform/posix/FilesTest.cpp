#include "platform/Files.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarvo::platform {
namespace {

using tests::CTemporaryFolder;
using tests::writeFile;

TEST(PosixFiles, areNotInherited) {
    const CTemporaryFolder folder;
    std::FILE* const file = openFile((folder / "a").c_str(), "w");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(fcntl(fileno(file), F_GETFD), FD_CLOEXEC);
    std::fclose(file);
}

TEST(PosixFiles, mayBeFull) {
    std::FILE* const file = openFile("/dev/full", "a");
    ASSERT_NE(file, nullptr);
    std::fputs("x", file);
    EXPECT_NE(std::fflush(file), 0);
    EXPECT_EQ(errno, ENOSPC);
    std::fclose(file);
}

TEST(PosixFiles, doNotWaitForPipes) {
    const CTemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(openFile(pipe.c_str(), "a"), nullptr);
    std::FILE* const reader = openFile(pipe.c_str(), "r");
    ASSERT_NE(reader, nullptr);
    // Writing to one whose reader goes would end the process.
    EXPECT_EQ(openFile(pipe.c_str(), "a"), nullptr);
    std::fclose(reader);
    EXPECT_FALSE(copyFile(pipe.c_str(), (folder / "copy").c_str()));
}

TEST(PosixFiles, areCopiedOverWritableFilesInProtectedFolders) {
    const CTemporaryFolder folder;
    writeFile(folder / "a", "new");
    writeFile(folder / "b", "the old content");
    ASSERT_EQ(chmod((folder / "b").c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // The administrator may write anywhere.
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(3);
        const bool isNewNameRefused = !copyFile((folder / "a").c_str(), (folder / "c").c_str());
        _exit(copyFile((folder / "a").c_str(), (folder / "b").c_str()) && isNewNameRefused ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(tests::readFile(folder / "b"), "new");
    EXPECT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(folder.count(), 2);
}

TEST(PosixFiles, areNotCopiedOverDevices) {
    const CTemporaryFolder folder;
    writeFile(folder / "a", "x");
    EXPECT_FALSE(copyFile((folder / "a").c_str(), "/dev/full"));
    EXPECT_FALSE(copyFile("/dev/zero", (folder / "b").c_str()));
    struct stat status {};
    ASSERT_EQ(stat("/dev/full", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    EXPECT_EQ(folder.count(), 1);
}

TEST(PosixFiles, areOpenToEveryone) {
    const CTemporaryFolder folder;
    const std::string path = folder / "a";
    struct stat status {};
    for (const mode_t mode : {0600U, 0444U, 0755U}) {
        writeFile(path, "x");
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        errno = 77;
        grantAccessToEveryone(path.c_str());
        EXPECT_EQ(errno, 77);
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode | 0666U);
    }
}

TEST(PosixFiles, leaveFoldersProtected) {
    const CTemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    grantAccessToEveryone(folder.path().c_str());
    struct stat status {};
    ASSERT_EQ(stat(folder.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
}

} // namespace
} // namespace tarvo::platform
