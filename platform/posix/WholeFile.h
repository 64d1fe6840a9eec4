#pragma once

#include "platform/posix/FileDescriptor.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>

namespace tarvo::platform {

/// The name behind all links; the name itself where there is no file yet.
std::string resolvedPath(const char* path);

/// Opens a regular file for reading; no file, with errno set, for anything else - in particular for a pipe,
/// which would make its reader wait.
CFileDescriptor openRegularFile(const char* path, struct stat& status);

/// Reads up to `limit` bytes to the end of `bytes`. False on an error, with errno set; `bytes` then has what
/// came before.
bool readBytes(int file, std::size_t limit, std::string& bytes);

/// Whether a file must outlast a crash of the system, which costs a wait for the disk.
enum class Durability { onDisk, whenConvenient };

/// Takes the place of a file all at once, or not at all: what is written goes into a new file beside it,
/// which in the end is given its name. Errors leave errno set and the file as it was.
class CReplacementFile {
public:
    /// Links are followed: the file which `path` leads to is replaced. Its mode and owner are kept where it
    /// exists, and nothing but a regular file is replaced.
    explicit CReplacementFile(const char* path);
    CReplacementFile(const CReplacementFile&) = delete;
    CReplacementFile& operator=(const CReplacementFile&) = delete;
    /// Without a commit nothing has happened.
    ~CReplacementFile();

    /// False, with errno set, when the place cannot be taken so.
    bool isSound() const { return m_isSound; }

    bool write(std::string_view bytes);
    /// Puts the file in its place, by default once it is on disk.
    bool commit(Durability durability = Durability::onDisk);

private:
    bool m_isSound = false;
    std::string m_path;
    std::string m_temporaryPath;
    CFileDescriptor m_file;
};

} // namespace tarvo::platform
