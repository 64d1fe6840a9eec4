#include "bench/comparison/StreamCurve.h"

#include "bench/comparison/OwnTransform.h"
#include "bench/comparison/ResidentMemory.h"
#include "bench/measure/Times.h"

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace tarvo::bench {
namespace {

/// Frames that one stream got through until it is told to stop; it starts when it is told to.
long stream(const host::CModule& module, const Work& work, const CInputs& inputs, std::atomic<int>& ready,
            const std::atomic<bool>& isRunning, const std::atomic<bool>& isOver) {
    COwnTransform own(module, work, inputs);
    int number = 0;
    while (number < CInputs::count) {
        own.frame(number++);
    }
    ++ready;
    while (!isRunning && !isOver) {
        std::this_thread::yield();
    }
    long frames = 0;
    while (!isOver) {
        own.frame(number++ % CInputs::count);
        ++frames;
    }
    return frames;
}

} // namespace

StreamFigures measureStreams(const host::CModule& module, const Work& work, const CInputs& inputs,
                             int streams, double seconds) {
    const CResidentMemory memory;
    std::atomic<int> ready{0};
    std::atomic<bool> isRunning{false};
    std::atomic<bool> isOver{false};
    std::vector<std::future<long>> threads;
    for (int i = 0; i < streams; ++i) {
        threads.push_back(std::async(std::launch::async, [&] {
            try {
                return stream(module, work, inputs, ready, isRunning, isOver);
            } catch (...) {
                // Nobody may wait for this one.
                isOver = true;
                throw;
            }
        }));
    }
    while (ready < streams && !isOver) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    isRunning = true;
    const Clock::time_point start = Clock::now();
    while (millisecondsSince(start) < seconds * 1000.0 && !isOver) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::uint64_t grown = memory.grown();
    const double elapsed = millisecondsSince(start);
    isOver = true;
    long frames = 0;
    for (std::future<long>& thread : threads) {
        frames += thread.get();
    }
    const auto outputBytes = static_cast<std::uint64_t>(work.outputWidth) * work.outputHeight / 2 * 3;
    const std::uint64_t each = grown / static_cast<std::uint64_t>(streams);
    return {static_cast<double>(frames) * 1000.0 / elapsed, each > outputBytes ? each - outputBytes : 0};
}

} // namespace tarvo::bench
