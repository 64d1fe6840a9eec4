#include "platform/Files.h"

#include "platform/posix/WholeFile.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvo::platform {
namespace {

/// What open() is to do for a mode of fopen().
std::optional<int> openFlags(std::string_view mode) {
    if (mode.empty() || mode.find_first_not_of("+bt", 1) != std::string_view::npos)
        return std::nullopt;
    const bool isBoth = mode.find('+') != std::string_view::npos;
    switch (mode.front()) {
    case 'r':
        return isBoth ? O_RDWR : O_RDONLY;
    case 'w':
        return (isBoth ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
    case 'a':
        return (isBoth ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
    default:
        return std::nullopt;
    }
}

/// Copies what is left of `source` through `write`.
template<class Write>
bool copyRest(int source, Write write) {
    constexpr std::size_t atOnce = 1 << 20;
    std::string bytes;
    do {
        bytes.clear();
        if (!readBytes(source, atOnce, bytes) || !write(bytes))
            return false;
    } while (!bytes.empty());
    return true;
}

/// Writes into the file itself, as far as it gets.
bool overwriteContent(int source, const char* to) {
    const CFileDescriptor target(open(to, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!target || fstat(target.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        lseek(source, 0, SEEK_SET) != 0 || ftruncate(target.get(), 0) != 0)
        return false;
    return copyRest(source, [&target](std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = write(target.get(), bytes.data(), bytes.size());
            if (count > 0)
                bytes.remove_prefix(static_cast<std::size_t>(count));
            else if (count == 0 || errno != EINTR)
                return false;
        }
        return true;
    });
}

bool isFolderProtected(int error) {
    return error == EACCES || error == EPERM || error == EROFS;
}

bool copyContent(const char* from, const char* to) {
    struct stat source {};
    const CFileDescriptor file = openRegularFile(from, source);
    struct stat target {};
    if (!file)
        return false;
    if (stat(to, &target) == 0 && target.st_dev == source.st_dev && target.st_ino == source.st_ino) {
        errno = EINVAL;
        return false;
    }
    CReplacementFile copy(to);
    if (copy.isSound()) {
        if (!copyRest(file.get(), [&copy](std::string_view bytes) { return copy.write(bytes); }))
            return false;
        if (copy.commit(Durability::whenConvenient))
            return true;
    }
    // A file that everyone may write can stand in a folder that is not everyone's.
    return isFolderProtected(errno) && overwriteContent(file.get(), to);
}

} // namespace

std::FILE* openFile(const char* path, const char* mode) {
    const std::optional<int> flags = openFlags(mode != nullptr ? mode : "");
    if (!flags || path == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    // Opening a directory for reading would succeed, and a pipe would make its reader wait for a writer.
    CFileDescriptor file(open(path, *flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0)
        return nullptr;
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return nullptr;
    }
    // Writing to a pipe whose reader has gone would end the process.
    if (S_ISFIFO(status.st_mode) && *flags != O_RDONLY) {
        errno = EINVAL;
        return nullptr;
    }
    std::FILE* const stream = fdopen(file.get(), mode);
    if (stream != nullptr)
        file.release();
    return stream;
}

std::int64_t filePosition(std::FILE* file) {
    return file == nullptr ? -1 : ftello(file);
}

bool copyFile(const char* from, const char* to) {
    if (from == nullptr || to == nullptr) {
        errno = EINVAL;
        return false;
    }
    try {
        return copyContent(from, to);
    } catch (const std::exception&) {
        errno = ENOMEM;
        return false;
    }
}

void grantAccessToEveryone(const char* path) {
    const int saved = errno;
    struct stat status {};
    // A folder or device that is taken for a file by mistake keeps its protection.
    if (path != nullptr && stat(path, &status) == 0 && S_ISREG(status.st_mode))
        chmod(path, (status.st_mode & 07777) | 0666);
    errno = saved;
}

} // namespace tarvo::platform
