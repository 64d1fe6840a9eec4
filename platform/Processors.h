#pragma once

namespace tarvo::platform {

/// How many processors this process may run on at once, at least 1: those of the machine, or fewer where the
/// process was bound to some of them. Asked of the system each time. Any thread.
int usableProcessors();

} // namespace tarvo::platform
