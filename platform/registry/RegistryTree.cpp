#include "platform/registry/RegistryTree.h"

namespace tarvo::platform {

const CRegistryTree::Key* CRegistryTree::find(std::string_view path) const {
    const Key* key = &m_root;
    for (const std::string_view name : pathNames(path)) {
        const auto subkey = key->subkeys.find(name);
        if (subkey == key->subkeys.end())
            return nullptr;
        key = subkey->second.get();
    }
    return key;
}

CRegistryTree::Key& CRegistryTree::make(std::string_view path) {
    Key* key = &m_root;
    for (const std::string_view name : pathNames(path)) {
        auto subkey = key->subkeys.find(name);
        if (subkey == key->subkeys.end())
            subkey = key->subkeys.emplace(name, std::make_unique<Key>()).first;
        key = subkey->second.get();
    }
    return *key;
}

void CRegistryTree::remove(std::string_view path) {
    Key* key = &m_root;
    Key* parent = nullptr;
    std::string_view lastName;
    for (const std::string_view name : pathNames(path)) {
        const auto subkey = key->subkeys.find(name);
        if (subkey == key->subkeys.end())
            return;
        parent = key;
        lastName = name;
        key = subkey->second.get();
    }
    if (parent == nullptr)
        m_root = {};
    else
        parent->subkeys.erase(parent->subkeys.find(lastName));
}

} // namespace tarvo::platform
