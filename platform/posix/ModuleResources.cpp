#include "platform/ModuleResources.h"

#include "platform/posix/ResourceTable.h"

#include <string_view>

namespace tarvo::platform {
namespace {

extern "C" {
// The linker's names for the ends of the section; weak, as a module without resources has no such section,
// and hidden, as each module has its own.
[[gnu::weak, gnu::visibility("hidden")]] extern const ResourceRecord
    tarvoResourcesBegin[] asm("__start_tarvo_resources");
[[gnu::weak,
  gnu::visibility("hidden")]] extern const ResourceRecord tarvoResourcesEnd[] asm("__stop_tarvo_resources");
}

} // namespace

std::span<const std::byte> findModuleResource(const char* type, std::uint16_t id) {
    if (type == nullptr)
        return {};
    for (const ResourceRecord* record = tarvoResourcesBegin; record != tarvoResourcesEnd; ++record) {
        if (record->id == id && std::string_view(record->type) == type)
            return {record->begin, record->end};
    }
    return {};
}

} // namespace tarvo::platform
