#include "apps/tarvo-dewarp/video/Interruption.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>

namespace tarvo::apps::video {
namespace {

std::atomic<int> askedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

extern "C" void noteSignal(int signal) {
    askedSignal = signal;
}

#ifdef _WIN32

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGBREAK};
std::array<void (*)(int), endingSignals.size()> formerHandlers;

// The library takes a handler away with its first signal.
void setHandlers() {
    for (std::size_t i = 0; i < endingSignals.size(); ++i) {
        formerHandlers[i] = std::signal(endingSignals[i], noteSignal);
    }
}

void restoreHandlers() {
    for (std::size_t i = 0; i < endingSignals.size(); ++i) {
        std::signal(endingSignals[i], formerHandlers[i]);
    }
}

#else

constexpr std::array handledSignals{SIGINT, SIGTERM, SIGPIPE};
std::array<struct sigaction, handledSignals.size()> formerActions;

void setHandlers() {
    for (std::size_t i = 0; i < handledSignals.size(); ++i) {
        struct sigaction action {};
        sigemptyset(&action.sa_mask);
        // Without SA_RESTART a signal also ends waiting for input.
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        action.sa_handler = noteSignal;
        if (handledSignals[i] == SIGPIPE) {
            action.sa_flags = 0;
            action.sa_handler = SIG_IGN;
        }
        sigaction(handledSignals[i], &action, &formerActions[i]);
        // A shell that starts a program in the background may have it ignore Ctrl-C: that holds.
        if (handledSignals[i] != SIGPIPE && formerActions[i].sa_handler == SIG_IGN) {
            sigaction(handledSignals[i], &formerActions[i], nullptr);
        }
    }
}

void restoreHandlers() {
    for (std::size_t i = 0; i < handledSignals.size(); ++i) {
        sigaction(handledSignals[i], &formerActions[i], nullptr);
    }
}

#endif

} // namespace

CInterruption::CInterruption() {
    askedSignal = 0;
    setHandlers();
}

CInterruption::~CInterruption() {
    restoreHandlers();
    askedSignal = 0;
}

bool CInterruption::isAsked() {
    return askedSignal != 0;
}

void CInterruption::check() {
    if (const int signal = askedSignal; signal != 0) {
        throw Interrupted{signal};
    }
}

} // namespace tarvo::apps::video
