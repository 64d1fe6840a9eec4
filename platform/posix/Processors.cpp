#include "platform/Processors.h"

#include <algorithm>
#include <sched.h>
#include <thread>

namespace tarvo::platform {

int usableProcessors() {
    // Not the standard library's count, which leaves out that a process may be bound to a few processors.
    cpu_set_t set;
    CPU_ZERO(&set);
    const int count = ::sched_getaffinity(0, sizeof(set), &set) == 0
                          ? CPU_COUNT(&set)
                          : static_cast<int>(std::thread::hardware_concurrency());
    return std::max(count, 1);
}

} // namespace tarvo::platform
