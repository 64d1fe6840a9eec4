#include "bench/comparison/Report.h"

#include "bench/comparison/Processors.h"
#include "bench/measure/Formatted.h"
#include "render/simd/InstructionSet.h"

#include <ostream>
#include <string>

namespace tarvo::bench {
namespace {

void printTable(std::ostream& out, std::span<const Result> results, int threads) {
    out << "\nThreads: " << threads << "\n\n"
        << "| work | against | ours, ms | peer, ms | ratio of the best | of the medians | wanted | hoped |\n"
        << "|---|---|---|---|---|---|---|---|\n";
    for (const Result& result : results) {
        if (result.threads != threads) {
            continue;
        }
        const Work& work = *result.work;
        out << formatted("| %s | %s | %.2f | %.2f | %.1f | %.1f | %.1f | %.1f |\n", work.text, work.peerText,
                         result.own.best(), result.peer.best(),
                         speedRatio(result.peer.best(), result.own.best()),
                         speedRatio(result.peer.median(), result.own.median()), work.wanted, work.hoped);
    }
}

} // namespace

void printMachine(std::ostream& out) {
    const std::vector<int> processors = usableProcessors();
    out << "Processor: " << processorName() << ", " << processors.size() << " usable, instruction set "
        << render::instructionSetName(render::detectInstructionSet()) << "\n";
    pinToProcessors(processors, 1);
    const double one = memoryBandwidth(1);
    pinToProcessors(processors, 2);
    const double two = memoryBandwidth(2);
    out << formatted(
        "Memory bandwidth of a plain copy, read and written bytes: %.1f GB/s with 1 thread, %.1f GB/s "
        "with 2\n",
        one, two);
}

void printOtherWork(std::ostream& out, const COtherWork& others) {
    if (const std::optional<double> share = others.share()) {
        out << formatted("\nOther work took %.0f %% of the processors meanwhile%s\n", *share * 100.0,
                         *share > 0.05 ? ": measure again when the machine is quiet" : "");
    }
}

void printResults(std::ostream& out, std::span<const Result> results) {
    for (const int threads : {1, 2}) {
        printTable(out, results, threads);
    }
    out << "\n";
    for (const Result& result : results) {
        out << formatted("ratio %s %d %.2f %.2f\n", result.work->name, result.threads,
                         speedRatio(result.peer.best(), result.own.best()),
                         speedRatio(result.peer.median(), result.own.median()));
    }
}

} // namespace tarvo::bench
