#pragma once

#include <cstdint>
#include <cstdio>

namespace tarvo::platform {

/// Paths are in the system's narrow encoding; natively UTF-8. Null and empty ones fail like names of no file.

/// Opens a file as fopen does with the same mode ("r", "w", "a", each perhaps with "+", "b" or "t"); null on
/// failure. Others may read and write it meanwhile, and child processes do not inherit it natively. A
/// directory fails on every system, a pipe never keeps the caller waiting, and natively none is opened for
/// writing.
[[nodiscard]] std::FILE* openFile(const char* path, const char* mode);

/// Where the next byte goes, in bytes from the start as the system counts them; negative when that cannot be
/// told.
std::int64_t filePosition(std::FILE* file);

/// Copies a file's content, overwriting the target; false on failure. Natively the target is replaced at once
/// where the folder allows that, so that a failure leaves it as it was; else a file that may be written is
/// written over. Never a device or directory.
[[nodiscard]] bool copyFile(const char* from, const char* to);

/// Lets everyone read and write the file. Failures are silent.
void grantAccessToEveryone(const char* path);

} // namespace tarvo::platform
