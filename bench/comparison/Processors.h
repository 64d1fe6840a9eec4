#pragma once

#include <string>
#include <vector>

namespace tarvo::bench {

/// The processors that this process may use, one of each core first.
std::vector<int> usableProcessors();

/// Keeps the calling thread, and the threads it starts from now on, on the first `count` of them. Throws
/// std::runtime_error when there are fewer.
void pinToProcessors(const std::vector<int>& processors, int count);

/// The processor's name as the system has it, "unknown" if it has none.
std::string processorName();

/// Bytes a second that a plain copy moves from memory to memory, read and written ones counted, 10^9: the
/// best of several copies of blocks that no cache holds, by that many threads on the processors of the
/// caller.
double memoryBandwidth(int threads);

} // namespace tarvo::bench
