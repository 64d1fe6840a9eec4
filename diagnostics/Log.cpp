#include "diagnostics/Log.h"

#include "diagnostics/RegKey.h"
#include "platform/LastError.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <limits>
#include <thread>

namespace tarvo::diagnostics {
namespace {

constexpr std::array<const char*, 5> markers{":::", ":.:", ":E:", ":_:", ":D:"};
constexpr std::int32_t largestInstanceId = 99999;

/// The configuration as the registry holds it.
struct Configuration {
    std::uint32_t debuggerThreshold = 0;
    std::uint32_t fileThreshold = 0;
    std::uint32_t sizeLimitKB = 10000;
    std::uint32_t backupCount = 10;
    /// One byte more than a value may fill, for the terminator that a value may lack.
    std::array<char, 261> path{"c:\\log.log"};
};

void readPath(const RegKeyRead& key, Configuration& configuration) {
    constexpr std::uint32_t room = 260;
    std::array<char, 261> path = configuration.path;
    const platform::RegistryError error = key.readString("logpath", path.data(), room);
    // A value of the wrong type has been read all the same and counts.
    if (error == platform::registryError::success || error == platform::registryError::invalidDatatype) {
        path.back() = '\0';
        configuration.path = path;
    }
}

Configuration readConfiguration(ILogServices& services, const char* configurationKey) {
    const Sleeper sleep = [&services](std::chrono::milliseconds duration) { services.sleep(duration); };
    Configuration configuration;
    const RegKeyRead root(services.registry(), platform::localMachine);
    const RegKeyRead software(root, "SOFTWARE", sleep);
    if (!software.isOpen()) {
        return configuration;
    }
    const RegKeyRead maker(software, "Tarvo", sleep);
    if (!maker.isOpen()) {
        return configuration;
    }
    const RegKeyRead key(maker, configurationKey, sleep);
    if (key.isOpen()) {
        key.readDword("DBGView", configuration.debuggerThreshold);
        key.readDword("DBGFile", configuration.fileThreshold);
        key.readDword("FileSizeKB", configuration.sizeLimitKB);
        key.readDword("NbrFiles", configuration.backupCount);
        readPath(key, configuration);
    }
    return configuration;
}

/// Gives the thread's last-error value, by default the one it has, back at the end of a scope.
class CRestoredLastError {
public:
    explicit CRestoredLastError(std::uint32_t value = platform::lastError()) : m_value(value) {}
    ~CRestoredLastError() { platform::setLastError(m_value); }
    CRestoredLastError(const CRestoredLastError&) = delete;
    CRestoredLastError& operator=(const CRestoredLastError&) = delete;

private:
    std::uint32_t m_value;
};

/// Fills a line from the left and cuts off what does not fit.
class CLineBuilder {
public:
    /// `line` has room for `length` characters and the terminator.
    CLineBuilder(char* line, std::size_t length) : m_line(line), m_length(length) { m_line[0] = '\0'; }

    void append(const char* text) {
        const std::size_t count = std::min(std::strlen(text), m_length - m_used);
        std::memcpy(m_line + m_used, text, count);
        m_used += count;
        m_line[m_used] = '\0';
    }

    [[gnu::format(printf, 2, 0)]] void appendFormatted(const char* format, std::va_list arguments) {
        const int wanted = std::vsnprintf(m_line + m_used, m_length - m_used + 1, format, arguments);
        if (wanted > 0) {
            m_used += std::min(static_cast<std::size_t>(wanted), m_length - m_used);
        }
        m_line[m_used] = '\0';
    }

