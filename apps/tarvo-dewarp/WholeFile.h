#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvo::apps {

/// A file that cannot be read or written; the text names the file and the reason.
class FileError : public std::runtime_error {
public:
    FileError(const std::filesystem::path& path, const std::string& reason);
};

/// The path that a UTF-8 text names.
std::filesystem::path pathFromText(const std::string& text);

/// Size of an ordinary file that is not empty; pipes and devices could block or never end. Throws FileError.
std::uintmax_t ordinaryFileSize(const std::filesystem::path& path);

/// The first `size` bytes of a file. Throws FileError when it ends before, std::bad_alloc.
std::vector<std::uint8_t> readBeginning(const std::filesystem::path& path, std::size_t size);

/// Finds out before the work is done whether a file could go there. Throws FileError when the path is a
/// directory or in one that does not exist.
void checkTarget(const std::filesystem::path& path);

/// A file that is being written under another name beside its target and takes the target's place only once
/// it is whole: until then, and when it never is, the target stays as it was and nothing is left behind.
/// Every method may throw FileError.
class CReplacement {
public:
    /// Refuses what checkTarget() does.
    explicit CReplacement(const std::filesystem::path& path);
    ~CReplacement();
    CReplacement(const CReplacement&) = delete;
    CReplacement& operator=(const CReplacement&) = delete;

    /// Writes at the position, which moves on.
    void write(std::span<const std::uint8_t> bytes);
    /// The position that the next bytes go to, from the file's beginning.
    void seek(std::uint64_t position);

    /// The file is whole: it becomes the target. Nothing may be written any more.
    void replaceTarget();

private:
    std::filesystem::path m_name; ///< as the user gave it
    std::filesystem::path m_target;
    std::filesystem::path m_path;
    std::ofstream m_stream;
};

/// Writes a file. An existing one is replaced, but only by a whole one: whatever fails leaves the target as
/// it was. Throws FileError, std::bad_alloc.
void writeWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

} // namespace tarvo::apps
