#pragma once

#include "render/software/AlignedBytes.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <vector>

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

/// Blocks as the system gives them, which can be looked at: those that nobody wrote to cost no memory.
struct WatchedMemory {
    struct Block {
        unsigned char* data;
        std::size_t size;
    };
    static inline std::mutex lock;
    static inline std::vector<Block> blocks;

    static void* allocate(std::size_t bytes) {
        const std::lock_guard guard(lock);
        blocks.push_back({static_cast<unsigned char*>(std::calloc(bytes, 1)), bytes});
        return blocks.back().data;
    }
    static void release(void* block, std::size_t) {
        const std::lock_guard guard(lock);
        std::erase_if(blocks, [&](const Block& each) { return each.data == block; });
        std::free(block);
    }
    /// Of the blocks of at least so many bytes, those that hold anything but zeros.
    static int written(std::size_t bytes) {
        const std::lock_guard guard(lock);
        return static_cast<int>(std::count_if(blocks.begin(), blocks.end(), [&](const Block& each) {
            return each.size >= bytes && std::any_of(each.data, each.data + each.size,
                                                     [](unsigned char byte) { return byte != 0; });
        }));
    }
    static constexpr MemorySource source{allocate, release};
};

} // namespace tarvo::render::software
