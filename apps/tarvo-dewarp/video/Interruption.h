#pragma once

#include "apps/tarvo-dewarp/Program.h"

namespace tarvo::apps::video {

/// The user, or whoever runs the program, wants it to end.
struct Interrupted {
    int signal;
};

/// As long as one of these lives, the signals that end a program (SIGINT, SIGTERM; Ctrl-C and Ctrl-Break on
/// Windows) are only noted, so that what was begun can be cleared away; a second one ends the program after
/// all. Writing to a pipe without a reader fails instead of ending the program. One at a time; the main
/// thread's.
class CInterruption {
public:
    CInterruption();
    ~CInterruption();
    CInterruption(const CInterruption&) = delete;
    CInterruption& operator=(const CInterruption&) = delete;

    /// Whether such a signal came. Any thread may ask, also without one of these.
    static bool isAsked();
    /// Throws Interrupted if one came.
    static void check();
};

/// Does the work so that it can be interrupted. The program then ends as shells count one that a signal
/// ended.
template<typename Work>
void interruptibly(const Work& work) {
    const CInterruption interruption;
    try {
        work();
    } catch (const Interrupted& interrupted) {
        throw QuietEnd{128 + interrupted.signal};
    }
}

} // namespace tarvo::apps::video
