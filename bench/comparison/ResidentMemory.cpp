#include "bench/comparison/ResidentMemory.h"

#include <fstream>
#include <malloc.h>
#include <stdexcept>
#include <string>

namespace tarvo::bench {
namespace {

/// A line of the system's account such as "VmRSS:  1234 kB", in bytes.
std::uint64_t statusBytes(const std::string& key) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(key + ":", 0) == 0) {
            return std::stoull(line.substr(key.size() + 1)) * 1024U;
        }
    }
    throw std::runtime_error("the system does not tell " + key);
}

std::uint64_t beyond(std::uint64_t before, std::uint64_t bytes) {
    return bytes > before ? bytes - before : 0;
}

} // namespace

CResidentMemory::CResidentMemory() {
    malloc_trim(0);
    std::ofstream peak("/proc/self/clear_refs");
    peak << "5";
    if (!peak.flush()) {
        throw std::runtime_error("the peak of the memory cannot be started anew");
    }
    m_before = statusBytes("VmRSS");
}

std::uint64_t CResidentMemory::grown() const {
    return beyond(m_before, statusBytes("VmRSS"));
}

std::uint64_t CResidentMemory::peak() const {
    return beyond(m_before, statusBytes("VmHWM"));
}

} // namespace tarvo::bench
