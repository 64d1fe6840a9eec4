#pragma once

#include "platform/registry/RegistryPath.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace tarvo::platform {

/// The data of a value as readers get it: texts in UTF-8 with their terminator.
struct RegistryValue {
    std::uint32_t type = 0;
    std::string data;

    bool operator==(const RegistryValue&) const = default;
};

/// The keys and values below localMachine; paths as in RegistryPath.h.
class CRegistryTree {
public:
    struct Key {
        std::map<std::string, std::unique_ptr<Key>, NameLess> subkeys;
        std::map<std::string, RegistryValue, NameLess> values;
    };

    /// Null if there is no such key.
    const Key* find(std::string_view path) const;
    /// The key, made with all those above it where absent.
    Key& make(std::string_view path);
    /// Removes the key with all below it; localMachine itself loses all it has and stays.
    void remove(std::string_view path);

private:
    Key m_root;
};

} // namespace tarvo::platform
