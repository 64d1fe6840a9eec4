#pragma once

#include "diagnostics/LogServices.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace tarvo::diagnostics {

/// The file part of the log: one file that stays open, and numbered copies of it once it has grown past its
/// limit. The number k in the file's first line is that of the copy it will become. Failures are silent. Not
/// thread-safe: the log's lock is held around every call.
class CLogFile {
public:
    explicit CLogFile(ILogServices& services) : m_services(services) {}
    ~CLogFile() { close(); }
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;

    /// `sizeLimitKB` counts 1,000 bytes; `backupCount` below 1 keeps no copies.
    void setLimits(std::int32_t sizeLimitKB, std::int32_t backupCount);

    /// Closes the file in use and takes over another path; a file that is there is kept and appended to.
    void use(const std::string& path);

    /// Writes one line with the local date and time before it, then rotates when the file is past its limit.
    void writeLine(const char* text);

    /// Until the next line.
    void close();

private:
    void startNew();
    void rotate();
    void readFileNumber();

    ILogServices& m_services;
    std::string m_path;
    std::FILE* m_file = nullptr;
    std::int32_t m_fileNumber = 0;
    std::int32_t m_backupCount = 1;
    std::int32_t m_sizeLimitKB = 10000;
    std::int64_t m_lastKnownPosition = 0;
};

} // namespace tarvo::diagnostics
