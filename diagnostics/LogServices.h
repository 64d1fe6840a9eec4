#pragma once

#include "platform/LocalTime.h"
#include "platform/Registry.h"

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace tarvo::diagnostics {

/// What the log needs of the system, in one place so that each can be made to fail.
class ILogServices {
public:
    virtual ~ILogServices() = default;

    virtual platform::IRegistry& registry() = 0;
    virtual void sleep(std::chrono::milliseconds duration) = 0;
    virtual void writeToDebugger(const char* text) = 0;
    virtual platform::LocalTime localTime() = 0;
    /// A C stream in text mode, or null.
    virtual std::FILE* openFile(const char* path, const char* mode) = 0;
    /// Bytes from the start of the file as the system counts them; negative when that cannot be told.
    virtual std::int64_t filePosition(std::FILE* file) = 0;
    virtual bool copyFile(const char* from, const char* to) = 0;
    virtual void grantAccessToEveryone(const char* path) = 0;
};

/// The system's own; lives as long as the process.
ILogServices& systemLogServices();

} // namespace tarvo::diagnostics
