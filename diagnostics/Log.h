#pragma once

#include "diagnostics/LogFile.h"
#include "diagnostics/LogServices.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace tarvo::diagnostics {

/// What a line is about; the value picks the marker behind the module's tag.
enum class LogCategory : std::int32_t { plain = 0, detail = 1, error = 2, information = 3, debug = 4 };

/// Every line of the module is of this level: a threshold of 2 or more shows it.
inline constexpr std::int32_t usualLogLevel = 2;

/// The process-wide log: lines go to the debugger, to a file, to both or to neither, by two thresholds that
/// the first object to register reads from the registry.
///
/// Any thread may log, also while it builds the arguments of another line. A line never fails its caller,
/// throws nothing and leaves the thread's last-error value as it was before `Begin`.
class Log {
public:
    explicit Log(ILogServices& services);
    virtual ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    /// Draws an instance id, 1 … 99,999 and then from 1 again; the object that gets 1 has the configuration
    /// read, from the subkey `configurationKey` of the module's key. `moduleTag` begins every line.
    std::int32_t Register(const char* moduleTag, const char* configurationKey);

    /// Begins a line. False, at the cost of two comparisons and without a lock, when nobody wants it; else
    /// the lock is held until exactly one `Print` or `Drop` by the same thread.
    bool Begin(std::int32_t level, LogCategory category, std::int32_t instanceId, const char* functionName) {
        if (level > m_debuggerThreshold.load(std::memory_order_relaxed) &&
            level > m_fileThreshold.load(std::memory_order_relaxed)) {
            return false;
        }
        return beginWanted(level, category, instanceId, functionName);
    }

    /// Writes the line that was begun; printf-style. What is past 4,096 characters is cut off.
    [[gnu::format(printf, 2, 3)]] void Print(const char* format, ...);

    /// Ends a line that was begun without writing it, where an exception kept its arguments from being built.
    void Drop() noexcept;

    /// What every line begins with, and the level up to which lines go to the debugger.
    void SetModule(const char* moduleTag, std::int32_t debuggerThreshold);

    /// A file threshold of 0 or less leaves the file as it is. See `CLogFile` for the others.
    void SetFileOutput(const char* path, std::int32_t fileThreshold, std::int32_t sizeLimitKB,
                       std::int32_t backupCount);

private:
    /// What `Begin` says of a line.
    struct Context {
        std::uint32_t lastError = 0;
        std::int32_t level = 0;
        LogCategory category = LogCategory::plain;
        std::int32_t instanceId = 0;
        std::string functionName;
    };

    static constexpr std::size_t lineLength = 4096;
    static constexpr std::size_t categoryCount = 5;

    bool beginWanted(std::int32_t level, LogCategory category, std::int32_t instanceId,
                     const char* functionName);
    void endLine() noexcept;
    void configure(const char* moduleTag, const char* configurationKey);
    void emit(std::size_t length);

    ILogServices& m_services;
    std::recursive_mutex m_lock;
    std::atomic<std::int32_t> m_debuggerThreshold{2};
    std::atomic<std::int32_t> m_fileThreshold{0};
    std::int32_t m_instanceCounter = 0;
    std::int32_t m_nestingCount = 0;
    Context m_context;
    std::deque<Context> m_savedContexts;
    std::array<std::string, categoryCount> m_prefixes;
    /// The line being built, with room for the line feed that the debugger gets.
    std::array<char, lineLength + 2> m_line{};
    CLogFile m_file;
};

/// The module's log, there from its loading to its unloading.
extern Log moduleLog;

} // namespace tarvo::diagnostics