    std::size_t used() const { return m_used; }

private:
    char* m_line;
    std::size_t m_length;
    std::size_t m_used = 0;
};

} // namespace

Log moduleLog(systemLogServices());

Log::Log(ILogServices& services) : m_services(services), m_file(services) {
    std::copy(markers.begin(), markers.end(), m_prefixes.begin());
}

Log::~Log() {
    // A line in the making elsewhere is still finished - but not waited for without end: a process that exits
    // may have stopped a thread in the middle of one.
    std::unique_lock lock(m_lock, std::try_to_lock);
    for (int attempt = 0; !lock.owns_lock() && attempt < 100; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        (void)lock.try_lock();
    }
    m_debuggerThreshold = std::numeric_limits<std::int32_t>::min();
    m_fileThreshold = std::numeric_limits<std::int32_t>::min();
    if (lock.owns_lock()) {
        m_file.close();
    }
}

std::int32_t Log::Register(const char* moduleTag, const char* configurationKey) {
    const CRestoredLastError restored;
    const std::lock_guard guard(m_lock);
    if (++m_instanceCounter > largestInstanceId) {
        m_instanceCounter = 1;
    }
    const std::int32_t id = m_instanceCounter;
    if (id == 1) {
        configure(moduleTag, configurationKey);
    }
    return id;
}

void Log::configure(const char* moduleTag, const char* configurationKey) {
    Configuration configuration;
    try {
        configuration = readConfiguration(m_services, configurationKey);
    } catch (...) { // NOLINT(bugprone-empty-catch): without a configuration the defaults hold
    }
    SetModule(moduleTag, static_cast<std::int32_t>(configuration.debuggerThreshold));
    SetFileOutput(configuration.path.data(), static_cast<std::int32_t>(configuration.fileThreshold),
                  static_cast<std::int32_t>(configuration.sizeLimitKB),
                  static_cast<std::int32_t>(configuration.backupCount));
}

void Log::SetModule(const char* moduleTag, std::int32_t debuggerThreshold) {
    const std::lock_guard guard(m_lock);
    m_debuggerThreshold = debuggerThreshold;
    try {
        for (std::size_t i = 0; i < categoryCount; ++i) {
            m_prefixes[i] = std::string(moduleTag) + markers[i];
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): lines then keep the prefix they had
    }
}

void Log::SetFileOutput(const char* path, std::int32_t fileThreshold, std::int32_t sizeLimitKB,
                        std::int32_t backupCount) {
    const CRestoredLastError restored;
    const std::lock_guard guard(m_lock);
    m_file.setLimits(sizeLimitKB, backupCount);
    m_fileThreshold = fileThreshold;
    if (fileThreshold <= 0) {
        return;
    }
    try {
        m_file.use(path);
    } catch (...) { // NOLINT(bugprone-empty-catch): lines try the file again
    }
}

bool Log::beginWanted(std::int32_t level, LogCategory category, std::int32_t instanceId,
                      const char* functionName) {
    const std::uint32_t lastError = platform::lastError();
    m_lock.lock();
    try {
        Context context{lastError, level, category, instanceId, functionName != nullptr ? functionName : ""};
        if (m_nestingCount >= 1) {
            m_savedContexts.push_back(std::move(m_context));
        }
        m_context = std::move(context);
    } catch (...) {
        // No memory for one more line: it is dropped.
        m_lock.unlock();
        platform::setLastError(lastError);
        return false;
    }
    ++m_nestingCount;
    // The arguments of the line may ask for it.
    platform::setLastError(lastError);
    return true;
}

void Log::Print(const char* format, ...) {
    // Put back last, behind the lock's own calls of the system.
    const CRestoredLastError restored(m_context.lastError);
    const std::lock_guard guard(m_lock, std::adopt_lock);
    const bool isWanted = m_context.level <= m_debuggerThreshold || m_context.level <= m_fileThreshold;
    if (isWanted) {
        CLineBuilder line(m_line.data(), lineLength);
        const auto category = static_cast<std::size_t>(m_context.category);
        line.append(m_prefixes[category < categoryCount ? category : 0].c_str());
        if (m_context.instanceId > 0) {
            char id[32];
            std::snprintf(id, sizeof id, "[%d] - ", static_cast<int>(m_context.instanceId));
            line.append(id);
        }
        if (!m_context.functionName.empty()) {
            line.append(m_context.functionName.c_str());
            line.append(" - ");
        }
        std::va_list arguments;
        va_start(arguments, format);
        line.appendFormatted(format, arguments);
        va_end(arguments);
        emit(line.used());
    }
    endLine();
}

void Log::Drop() noexcept {
    const CRestoredLastError restored(m_context.lastError);
    const std::lock_guard guard(m_lock, std::adopt_lock);
    endLine();
}

void Log::endLine() noexcept {
    if (m_nestingCount > 1) {
        m_context = std::move(m_savedContexts.back());
        m_savedContexts.pop_back();
    }
    --m_nestingCount;
}

void Log::emit(std::size_t length) {
    try {
        if (m_context.level <= m_debuggerThreshold) {
            m_line[length] = '\n';
            m_line[length + 1] = '\0';
            m_services.writeToDebugger(m_line.data());
            m_line[length] = '\0';
        }
        if (m_context.level <= m_fileThreshold) {
            m_file.writeLine(m_line.data());
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): a line never fails its caller
    }
}

} // namespace tarvo::diagnostics
