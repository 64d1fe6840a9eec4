#pragma once

namespace tarvo::tests {

/// How many times this thread has called operator new, in a program that links AllocationCount.cpp.
int allocationCount() noexcept;

} // namespace tarvo::tests
