#include "platform/Processors.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <thread>
#include <windows.h>

namespace tarvo::platform {

int usableProcessors() {
    DWORD_PTR process = 0;
    DWORD_PTR system = 0;
    const auto machine = static_cast<int>(std::thread::hardware_concurrency());
    // A machine of several processor groups answers with nothing: the process is not bound there.
    const bool isKnown =
        ::GetProcessAffinityMask(::GetCurrentProcess(), &process, &system) != 0 && process != 0;
    const int count =
        isKnown && process != system ? std::popcount(static_cast<std::uint64_t>(process)) : machine;
    return std::max(count, 1);
}

} // namespace tarvo::platform
