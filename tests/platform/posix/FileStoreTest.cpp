#include "platform/posix/FileStore.h"

#include "tests/platform/RegistryConformance.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarvo::platform {
namespace {

using tests::CTemporaryFolder;
using tests::readFile;
using tests::writeFile;

struct FileSubject {
    IRegistry& registry() { return m_registry; }
    CTemporaryFolder m_folder;
    CFileStore m_store{[this] {
        return RegistryFiles{m_folder / "registry.reg", m_folder / "registry.reg", false};
    }};
    CStoredRegistry m_registry{m_store};
};

INSTANTIATE_TYPED_TEST_SUITE_P(File, RegistryConformance, FileSubject);

/// A registry over one file.
class CFileRegistry {
public:
    explicit CFileRegistry(const std::string& path) : CFileRegistry(path, path) {}
    CFileRegistry(const std::string& read, const std::string& write, bool makesFolder = false)
        : m_store([=] {
              return RegistryFiles{read, write, makesFolder};
          }),
          m_registry(m_store) {}

    RegistryError set(const char* name, std::uint32_t value) {
        RegistryKey key = noRegistryKey;
        if (const RegistryError error = m_registry.createKey(localMachine, "SOFTWARE\\Tarvo", key);
            error != 0)
            return error;
        const RegistryError error = m_registry.setDword(key, name, value);
        m_registry.closeKey(key);
        return error;
    }

    /// -1 if it cannot be read.
    std::int64_t get(const char* name) {
        RegistryKey key = noRegistryKey;
        std::uint32_t type = 0;
        std::uint32_t value = 0;
        std::uint32_t size = sizeof value;
        if (m_registry.openKey(localMachine, "SOFTWARE\\Tarvo", key) != 0)
            return -1;
        const RegistryError error = m_registry.queryValue(key, name, type, &value, size);
        m_registry.closeKey(key);
        return error == 0 ? value : -1;
    }

private:
    CFileStore m_store;
    CStoredRegistry m_registry;
};

constexpr const char* two = "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo]\n\"DBGView\"=dword:2\n";

TEST(FileStore, readsAFileAndItsChanges) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    CFileRegistry registry(path);
    EXPECT_EQ(registry.get("DBGView"), -1);
    writeFile(path, two);
    EXPECT_EQ(registry.get("DBGView"), 2);
    // Of the same length, at once.
    for (const char digit : {'3', '4', '5'}) {
        std::string text = two;
        text[text.size() - 2] = digit;
        writeFile(path, text);
        EXPECT_EQ(registry.get("DBGView"), digit - '0');
    }
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(registry.get("DBGView"), -1);
}

TEST(FileStore, seesChangesOfOthersAfterAWhileToo) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    CFileRegistry registry(path);
    CFileRegistry other(path);
    EXPECT_EQ(other.set("x", 1), registryError::success);
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_EQ(registry.get("x"), 1);
    EXPECT_EQ(registry.get("x"), 1);
    for (std::uint32_t value = 2; value < 20; ++value) {
        EXPECT_EQ(other.set("x", value), registryError::success);
        EXPECT_EQ(registry.get("x"), value);
    }
}

TEST(FileStore, keepsTheRestOfTheFileAndItsMode) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    const std::string before =
        "; mine\n[HKEY_USERS\\x]\n\"y\"=hex(99):01\n\n" + std::string(two) + "\"z\"=?\n";
    writeFile(path, before);
    ASSERT_EQ(chmod(path.c_str(), 0646), 0);
    CFileRegistry registry(path);
    EXPECT_EQ(registry.set("new", 1), registryError::success);
    EXPECT_EQ(readFile(path), before + "\"new\"=dword:00000001\n");
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0646U);
}

TEST(FileStore, losesNoChangeOfSeveralProcesses) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    constexpr int processes = 4;
    constexpr int changes = 25;
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            CFileRegistry registry(path);
            bool isGood = true;
            for (int change = 0; change < changes; ++change) {
                const std::string name = std::to_string(process) + "-" + std::to_string(change);
                RegistryError error = registryError::busy;
                // A slow disk may let one process wait too long for its turn; then it asks again.
                for (int attempt = 0; error == registryError::busy && attempt < 20; ++attempt)
                    error = registry.set(name.c_str(), 7);
                isGood &= error == registryError::success;
            }
            _exit(isGood ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    CFileRegistry registry(path);
    for (int process = 0; process < processes; ++process) {
        for (int change = 0; change < changes; ++change) {
            const std::string name = std::to_string(process) + "-" + std::to_string(change);
            EXPECT_EQ(registry.get(name.c_str()), 7) << name;
        }
    }
    // The file and its lock.
    EXPECT_EQ(folder.count(), 2);
}

