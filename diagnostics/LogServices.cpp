#include "diagnostics/LogServices.h"

#include "diagnostics/RegKeyRead.h"
#include "platform/DebuggerChannel.h"
#include "platform/Files.h"

namespace tarvo::diagnostics {
namespace {

class CSystemLogServices final : public ILogServices {
public:
    platform::IRegistry& registry() override { return platform::systemRegistry(); }
    void sleep(std::chrono::milliseconds duration) override { RegKeyRead::sleepOnThisThread(duration); }
    void writeToDebugger(const char* text) override { platform::writeToDebugger(text); }
    platform::LocalTime localTime() override { return platform::localTime(); }
    std::FILE* openFile(const char* path, const char* mode) override {
        return platform::openFile(path, mode);
    }
    std::int64_t filePosition(std::FILE* file) override { return platform::filePosition(file); }
    bool copyFile(const char* from, const char* to) override { return platform::copyFile(from, to); }
    void grantAccessToEveryone(const char* path) override { platform::grantAccessToEveryone(path); }
};

} // namespace

ILogServices& systemLogServices() {
    // The module's log asks for it while it is made, so this is the later to go.
    static CSystemLogServices services;
    return services;
}

} // namespace tarvo::diagnostics
