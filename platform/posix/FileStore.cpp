#include "platform/posix/FileStore.h"

#include "platform/posix/WholeFile.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>

namespace tarvo::platform {
namespace {

RegistryError errorFromErrno(int number) {
    switch (number) {
    case ENOENT:
    case ENOTDIR:
        return registryError::pathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EINVAL: // no regular file
        return registryError::accessDenied;
    case ENOMEM:
        return registryError::outOfMemory;
    case ENOSPC:
    case EDQUOT:
        return registryError::diskFull;
    case EWOULDBLOCK:
        return registryError::busy;
    default:
        return registryError::registryIoFailed;
    }
}

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Reads the file as far as it may be; 0 or the number of the error that kept it from being read whole.
int readFile(const std::string& path, std::string& bytes) {
    struct stat status {};
    const CFileDescriptor file = openRegularFile(path.c_str(), status);
    if (!file || !readBytes(file.get(), CFileStore::largestFile, bytes))
        return errno;
    return status.st_size > static_cast<off_t>(CFileStore::largestFile) ? EFBIG : 0;
}

void makeFolderOf(const std::string& path) {
    // Should that fail, opening the file will say so.
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
}

/// A device, pipe or folder: no lock file must appear beside it.
bool isSomethingElse(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

/// Waits a while for other processes that change the file; none, with errno set, if that does not help.
CFileDescriptor lockFile(const std::string& path) {
    constexpr int attempts = 1000;
    constexpr timespec pause{0, 5'000'000};
    CFileDescriptor file(
        open((path + ".lock").c_str(), O_RDONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666));
    for (int attempt = 0; file && flock(file.get(), LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || attempt == attempts)
            return {};
        nanosleep(&pause, nullptr);
    }
    return file;
}

RegistryError replaceFile(const std::string& path, const std::string& bytes) {
    if (bytes.size() > CFileStore::largestFile)
        return registryError::registryIoFailed;
    CReplacementFile file(path.c_str());
    return file.write(bytes) && file.commit() ? registryError::success : errorFromErrno(errno);
}

} // namespace

const CRegistryTree& CFileStore::tree() {
    const std::string path = m_files().read;
    Stamp stamp = stampOf(path);
    if (stamp != m_stamp || !stamp.isSettled) {
        std::string bytes;
        readFile(path, bytes);
        // Never two trees at once, should they be large.
        m_stamp = {};
        m_tree = {};
        m_tree = CRegDocument(bytes).tree();
        m_stamp = std::move(stamp);
    }
    return m_tree;
}

RegistryError CFileStore::change(const std::function<RegistryError(CRegDocument&)>& edit) {
    const RegistryFiles files = m_files();
    const std::string path = resolvedPath(files.write.c_str());
    if (path.empty())
        return registryError::pathNotFound;
    if (files.makesFolder)
        makeFolderOf(path);
    if (isSomethingElse(path))
        return registryError::accessDenied;
    const CFileDescriptor lock = lockFile(path);
    if (!lock)
        return errorFromErrno(errno);
    // Asked once more: another process may have made the file while this one waited.
    std::string bytes;
    if (const int error = readFile(m_files().read, bytes); error != 0 && error != ENOENT)
        return errorFromErrno(error);
    CRegDocument document(bytes);
    const RegistryError result = edit(document);
    return result != registryError::success ? result : replaceFile(path, document.bytes());
}

CFileStore::Stamp CFileStore::stampOf(const std::string& path) {
    Stamp stamp;
    stamp.path = path;
    struct stat status {};
    if (path.empty() || stat(path.c_str(), &status) != 0) {
        stamp.isSettled = true;
        return stamp;
    }
    stamp.device = status.st_dev;
    stamp.inode = status.st_ino;
    stamp.size = status.st_size;
    stamp.modified = nanoseconds(status.st_mtim);
    stamp.changed = nanoseconds(status.st_ctim);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    constexpr std::int64_t settlingTime = 100'000'000;
    stamp.isSettled = nanoseconds(now) - stamp.changed > settlingTime;
    return stamp;
}

} // namespace tarvo::platform
