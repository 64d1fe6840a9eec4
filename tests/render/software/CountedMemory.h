#pragma once

#include "render/software/AlignedBytes.h"

#include <atomic>
#include <cstdlib>

namespace tarvo::render::software {

/// Blocks as the system gives them, counted, and refused from a certain one on.
struct CountedMemory {
    static inline std::atomic<int> taken{0};
    static inline std::atomic<int> held{0};
    static inline std::atomic<int> limit{1 << 30};

    static void* allocate(std::size_t bytes) {
        if (taken >= limit)
            return nullptr;
        ++taken;
        ++held;
        return std::calloc(bytes, 1);
    }
    static void release(void* block, std::size_t) {
        --held;
        std::free(block);
    }
    static constexpr MemorySource source{allocate, release};

    CountedMemory() {
        taken = 0;
        held = 0;
        limit = 1 << 30;
    }
};

} // namespace tarvo::render::software
