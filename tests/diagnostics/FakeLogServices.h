#pragma once

#include "diagnostics/LogServices.h"
#include "platform/Files.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::diagnostics {

/// A registry of one level of keys by their path from the root, which can be told to fail.
class FakeRegistry final : public platform::IRegistry {
public:
    struct Value {
        std::uint32_t type;
        std::string bytes;
    };

    std::map<std::string, std::map<std::string, Value>> keys;
    std::function<platform::RegistryError(const std::string&)> openResult; ///< asked before the keys
    std::vector<std::string> opened;
    int openCount = 0;
    int closeCount = 0;

    platform::RegistryError openKey(platform::RegistryKey parent, const char* path,
                                    platform::RegistryKey& key) override {
        const std::string above = parent == platform::localMachine ? "" : m_open.at(parent);
        const std::string name = path;
        const std::string whole = name.empty() ? above : (above.empty() ? name : above + "\\" + name);
        opened.push_back(whole);
        if (openResult) {
            if (const auto error = openResult(whole)) {
                return error;
            }
        }
        if (keys.count(whole) == 0) {
            return platform::registryError::fileNotFound;
        }
        key = ++m_next;
        m_open[key] = whole;
        ++openCount;
        return platform::registryError::success;
    }
    void closeKey(platform::RegistryKey key) override {
        if (m_open.erase(key) == 1) {
            ++closeCount;
        }
    }
    platform::RegistryError queryValue(platform::RegistryKey key, const char* name, std::uint32_t& type,
                                       void* data, std::uint32_t& size) override {
        const auto& values = keys.at(m_open.at(key));
        const auto found = values.find(name);
        if (found == values.end()) {
            return platform::registryError::fileNotFound;
        }
        type = found->second.type;
        const auto length = static_cast<std::uint32_t>(found->second.bytes.size());
        if (length > size) {
            size = length;
            return platform::registryError::moreData;
        }
        std::memcpy(data, found->second.bytes.data(), length);
        size = length;
        return platform::registryError::success;
    }

    // The log only reads.
    platform::RegistryError createKey(platform::RegistryKey, std::string_view,
                                      platform::RegistryKey&) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError setString(platform::RegistryKey, std::string_view, std::string_view,
                                      std::uint32_t) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError setDword(platform::RegistryKey, std::string_view, std::uint32_t) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError setBinary(platform::RegistryKey, std::string_view, const void*,
                                      std::size_t) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError deleteValue(platform::RegistryKey, std::string_view) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError deleteKey(platform::RegistryKey, std::string_view) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError deleteTree(platform::RegistryKey, std::string_view) override {
        return platform::registryError::accessDenied;
    }
    platform::RegistryError subkeys(platform::RegistryKey, std::vector<std::string>&) override {
        return platform::registryError::accessDenied;
    }

private:
    std::map<platform::RegistryKey, std::string> m_open;
    platform::RegistryKey m_next = 0;
};

/// Services whose outputs are kept and whose calls can be made to fail; files are real ones.
class FakeLogServices final : public ILogServices {
public:
    static constexpr const char* configurationKey = "TARVO Dewarping Transform DMO";

    FakeRegistry fakeRegistry;
    std::vector<std::string> debuggerLines;
    std::vector<std::chrono::milliseconds> sleeps;
    std::vector<std::string> granted;
    std::vector<std::string> copies;
    std::function<bool(const std::string&)> mayCopy;
    std::function<bool(const std::string&, const std::string&)> mayOpen;
    platform::LocalTime now{2026, 11, 16, 0, 44, 58, 123};
    bool canTellPosition = true;
    std::optional<std::int64_t> position; ///< told instead of the real one

    /// Makes the registry hold the given values for the module.
    std::map<std::string, FakeRegistry::Value>& configuration() {
        fakeRegistry.keys["SOFTWARE"];
        fakeRegistry.keys["SOFTWARE\\Tarvo"];
        return fakeRegistry.keys[std::string("SOFTWARE\\Tarvo\\") + configurationKey];
    }
    void setDword(const std::string& name, std::uint32_t value) {
        std::string bytes(4, '\0');
        std::memcpy(bytes.data(), &value, 4);
        configuration()[name] = {platform::registryType::dword, bytes};
    }
    void setText(const std::string& name, const std::string& text,
                 std::uint32_t type = platform::registryType::string) {
        configuration()[name] = {type, text + '\0'};
    }

    platform::IRegistry& registry() override { return fakeRegistry; }
    void sleep(std::chrono::milliseconds duration) override { sleeps.push_back(duration); }
    void writeToDebugger(const char* text) override { debuggerLines.emplace_back(text); }
    platform::LocalTime localTime() override { return now; }
    std::FILE* openFile(const char* path, const char* mode) override {
        return mayOpen && !mayOpen(path, mode) ? nullptr : platform::openFile(path, mode);
    }
    std::int64_t filePosition(std::FILE* file) override {
        return !canTellPosition ? -1 : position ? *position : platform::filePosition(file);
    }
    bool copyFile(const char* from, const char* to) override {
        copies.emplace_back(to);
        return (!mayCopy || mayCopy(to)) && platform::copyFile(from, to);
    }
    void grantAccessToEveryone(const char* path) override {
        granted.emplace_back(path);
        platform::grantAccessToEveryone(path);
    }
};

} // namespace tarvo::diagnostics
