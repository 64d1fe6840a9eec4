#pragma once

#include "platform/InterfaceTypes.h"
#include "platform/Utf16.h"
#include "tests/module/Snapshot.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarvo::tests {

inline void addSystemKeys(Snapshot& snapshot, const std::string& path, HKEY key) {
    using platform::utf8FromUtf16;
    WCHAR name[256];
    for (DWORD index = 0;; ++index) {
        DWORD length = 256;
        DWORD type = 0;
        std::vector<BYTE> data(4096);
        DWORD size = static_cast<DWORD>(data.size());
        const LSTATUS error = RegEnumValueW(key, index, name, &length, nullptr, &type, data.data(), &size);
        if (error == ERROR_NO_MORE_ITEMS)
            break;
        ASSERT_EQ(error, ERROR_SUCCESS);
        std::string bytes(data.begin(), data.begin() + size);
        if (type == REG_SZ)
            bytes = platform::utf8FromUtf16Bytes(bytes);
        snapshot[path][utf8FromUtf16(std::u16string(name, name + length))] = describe(type, bytes);
    }
    for (DWORD index = 0;; ++index) {
        DWORD length = 256;
        const LSTATUS error = RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_NO_MORE_ITEMS)
            break;
        ASSERT_EQ(error, ERROR_SUCCESS);
        const std::string below = utf8FromUtf16(std::u16string(name, name + length));
        const std::string belowPath = path.empty() ? below : path + '\\' + below;
        snapshot[belowPath];
        HKEY opened = nullptr;
        ASSERT_EQ(RegOpenKeyExW(key, name, 0, KEY_READ, &opened), ERROR_SUCCESS);
        addSystemKeys(snapshot, belowPath, opened);
        RegCloseKey(opened);
    }
}

/// With key names in capitals: the system has its own spelling of those that it writes, and finds all of them
/// in any case.
inline Snapshot inCapitals(const Snapshot& snapshot) {
    Snapshot result;
    for (const auto& [path, values] : snapshot) {
        std::string changed = path;
        for (char& c : changed)
            c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
        result[changed] = values;
    }
    return result;
}

/// Of the system's HKEY_CLASSES_ROOT, which a test has redirected to a key of its own; in capitals.
inline Snapshot systemSnapshot() {
    Snapshot snapshot;
    addSystemKeys(snapshot, "", HKEY_CLASSES_ROOT);
    return inCapitals(snapshot);
}

/// Without the keys of type libraries and their interfaces; `snapshot` is in capitals.
inline Snapshot withoutTypes(const Snapshot& snapshot) {
    Snapshot rest;
    for (const auto& [path, values] : snapshot) {
        const std::string first = path.substr(0, path.find('\\'));
        if (first != "TYPELIB" && first != "INTERFACE")
            rest[path] = values;
    }
    return rest;
}

} // namespace tarvo::tests
