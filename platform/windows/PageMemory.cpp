#include "platform/PageMemory.h"

#include <windows.h>

namespace tarvo::platform {

void* allocatePages(std::size_t bytes) noexcept {
    return ::VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void releasePages(void* pages, std::size_t) noexcept {
    ::VirtualFree(pages, 0, MEM_RELEASE);
}

} // namespace tarvo::platform
