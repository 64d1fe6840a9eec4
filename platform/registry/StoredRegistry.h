#pragma once

#include "platform/Registry.h"
#include "platform/registry/RegDocument.h"
#include "platform/registry/RegistryTree.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace tarvo::platform {

/// Where the registry file of a CStoredRegistry is kept. Called under its lock.
class IRegistryStore {
public:
    virtual ~IRegistryStore() = default;

    /// The keys as they are now; stands until the next call.
    virtual const CRegistryTree& tree() = 0;
    /// Lets `edit` change the newest document and, when that says success, keeps what became of it.
    virtual RegistryError change(const std::function<RegistryError(CRegDocument&)>& edit) = 0;
};

/// A registry over a document in the registry editor's format.
class CStoredRegistry : public IRegistry {
public:
    /// The store must outlive the registry.
    explicit CStoredRegistry(IRegistryStore& store) : m_store(store) {}

    RegistryError openKey(RegistryKey parent, const char* path, RegistryKey& key) override;
    RegistryError createKey(RegistryKey parent, std::string_view path, RegistryKey& key) override;
    void closeKey(RegistryKey key) override;
    RegistryError queryValue(RegistryKey key, const char* name, std::uint32_t& type, void* data,
                             std::uint32_t& size) override;
    RegistryError setString(RegistryKey key, std::string_view name, std::string_view text,
                            std::uint32_t type) override;
    RegistryError setDword(RegistryKey key, std::string_view name, std::uint32_t value) override;
    RegistryError setBinary(RegistryKey key, std::string_view name, const void* data,
                            std::size_t size) override;
    RegistryError deleteValue(RegistryKey key, std::string_view name) override;
    RegistryError deleteKey(RegistryKey parent, std::string_view path) override;
    RegistryError deleteTree(RegistryKey parent, std::string_view path) override;
    RegistryError subkeys(RegistryKey key, std::vector<std::string>& names) override;

private:
    /// An open key is a path, not an object: the key may go and come back meanwhile.
    struct OpenKey {
        std::string path;
        bool isWritable;
        /// One of the roots, which are there even when no file speaks of them.
        bool isRoot;
    };

    std::optional<OpenKey> find(RegistryKey key) const;
    RegistryKey add(OpenKey key);
    static RegistryError check(const OpenKey& key, const CRegistryTree& tree);
    RegistryError setValue(RegistryKey key, std::string_view name, const RegistryValue& value);
    enum class Below { mustBeEmpty, goesToo };
    RegistryError removeKey(RegistryKey parent, std::string_view path, Below below);

    std::mutex m_mutex;
    IRegistryStore& m_store;
    std::unordered_map<RegistryKey, OpenKey> m_openKeys;
    /// Never used twice, so that a closed key is known as such; beyond the numbers of the roots.
    RegistryKey m_nextKey = 0x1'0000'0000;
};

} // namespace tarvo::platform
