#include "apps/tarvo-dewarp/WholeFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <random>
#include <system_error>

namespace tarvo::apps {
namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// What the last call into the C library complained about.
std::string lastReason(const std::string& otherwise) {
    return errno != 0 ? std::generic_category().message(errno) : otherwise;
}

/// Where a link leads: it stays a link when the file behind it is replaced.
fs::path linkedTarget(const fs::path& path) {
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(path, error))) {
        return path;
    }
    const fs::path target = fs::canonical(path, error);
    if (error) {
        throw FileError(path, error.message());
    }
    return target;
}

} // namespace

FileError::FileError(const fs::path& path, const std::string& reason)
    : std::runtime_error(textOf(path) + ": " + reason) {}

fs::path pathFromText(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

std::uintmax_t ordinaryFileSize(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw FileError(path, error ? error.message() : "No such file or directory");
    }
    if (fs::is_directory(status)) {
        throw FileError(path, "it is a directory");
    }
    if (!fs::is_regular_file(status)) {
        throw FileError(path, "it is not an ordinary file");
    }
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) {
        throw FileError(path, error.message());
    }
    if (size == 0) {
        throw FileError(path, "it is empty");
    }
    return size;
}

std::vector<std::uint8_t> readBeginning(const fs::path& path, std::size_t size) {
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw FileError(path, lastReason("it cannot be opened"));
    }
    std::vector<std::uint8_t> bytes(size);
    errno = 0;
    // Streams read chars; any object may be filled through them.
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (stream.gcount() != static_cast<std::streamsize>(bytes.size())) {
        throw FileError(path, lastReason("it ends while it is being read"));
    }
    return bytes;
}

void checkTarget(const fs::path& path) {
    const fs::path target = linkedTarget(path);
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::is_directory(status)) {
        throw FileError(path, "it is a directory");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw FileError(path, "it is not an ordinary file");
    }
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error)) {
        throw FileError(path, "there is no directory " + textOf(folder));
    }
}

CReplacement::CReplacement(const fs::path& path) : m_name(path) {
    checkTarget(path);
    m_target = linkedTarget(path);
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), ".tarvo-%08x%08x.tmp", random(), random());
    m_path = m_target.parent_path() / name.data();
    errno = 0;
    m_stream.open(m_path, std::ios::binary | std::ios::trunc);
    if (!m_stream) {
        throw FileError(m_name, lastReason("it cannot be written"));
    }
}

CReplacement::~CReplacement() {
    m_stream.close();
    std::error_code ignored;
    fs::remove(m_path, ignored);
}

void CReplacement::write(std::span<const std::uint8_t> bytes) {
    errno = 0;
    m_stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!m_stream) {
        throw FileError(m_name, lastReason("it cannot be written"));
    }
}

void CReplacement::seek(std::uint64_t position) {
    errno = 0;
    m_stream.seekp(static_cast<std::streamoff>(position));
    if (!m_stream) {
        throw FileError(m_name, lastReason("it cannot be written"));
    }
}

void CReplacement::replaceTarget() {
    errno = 0;
    // Only closing tells whether everything arrived.
    m_stream.close();
    if (!m_stream) {
        throw FileError(m_name, lastReason("it cannot be written"));
    }
    std::error_code error;
    fs::rename(m_path, m_target, error);
    if (error) {
        throw FileError(m_name, error.message());
    }
}

void writeWholeFile(const fs::path& path, std::span<const std::uint8_t> bytes) {
    CReplacement replacement(path);
    replacement.write(bytes);
    replacement.replaceTarget();
}

} // namespace tarvo::apps
