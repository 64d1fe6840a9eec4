#include "platform/ModuleResources.h"

#include "platform/windows/OwnModule.h"

namespace tarvo::platform {

std::span<const std::byte> findModuleResource(const char* type, std::uint16_t id) {
    // A null type or id would be taken for a number.
    if (type == nullptr || *type == '\0' || id == 0)
        return {};
    const HMODULE module = ownModule();
    const HRSRC place = FindResourceA(module, MAKEINTRESOURCEA(id), type);
    if (place == nullptr)
        return {};
    const HGLOBAL loaded = LoadResource(module, place);
    if (loaded == nullptr)
        return {};
    const auto* const bytes = static_cast<const std::byte*>(LockResource(loaded));
    if (bytes == nullptr)
        return {};
    return {bytes, SizeofResource(module, place)};
}

} // namespace tarvo::platform
