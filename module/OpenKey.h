#pragma once

#include "com/Guarded.h"
#include "platform/Registry.h"

#include <string>
#include <utility>

namespace tarvo::module {

/// The HRESULT of a registry error.
inline HRESULT resultOf(platform::RegistryError error) {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

inline void throwIfRegistryFailed(platform::RegistryError error) {
    if (error != platform::registryError::success)
        throw com::CComError(resultOf(error));
}

/// For removals: what is not there needs none.
inline void throwUnlessGone(platform::RegistryError error) {
    if (error != platform::registryError::fileNotFound)
        throwIfRegistryFailed(error);
}

/// Owns an open registry key, or none.
class COpenKey {
public:
    COpenKey(platform::IRegistry& registry, platform::RegistryKey key) noexcept
        : m_registry(&registry), m_key(key) {}
    COpenKey(COpenKey&& other) noexcept
        : m_registry(other.m_registry), m_key(std::exchange(other.m_key, platform::noRegistryKey)) {}
    COpenKey& operator=(COpenKey&& other) noexcept {
        std::swap(m_registry, other.m_registry);
        std::swap(m_key, other.m_key);
        return *this;
    }
    ~COpenKey() {
        if (m_key != platform::noRegistryKey)
            m_registry->closeKey(m_key);
    }

    /// Makes the key where absent; for reading and writing.
    static COpenKey create(platform::IRegistry& registry, platform::RegistryKey parent,
                           const std::string& path) {
        platform::RegistryKey key = platform::noRegistryKey;
        throwIfRegistryFailed(registry.createKey(parent, path, key));
        return {registry, key};
    }
    /// None if there is no such key; for reading.
    static COpenKey open(platform::IRegistry& registry, platform::RegistryKey parent,
                         const std::string& path) {
        platform::RegistryKey key = platform::noRegistryKey;
        throwUnlessGone(registry.openKey(parent, path.c_str(), key));
        return {registry, key};
    }

    explicit operator bool() const noexcept { return m_key != platform::noRegistryKey; }
    platform::RegistryKey get() const noexcept { return m_key; }

private:
    platform::IRegistry* m_registry;
    platform::RegistryKey m_key;
};

} // namespace tarvo::module
