#include "tests/support/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocations = 0;

} // namespace

// The forms for arrays and those that do not throw come here too. Types that want more than the usual
// alignment keep the library's own.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size != 0 ? size : 1); memory != nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace tarvo::tests {

int allocationCount() noexcept {
    return allocations;
}

} // namespace tarvo::tests
