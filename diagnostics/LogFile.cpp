#include "diagnostics/LogFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace tarvo::diagnostics {
namespace {

/// Where so many backups fail the next ones will too, and every thread that logs is waiting.
constexpr std::int32_t mostAttempts = 100;

constexpr const char* headerFormat = "Log File (#%d)\n";

/// A backup's name: the log's whole path, its extension included, and the number padded to two places with a
/// blank.
std::string backupName(const std::string& path, std::int32_t number) {
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, "%2d.log", static_cast<int>(number));
    return path + suffix;
}

} // namespace

void CLogFile::setLimits(std::int32_t sizeLimitKB, std::int32_t backupCount) {
    m_sizeLimitKB = sizeLimitKB;
    m_backupCount = backupCount;
}

void CLogFile::close() {
    if (m_file != nullptr) {
        std::fclose(m_file);
        m_file = nullptr;
    }
}

void CLogFile::use(const std::string& path) {
    close();
    m_path = path;
    if (std::FILE* present = m_services.openFile(m_path.c_str(), "r")) {
        std::fclose(present);
        m_services.grantAccessToEveryone(m_path.c_str());
    } else {
        startNew();
    }
}

void CLogFile::startNew() {
    // The append stream stays open: it goes on at the new end of the file.
    if (std::FILE* file = m_services.openFile(m_path.c_str(), "w")) {
        std::fprintf(file, headerFormat, static_cast<int>(m_fileNumber));
        std::fclose(file);
    }
    m_services.grantAccessToEveryone(m_path.c_str());
}

void CLogFile::writeLine(const char* text) {
    const platform::LocalTime now = m_services.localTime();
    if (m_file == nullptr) {
        m_file = m_services.openFile(m_path.c_str(), "a");
    }
    if (m_file != nullptr) {
        std::fprintf(m_file, "%02d/%02d/%02d %02d:%02d:%02d.%03i %s\n", now.month, now.day, now.year % 100,
                     now.hour, now.minute, now.second, now.millisecond, text);
        const std::int64_t position = m_services.filePosition(m_file);
        m_lastKnownPosition = position < 0 ? 0 : position;
        std::fflush(m_file);
    }
    if (m_lastKnownPosition > static_cast<std::int64_t>(m_sizeLimitKB) * 1000) {
        rotate();
        startNew();
    }
}

void CLogFile::readFileNumber() {
    std::FILE* file = m_services.openFile(m_path.c_str(), "r");
    if (file == nullptr) {
        return;
    }
    char head[32] = {};
    head[std::fread(head, 1, sizeof head - 1, file)] = '\0';
    std::fclose(file);
    constexpr std::string_view begin = "Log File (#";
    if (std::strncmp(head, begin.data(), begin.size()) != 0) {
        return;
    }
    const char* const digits = head + begin.size();
    char* end = nullptr;
    const long long number = std::strtoll(digits, &end, 10);
    // The largest number has no successor.
    if (end != digits && number > std::numeric_limits<std::int32_t>::min() &&
        number < std::numeric_limits<std::int32_t>::max()) {
        m_fileNumber = static_cast<std::int32_t>(number);
    }
}

void CLogFile::rotate() {
    readFileNumber();
    for (std::int32_t attempt = 0; attempt < std::min(m_backupCount, mostAttempts); ++attempt) {
        const std::string backup = backupName(m_path, m_fileNumber);
        ++m_fileNumber;
        if (m_fileNumber >= m_backupCount) {
            m_fileNumber = 0;
        }
        if (m_services.copyFile(m_path.c_str(), backup.c_str())) {
            m_services.grantAccessToEveryone(backup.c_str());
            return;
        }
        m_services.writeToDebugger(("Failed to backup log to file: " + backup + "\n").c_str());
    }
}

} // namespace tarvo::diagnostics
