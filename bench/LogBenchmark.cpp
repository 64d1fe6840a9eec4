#include "bench/AllocationCount.h"
#include "diagnostics/Log.h"
#include "diagnostics/LogLine.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <new>

// What a line costs that nobody wants, and one that goes to a file.

namespace tarvo::diagnostics {
namespace {

Log& quietLog() {
    static Log log(systemLogServices());
    static const bool isQuiet = [] {
        log.SetModule("TvVideoTransform", 0);
        return true;
    }();
    benchmark::DoNotOptimize(isQuiet);
    return log;
}

void filteredLine(benchmark::State& state) {
    Log& log = quietLog();
    int frame = 0;
    const long before = bench::allocationCount();
    for (auto _ : state) {
        TARVO_LOG(log, LogCategory::information, 1, "bench", "frame %d", frame);
        benchmark::DoNotOptimize(++frame);
    }
    if (state.threads() == 1 && bench::allocationCount() != before) {
        state.SkipWithError("a filtered line allocated");
    }
    // Threads together: what the harness itself allocates in the loop is nothing.
    state.counters["allocations"] = static_cast<double>(bench::allocationCount() - before);
}
BENCHMARK(filteredLine);
// A lock would show here: the time of a line would grow with the threads that log.
BENCHMARK(filteredLine)->Threads(2);

void lineToFile(benchmark::State& state) {
    Log log(systemLogServices());
    log.SetModule("TvVideoTransform", 0);
    log.SetFileOutput("/dev/null", 2, 10000, 0);
    int frame = 0;
    for (auto _ : state) {
        TARVO_LOG(log, LogCategory::information, 1, "bench", "frame %d", ++frame);
    }
}
BENCHMARK(lineToFile);

} // namespace
} // namespace tarvo::diagnostics
