#include "platform/DebuggerChannel.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <syslog.h>
#include <unistd.h>

namespace tarvo::platform {
namespace {

/// While it lives, writing to a pipe without a reader is an error like any other and not the end of the
/// program.
class CPipeSignalGuard {
public:
    CPipeSignalGuard() {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    CPipeSignalGuard(const CPipeSignalGuard&) = delete;
    CPipeSignalGuard& operator=(const CPipeSignalGuard&) = delete;
    ~CPipeSignalGuard() {
        // The signal goes to the thread that writes, so what arrived since is ours to take.
        constexpr timespec atOnce{};
        if (!m_wasPending)
            sigtimedwait(&m_pipe, nullptr, &atOnce);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }

private:
    sigset_t m_pipe{};
    sigset_t m_before{};
    bool m_wasPending = false;
};

void writeToStandardError(std::string_view text) {
    const CPipeSignalGuard guard;
    while (!text.empty()) {
        const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
        if (count == 0 || (count < 0 && errno != EINTR))
            return;
        text.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

} // namespace

void writeToDebugger(const char* text) {
    if (text == nullptr || *text == '\0')
        return;
    const int saved = errno;
    const char* const setting = std::getenv("TARVO_DEBUG_CHANNEL");
    const std::string_view channel = setting != nullptr ? setting : "stderr";
    if (channel == "journal")
        syslog(LOG_USER | LOG_DEBUG, "%s", text);
    else if (channel != "none")
        writeToStandardError(text);
    errno = saved;
}

} // namespace tarvo::platform
