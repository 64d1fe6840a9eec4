#include "platform/ModulePath.h"

#include <charconv>
#include <cstdint>
#include <dlfcn.h>
#include <fstream>

namespace tarvo::platform {
namespace {

/// Whether a line of the memory map, "from-to rights offset device inode path", is about the address.
bool isAbout(const std::string& line, std::uintptr_t address) {
    std::uintptr_t from = 0;
    std::uintptr_t to = 0;
    const char* const last = line.data() + line.size();
    const char* const dash = std::from_chars(line.data(), last, from, 16).ptr;
    if (dash == last || *dash != '-')
        return false;
    std::from_chars(dash + 1, last, to, 16);
    return address >= from && address < to;
}

} // namespace

std::string modulePath() {
    // The dynamic linker knows a name as it was given, perhaps relative to a folder that is no longer the
    // current one.
    const void* const self = reinterpret_cast<const void*>(&modulePath);
    std::ifstream map("/proc/self/maps");
    for (std::string line; std::getline(map, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos && isAbout(line, reinterpret_cast<std::uintptr_t>(self)))
            return line.substr(path);
    }
    Dl_info info{};
    if (dladdr(self, &info) == 0 || info.dli_fname == nullptr)
        return {};
    return info.dli_fname;
}

} // namespace tarvo::platform
