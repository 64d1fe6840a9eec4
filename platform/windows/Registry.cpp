#include "platform/Registry.h"

#include "platform/Utf16.h"

#include <exception>
#include <limits>
#include <windows.h>

namespace tarvo::platform {
namespace {

/// The roots' handles are negative numbers of 32 bits on every Windows.
HKEY handleOf(RegistryKey key) {
    if (key == localMachine)
        return HKEY_LOCAL_MACHINE;
    if (key == classesRoot)
        return HKEY_CLASSES_ROOT;
    return reinterpret_cast<HKEY>(key);
}

/// A UTF-8 text as the wide functions take it.
class CWideText {
public:
    explicit CWideText(std::string_view text) : m_text(utf16FromUtf8(text)) {}

    const WCHAR* get() const { return reinterpret_cast<const WCHAR*>(m_text.c_str()); }
    /// Terminator included.
    std::size_t sizeInBytes() const { return (m_text.size() + 1) * sizeof(WCHAR); }

private:
    std::u16string m_text;
};

/// Callers get error numbers, not exceptions.
template<typename Body>
RegistryError guarded(Body&& body) {
    try {
        return static_cast<RegistryError>(body());
    } catch (const std::exception&) {
        return registryError::outOfMemory;
    }
}

/// The wide functions would take the part before it for the name.
bool holdsTerminator(std::string_view name) {
    return name.find('\0') != std::string_view::npos;
}

LSTATUS setValue(RegistryKey key, std::string_view name, std::uint32_t type, const void* data,
                 std::size_t size) {
    if (holdsTerminator(name) || size > std::numeric_limits<DWORD>::max())
        return registryError::invalidParameter;
    return RegSetValueExW(handleOf(key), CWideText(name).get(), 0, type, static_cast<const BYTE*>(data),
                          static_cast<DWORD>(size));
}

class CWindowsRegistry : public IRegistry {
public:
    RegistryError openKey(RegistryKey parent, const char* path, RegistryKey& key) override {
        HKEY opened = nullptr;
        const LSTATUS error = RegOpenKeyExA(handleOf(parent), path, 0, KEY_READ, &opened);
        key = error == ERROR_SUCCESS ? reinterpret_cast<RegistryKey>(opened) : noRegistryKey;
        return error;
    }

    RegistryError createKey(RegistryKey parent, std::string_view path, RegistryKey& key) override {
        key = noRegistryKey;
        if (holdsTerminator(path))
            return registryError::badPathname;
        return guarded([&] {
            HKEY opened = nullptr;
            const LSTATUS error =
                RegCreateKeyExW(handleOf(parent), CWideText(path).get(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_READ | KEY_WRITE, nullptr, &opened, nullptr);
            if (error == ERROR_SUCCESS)
                key = reinterpret_cast<RegistryKey>(opened);
            return error;
        });
    }

    void closeKey(RegistryKey key) override {
        if (key != noRegistryKey)
            RegCloseKey(handleOf(key));
    }

    RegistryError queryValue(RegistryKey key, const char* name, std::uint32_t& type, void* data,
                             std::uint32_t& size) override {
        DWORD foundType = type;
        DWORD foundSize = size;
        const LSTATUS error =
            RegQueryValueExA(handleOf(key), name, nullptr, &foundType, static_cast<BYTE*>(data), &foundSize);
        if (error == ERROR_SUCCESS || error == ERROR_MORE_DATA) {
            type = foundType;
            size = foundSize;
        }
        return error;
    }

    RegistryError setString(RegistryKey key, std::string_view name, std::string_view text,
                            std::uint32_t type) override {
        if (type != registryType::string && type != registryType::expandString)
            return registryError::invalidParameter;
        return guarded([&] {
            const CWideText wide(text);
            return setValue(key, name, type, wide.get(), wide.sizeInBytes());
        });
    }

    RegistryError setDword(RegistryKey key, std::string_view name, std::uint32_t value) override {
        return guarded([&] { return setValue(key, name, registryType::dword, &value, sizeof value); });
    }

    RegistryError setBinary(RegistryKey key, std::string_view name, const void* data,
                            std::size_t size) override {
        if (data == nullptr && size > 0)
            return registryError::invalidParameter;
        return guarded([&] { return setValue(key, name, registryType::binary, data, size); });
    }

    RegistryError deleteValue(RegistryKey key, std::string_view name) override {
        if (holdsTerminator(name))
            return registryError::invalidParameter;
        return guarded([&] { return RegDeleteValueW(handleOf(key), CWideText(name).get()); });
    }

    RegistryError deleteKey(RegistryKey parent, std::string_view path) override {
        if (path.empty() || holdsTerminator(path))
            return registryError::invalidParameter;
        return guarded([&] { return RegDeleteKeyW(handleOf(parent), CWideText(path).get()); });
    }

    RegistryError deleteTree(RegistryKey parent, std::string_view path) override {
        // Without a path the system would empty the parent.
        if (path.empty() || holdsTerminator(path))
            return registryError::invalidParameter;
        return guarded([&] { return RegDeleteTreeW(handleOf(parent), CWideText(path).get()); });
    }

    RegistryError subkeys(RegistryKey key, std::vector<std::string>& names) override {
        names.clear();
        return guarded([&] {
            // No name of a key is longer than 255 characters.
            char16_t name[256];
            for (DWORD index = 0;; ++index) {
                DWORD length = 256;
                const LSTATUS error = RegEnumKeyExW(handleOf(key), index, reinterpret_cast<WCHAR*>(name),
                                                    &length, nullptr, nullptr, nullptr, nullptr);
                if (error == ERROR_NO_MORE_ITEMS)
                    return LSTATUS{ERROR_SUCCESS};
                if (error != ERROR_SUCCESS)
                    return error;
                names.push_back(utf8FromUtf16({name, length}));
            }
        });
    }
};

} // namespace

IRegistry& systemRegistry() {
    static CWindowsRegistry registry;
    return registry;
}

} // namespace tarvo::platform
