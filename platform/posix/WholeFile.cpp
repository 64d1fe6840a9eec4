#include "platform/posix/WholeFile.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>

namespace tarvo::platform {
namespace {

/// A name that no other thread or process uses.
std::string temporaryPath(const std::string& path) {
    static std::atomic<unsigned> counter;
    return path + ".new-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
}

/// Makes the new name last; a folder that cannot be synchronised is no reason to complain about the file.
void synchronizeFolder(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const CFileDescriptor file(
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file)
        fsync(file.get());
}

} // namespace

std::string resolvedPath(const char* path) {
    char* const real = realpath(path, nullptr);
    if (real == nullptr)
        return path;
    std::string result(real);
    std::free(real);
    return result;
}

CFileDescriptor openRegularFile(const char* path, struct stat& status) {
    CFileDescriptor file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file || fstat(file.get(), &status) != 0)
        return {};
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return {};
    }
    return file;
}

bool readBytes(int file, std::size_t limit, std::string& bytes) {
    char buffer[65536];
    while (limit > 0) {
        const ssize_t count = read(file, buffer, std::min(limit, sizeof buffer));
        if (count == 0)
            return true;
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0) {
            bytes.append(buffer, static_cast<std::size_t>(count));
            limit -= static_cast<std::size_t>(count);
        }
    }
    return true;
}

CReplacementFile::CReplacementFile(const char* path) : m_path(resolvedPath(path)) {
    struct stat status {};
    const bool exists = stat(m_path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT)
        return;
    if (exists && !S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return;
    }
    // A process that ended halfway may have left a name that this one would use.
    errno = EEXIST;
    for (int attempt = 0; !m_file && errno == EEXIST && attempt < 100; ++attempt) {
        m_temporaryPath = temporaryPath(m_path);
        m_file =
            CFileDescriptor(open(m_temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    }
    if (!m_file)
        return;
    m_isSound = true;
    if (exists) {
        // Only the administrator can give files away; the others keep what they may write.
        [[maybe_unused]] const int ignored = fchown(m_file.get(), status.st_uid, status.st_gid);
        m_isSound = fchmod(m_file.get(), status.st_mode & 07777) == 0;
    }
}

CReplacementFile::~CReplacementFile() {
    const int saved = errno;
    if (m_file)
        unlink(m_temporaryPath.c_str());
    errno = saved;
}

bool CReplacementFile::write(std::string_view bytes) {
    while (m_isSound && !bytes.empty()) {
        const ssize_t count = ::write(m_file.get(), bytes.data(), bytes.size());
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else
            m_isSound = count < 0 && errno == EINTR;
    }
    return m_isSound;
}

bool CReplacementFile::commit(Durability durability) {
    const bool isDurable = durability == Durability::onDisk;
    if (!m_isSound || (isDurable && fsync(m_file.get()) != 0) ||
        rename(m_temporaryPath.c_str(), m_path.c_str()) != 0)
        return false;
    m_file = CFileDescriptor();
    m_isSound = false;
    if (isDurable)
        synchronizeFolder(m_path);
    return true;
}

} // namespace tarvo::platform
