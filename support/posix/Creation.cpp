#include "support/Creation.h"

#include "com/Guarded.h"
#include "platform/Registry.h"
#include "platform/Utf16.h"
#include "support/ModuleLoader.h"

#include <optional>
#include <string>

namespace tarvo::support {
namespace {

using namespace tarvo::platform;

/// The default value of a key below the classes, if it is a text; in UTF-8.
std::optional<std::string> defaultText(const std::string& path) {
    IRegistry& registry = systemRegistry();
    RegistryKey key = noRegistryKey;
    if (registry.openKey(classesRoot, path.c_str(), key) != registryError::success)
        return std::nullopt;
    std::uint32_t type = registryType::none;
    std::uint32_t size = 0;
    std::string text;
    RegistryError error = registry.queryValue(key, nullptr, type, nullptr, size);
    if (error == registryError::success) {
        text.resize(size);
        error = registry.queryValue(key, nullptr, type, text.data(), size);
    }
    registry.closeKey(key);
    if (error != registryError::success || type != registryType::string)
        return std::nullopt;
    // Up to the terminator, which counts.
    return text.substr(0, text.find('\0'));
}

HRESULT identityFromText(const std::string& text, CLSID& id) {
    const std::u16string wide = utf16FromUtf8(text);
    return CLSIDFromString(wide.c_str(), &id);
}

std::string textOf(const CLSID& id) {
    OLECHAR text[39] = {};
    StringFromGUID2(id, text, 39);
    return utf8FromUtf16(std::u16string(text, 38));
}

} // namespace

HRESULT findClass(std::string_view name, CLSID& id) noexcept {
    id = {};
    return com::guarded([&]() -> HRESULT {
        if (name.starts_with('{'))
            return identityFromText(std::string(name), id);
        // Names with a backslash or a zero would be taken for other keys.
        if (name.empty() || name.find_first_of(std::string_view("\\\0", 2)) != std::string_view::npos)
            return CO_E_CLASSSTRING;
        const std::optional<std::string> text = defaultText(std::string(name) + "\\CLSID");
        return text ? identityFromText(*text, id) : CO_E_CLASSSTRING;
    });
}

HRESULT createInstance(const CLSID& id, IUnknown* outer, REFIID iid, void** object) noexcept {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    return com::guarded([&]() -> HRESULT {
        const std::optional<std::string> path = defaultText("CLSID\\" + textOf(id) + "\\InprocServer32");
        return path ? moduleLoader().createInstance(*path, id, outer, iid, object) : REGDB_E_CLASSNOTREG;
    });
}

void freeUnusedModules() noexcept {
    moduleLoader().freeUnused();
}

} // namespace tarvo::support