TEST(FileStore, doesNotWaitForeverForALock) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    const CFileDescriptor lock(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
    CFileRegistry registry(path);
    EXPECT_EQ(registry.set("x", 1), registryError::busy);
    EXPECT_EQ(flock(lock.get(), LOCK_UN), 0);
    EXPECT_EQ(registry.set("x", 1), registryError::success);
}

TEST(FileStore, readsNothingFromWhatIsNoFile) {
    const CTemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {folder / "pipe", folder.path(), std::string("/dev/zero"), std::string("/dev/full"),
          folder / "absent/registry.reg", std::string()}) {
        CFileRegistry registry(path);
        EXPECT_EQ(registry.get("x"), -1) << path;
        EXPECT_NE(registry.set("x", 1), registryError::success) << path;
    }
    EXPECT_EQ(folder.count(), 1);
    EXPECT_NE(access("/dev/full.lock", F_OK), 0);
}

TEST(FileStore, saysWhyAChangeFailed) {
    const CTemporaryFolder folder;
    EXPECT_EQ(CFileRegistry(folder.path()).set("x", 1), registryError::accessDenied);
    EXPECT_EQ(CFileRegistry("/dev/full").set("x", 1), registryError::accessDenied);
    EXPECT_EQ(CFileRegistry(folder / "absent/registry.reg").set("x", 1), registryError::pathNotFound);
    EXPECT_EQ(CFileRegistry("").set("x", 1), registryError::pathNotFound);
}

TEST(FileStore, readsTheBeginningOfAHugeFileAndDoesNotOverwriteIt) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    writeFile(path, two);
    // What a hole holds are zeros.
    ASSERT_EQ(truncate(path.c_str(), CFileStore::largestFile + 1), 0);
    CFileRegistry registry(path);
    EXPECT_EQ(registry.get("DBGView"), 2);
    EXPECT_EQ(registry.set("x", 1), registryError::registryIoFailed);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_size, static_cast<off_t>(CFileStore::largestFile + 1));
}

TEST(FileStore, growsNoFileBeyondWhatItCanRead) {
    const CTemporaryFolder folder;
    const std::string path = folder / "registry.reg";
    writeFile(path, std::string(CFileStore::largestFile - 40, ';'));
    CFileRegistry registry(path);
    EXPECT_EQ(registry.set("x", 1), registryError::registryIoFailed);
    EXPECT_EQ(readFile(path).size(), CFileStore::largestFile - 40);
}

TEST(FileStore, beginsTheUsersFileWithTheSystems) {
    const CTemporaryFolder folder;
    writeFile(folder / "system.reg", two);
    const std::string users = folder / "deep/er/user.reg";
    CFileRegistry registry(folder / "system.reg", users, true);
    EXPECT_EQ(registry.set("x", 1), registryError::success);
    EXPECT_EQ(readFile(users), std::string(two) + "\"x\"=dword:00000001\n");
    EXPECT_EQ(readFile(folder / "system.reg"), two);
}

TEST(FileStore, isTheSystemsRegistry) {
    const CTemporaryFolder folder;
    setenv("TARVO_REGISTRY", (folder / "a.reg").c_str(), 1);
    RegistryKey key = noRegistryKey;
    ASSERT_EQ(systemRegistry().createKey(localMachine, "SOFTWARE\\Tarvo", key), registryError::success);
    EXPECT_EQ(systemRegistry().setDword(key, "x", 1), registryError::success);
    EXPECT_EQ(readFile(folder / "a.reg"),
              "Windows Registry Editor Version 5.00\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo]\r\n\"x\"=dword:00000001\r\n");
    writeFile(folder / "b.reg", two);
    setenv("TARVO_REGISTRY", (folder / "b.reg").c_str(), 1);
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    EXPECT_EQ(systemRegistry().queryValue(key, "DBGView", type, nullptr, size), registryError::success);
    EXPECT_EQ(systemRegistry().queryValue(key, "x", type, nullptr, size), registryError::fileNotFound);
    systemRegistry().closeKey(key);
}

} // namespace
} // namespace tarvo::platform
