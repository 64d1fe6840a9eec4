#include "tests/com/FailingNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// Negative: without limit.
thread_local int allocationsLeft = -1;

} // namespace

void* operator new(std::size_t size) {
    if (allocationsLeft == 0)
        throw std::bad_alloc();
    if (allocationsLeft > 0)
        --allocationsLeft;
    if (void* memory = std::malloc(size != 0 ? size : 1); memory != nullptr)
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace tarvo::com {

CFailingNew::CFailingNew(int granted) noexcept {
    allocationsLeft = granted;
}
CFailingNew::~CFailingNew() {
    allocationsLeft = -1;
}

} // namespace tarvo::com
