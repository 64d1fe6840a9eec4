#include "platform/posix/WholeFile.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>

namespace tarvo::platform {
namespace {

using tests::CTemporaryFolder;
using tests::readFile;
using tests::writeFile;

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(WholeFile, isReplacedAtOnce) {
    const CTemporaryFolder folder;
    const std::string path = folder / "file";
    writeFile(path, "before");
    CReplacementFile file(path.c_str());
    EXPECT_TRUE(file.write("af"));
    EXPECT_TRUE(file.write("ter"));
    EXPECT_EQ(readFile(path), "before");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(readFile(path), "after");
    EXPECT_EQ(folder.count(), 1);
}

TEST(WholeFile, staysWithoutACommit) {
    const CTemporaryFolder folder;
    const std::string path = folder / "file";
    writeFile(path, "before");
    {
        CReplacementFile file(path.c_str());
        EXPECT_TRUE(file.write("after"));
    }
    EXPECT_EQ(readFile(path), "before");
    EXPECT_EQ(folder.count(), 1);
}

TEST(WholeFile, keepsItsMode) {
    const CTemporaryFolder folder;
    const std::string path = folder / "file";
    for (const mode_t mode : {0600U, 0666U, 0751U}) {
        writeFile(path, "before");
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        CReplacementFile file(path.c_str());
        EXPECT_TRUE(file.write("after") && file.commit());
        EXPECT_EQ(modeOf(path), mode);
    }
}

TEST(WholeFile, takesItsModeFromTheProcessWhenNew) {
    const CTemporaryFolder folder;
    const mode_t before = umask(027);
    CReplacementFile file((folder / "file").c_str());
    umask(before);
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(modeOf(folder / "file"), 0640U);
}

TEST(WholeFile, isReplacedBehindALink) {
    const CTemporaryFolder folder;
    writeFile(folder / "file", "before");
    ASSERT_EQ(symlink("file", (folder / "link").c_str()), 0);
    CReplacementFile file((folder / "link").c_str());
    EXPECT_TRUE(file.write("after") && file.commit());
    EXPECT_EQ(readFile(folder / "file"), "after");
    struct stat status {};
    ASSERT_EQ(lstat((folder / "link").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(WholeFile, isNoDeviceOrFolder) {
    const CTemporaryFolder folder;
    for (const std::string& path : {std::string("/dev/full"), std::string("/dev/null"), folder.path()}) {
        CReplacementFile file(path.c_str());
        EXPECT_FALSE(file.write("x")) << path;
        EXPECT_FALSE(file.commit()) << path;
    }
    struct stat status {};
    ASSERT_EQ(stat("/dev/full", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    EXPECT_EQ(folder.count(), 0);
}

TEST(WholeFile, staysWhenTheNewOneCannotBeWritten) {
    const CTemporaryFolder folder;
    const std::string path = folder / "file";
    writeFile(path, "before");
    // As a full disk would.
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{1000, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    {
        CReplacementFile file(path.c_str());
        EXPECT_FALSE(file.write(std::string(5000, 'x')));
        EXPECT_EQ(errno, EFBIG);
        EXPECT_FALSE(file.commit());
    }
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(readFile(path), "before");
    EXPECT_EQ(folder.count(), 1);
}

TEST(WholeFile, doesNotWaitForPipes) {
    const CTemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    struct stat status {};
    EXPECT_FALSE(openRegularFile((folder / "pipe").c_str(), status));
    EXPECT_FALSE(openRegularFile("/dev/zero", status));
    EXPECT_FALSE(openRegularFile(folder.path().c_str(), status));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(openRegularFile((folder / "absent").c_str(), status));
    EXPECT_EQ(errno, ENOENT);
}

TEST(WholeFile, isReadUpToALimit) {
    const CTemporaryFolder folder;
    writeFile(folder / "file", std::string(100000, 'a') + "b");
    struct stat status {};
    const CFileDescriptor file = openRegularFile((folder / "file").c_str(), status);
    ASSERT_TRUE(file);
    std::string bytes;
    EXPECT_TRUE(readBytes(file.get(), 70000, bytes));
    EXPECT_EQ(bytes, std::string(70000, 'a'));
    EXPECT_TRUE(readBytes(file.get(), 70000, bytes));
    EXPECT_EQ(bytes, std::string(100000, 'a') + "b");
    EXPECT_FALSE(readBytes(-1, 1, bytes));
    EXPECT_EQ(errno, EBADF);
}

} // namespace
} // namespace tarvo::platform
