#include "tests/support/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocations = 0;

void* allocate(std::size_t size) noexcept {
    ++allocations;
    return std::malloc(size != 0 ? size : 1);
}

void* allocateOrThrow(std::size_t size) {
    if (void* memory = allocate(size); memory != nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

// Every form by itself: those of a sanitizer do not come to one another, and what one of them allocated is
// not the C library's to free. Types that want more than the usual alignment keep the library's own.
void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace tarvo::tests {

int allocationCount() noexcept {
    return allocations;
}

} // namespace tarvo::tests
