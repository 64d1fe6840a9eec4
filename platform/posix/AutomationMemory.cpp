// The allocator that callers and callees of an interface share.

#include "platform/InterfaceTypes.h"

#include <cstdlib>

void* WINAPI CoTaskMemAlloc(SIZE_T size) {
    return std::malloc(size != 0 ? size : 1);
}

void* WINAPI CoTaskMemRealloc(void* memory, SIZE_T size) {
    if (memory != nullptr && size == 0) {
        std::free(memory);
        return nullptr;
    }
    return std::realloc(memory, size != 0 ? size : 1);
}

void WINAPI CoTaskMemFree(void* memory) {
    std::free(memory);
}
