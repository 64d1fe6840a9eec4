#pragma once

#include "platform/Registry.h"
#include "platform/registry/RegDocument.h"
#include "platform/registry/RegistryTree.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace tarvo::tests {

/// Keys by their path below HKEY_CLASSES_ROOT with their values, as "s text", "d 5" or "b 0aff".
using Values = std::map<std::string, std::string>;
using Snapshot = std::map<std::string, Values>;

inline std::string describe(std::uint32_t type, std::string_view data) {
    if (type == platform::registryType::string && data.ends_with('\0'))
        return "s " + std::string(data.substr(0, data.size() - 1));
    if (type == platform::registryType::dword && data.size() == 4) {
        std::uint32_t number = 0;
        for (int index = 3; index >= 0; --index)
            number = number << 8U | static_cast<unsigned char>(data[static_cast<std::size_t>(index)]);
        return "d " + std::to_string(number);
    }
    std::string text = type == platform::registryType::binary ? "b " : "type " + std::to_string(type) + " ";
    for (const char c : data) {
        constexpr std::string_view digits = "0123456789abcdef";
        text += digits[static_cast<unsigned char>(c) >> 4U];
        text += digits[static_cast<unsigned char>(c) & 15U];
    }
    return text;
}

inline void addKeys(Snapshot& snapshot, const std::string& path, const platform::CRegistryTree::Key& key) {
    for (const auto& [name, below] : key.subkeys) {
        const std::string belowPath = path.empty() ? name : path + '\\' + name;
        Values& values = snapshot[belowPath];
        for (const auto& [valueName, value] : below->values)
            values[valueName] = describe(value.type, value.data);
        addKeys(snapshot, belowPath, *below);
    }
}

/// Of the text of a registry file.
inline Snapshot snapshotOf(const std::string& regFile) {
    const platform::CRegistryTree tree = platform::CRegDocument(regFile).tree();
    Snapshot snapshot;
    if (const platform::CRegistryTree::Key* const classes = tree.find("SOFTWARE\\Classes"))
        addKeys(snapshot, "", *classes);
    return snapshot;
}

} // namespace tarvo::tests
