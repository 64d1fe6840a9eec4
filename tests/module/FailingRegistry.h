#pragma once

#include "platform/registry/MemoryRegistry.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tarvo::tests {

/// A registry in memory of which one call to change it fails, and which knows what was left open.
class CFailingRegistry : public platform::IRegistry {
    using Error = platform::RegistryError;
    using Key = platform::RegistryKey;

public:
    explicit CFailingRegistry(std::string_view regFile = {}) : m_registry(regFile) {}

    /// After so many more calls that succeed.
    void failOnceAfter(int calls, Error error) {
        m_callsLeft = calls;
        m_error = error;
    }

    std::string regFile() const { return m_registry.regFile(); }
    int openKeys() const { return static_cast<int>(m_open.size()); }

    Error openKey(Key parent, const char* path, Key& key) override {
        return noted(m_registry.openKey(parent, path, key), key);
    }
    Error createKey(Key parent, std::string_view path, Key& key) override {
        if (const std::optional<Error> error = failure())
            return *error;
        return noted(m_registry.createKey(parent, path, key), key);
    }
    void closeKey(Key key) override {
        m_open.erase(key);
        m_registry.closeKey(key);
    }
    Error queryValue(Key key, const char* name, std::uint32_t& type, void* data,
                     std::uint32_t& size) override {
        return m_registry.queryValue(key, name, type, data, size);
    }
    Error setString(Key key, std::string_view name, std::string_view text, std::uint32_t type) override {
        const std::optional<Error> error = failure();
        return error ? *error : m_registry.setString(key, name, text, type);
    }
    Error setDword(Key key, std::string_view name, std::uint32_t value) override {
        const std::optional<Error> error = failure();
        return error ? *error : m_registry.setDword(key, name, value);
    }
    Error setBinary(Key key, std::string_view name, const void* data, std::size_t size) override {
        const std::optional<Error> error = failure();
        return error ? *error : m_registry.setBinary(key, name, data, size);
    }
    Error deleteValue(Key key, std::string_view name) override {
        const std::optional<Error> error = failure();
        return error ? *error : m_registry.deleteValue(key, name);
    }
    Error deleteKey(Key parent, std::string_view path) override {
        const std::optional<Error> error = failure();
        return error ? *error : m_registry.deleteKey(parent, path);
    }
    Error deleteTree(Key parent, std::string_view path) override {
        const std::optional<Error> error = failure();
        return error ? *error : m_registry.deleteTree(parent, path);
    }
    Error subkeys(Key key, std::vector<std::string>& names) override {
        return m_registry.subkeys(key, names);
    }

private:
    std::optional<Error> failure() {
        if (m_callsLeft < 0 || m_callsLeft-- > 0)
            return std::nullopt;
        return m_error;
    }

    Error noted(Error error, const Key& key) {
        if (error == platform::registryError::success)
            m_open.insert(key);
        return error;
    }

    platform::CMemoryRegistry m_registry;
    std::set<Key> m_open;
    int m_callsLeft = -1;
    Error m_error = platform::registryError::success;
};

} // namespace tarvo::tests
