#include "bench/comparison/Processors.h"

#include "bench/measure/Times.h"

#include <cstring>
#include <fstream>
#include <future>
#include <sched.h>
#include <set>
#include <stdexcept>

namespace tarvo::bench {
namespace {

/// The processors that share a core with this one, as a text; the processor itself if the system does not
/// tell.
std::string coreOf(int processor) {
    const std::string number = std::to_string(processor);
    std::ifstream file("/sys/devices/system/cpu/cpu" + number + "/topology/thread_siblings_list");
    std::string siblings;
    return std::getline(file, siblings) ? siblings : number;
}

constexpr std::size_t blockBytes = 64U << 20U;

} // namespace

std::vector<int> usableProcessors() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) != 0) {
        throw std::runtime_error("the system does not tell which processors there are");
    }
    std::vector<int> first;
    std::vector<int> others;
    std::set<std::string> cores;
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &set)) {
            (cores.insert(coreOf(processor)).second ? first : others).push_back(processor);
        }
    }
    first.insert(first.end(), others.begin(), others.end());
    return first;
}

void pinToProcessors(const std::vector<int>& processors, int count) {
    if (static_cast<int>(processors.size()) < count) {
        throw std::runtime_error("there are not " + std::to_string(count) + " processors to measure on");
    }
    cpu_set_t set;
    CPU_ZERO(&set);
    for (int i = 0; i < count; ++i) {
        CPU_SET(processors[static_cast<std::size_t>(i)], &set);
    }
    if (sched_setaffinity(0, sizeof set, &set) != 0) {
        throw std::runtime_error("the process could not be kept on its processors");
    }
}

std::string processorName() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("model name", 0) == 0 && line.find(": ") != std::string::npos) {
            return line.substr(line.find(": ") + 2);
        }
    }
    return "unknown";
}

double memoryBandwidth(int threads) {
    const std::size_t share = blockBytes / static_cast<std::size_t>(threads);
    std::vector<char> from(blockBytes, 1);
    std::vector<char> to(blockBytes, 2);
    CTimes times;
    for (int run = 0; run < 8; ++run) {
        const Clock::time_point start = Clock::now();
        std::vector<std::future<void>> others;
        for (int i = 1; i < threads; ++i) {
            others.push_back(std::async(std::launch::async, [&, i] {
                std::memcpy(to.data() + share * i, from.data() + share * i, share);
            }));
        }
        std::memcpy(to.data(), from.data(), share);
        for (std::future<void>& other : others) {
            other.get();
        }
        times.add(millisecondsSince(start));
    }
    return 2.0 * static_cast<double>(share) * threads / (times.best() * 1e6);
}

} // namespace tarvo::bench
