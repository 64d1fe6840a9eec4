#include "platform/registry/StoredRegistry.h"

#include <cstring>
#include <exception>
#include <limits>
#include <utility>

namespace tarvo::platform {
namespace {

/// Callers get error numbers, not exceptions.
template<typename Body>
RegistryError guarded(std::mutex& mutex, Body&& body) {
    try {
        const std::lock_guard lock(mutex);
        return body();
    } catch (const std::exception&) {
        return registryError::outOfMemory;
    }
}

RegistryError handOut(const RegistryValue& value, std::uint32_t& type, void* data, std::uint32_t& size) {
    if (value.data.size() > std::numeric_limits<std::uint32_t>::max())
        return registryError::outOfMemory;
    const std::uint32_t room = size;
    type = value.type;
    size = static_cast<std::uint32_t>(value.data.size());
    if (data == nullptr)
        return registryError::success;
    if (room < size)
        return registryError::moreData;
    if (size > 0)
        std::memcpy(data, value.data.data(), size);
    return registryError::success;
}

} // namespace

RegistryError CStoredRegistry::openKey(RegistryKey parent, const char* path, RegistryKey& key) {
    key = noRegistryKey;
    return guarded(m_mutex, [&]() -> RegistryError {
        const std::optional<OpenKey> above = find(parent);
        if (!above)
            return registryError::invalidHandle;
        const std::optional<std::string> full = joinPath(above->path, path != nullptr ? path : "");
        if (!full)
            return registryError::badPathname;
        const CRegistryTree& tree = m_store.tree();
        if (const RegistryError error = check(*above, tree); error != registryError::success)
            return error;
        const bool isSame = *full == above->path;
        if (!isSame && tree.find(*full) == nullptr)
            return registryError::fileNotFound;
        key = add({*full, false, isSame && above->isRoot});
        return registryError::success;
    });
}

RegistryError CStoredRegistry::createKey(RegistryKey parent, std::string_view path, RegistryKey& key) {
    key = noRegistryKey;
    return guarded(m_mutex, [&]() -> RegistryError {
        const std::optional<OpenKey> above = find(parent);
        if (!above)
            return registryError::invalidHandle;
        const std::optional<std::string> full = joinPath(above->path, path);
        if (!full)
            return registryError::badPathname;
        RegistryError error = check(*above, m_store.tree());
        if (error == registryError::success && m_store.tree().find(*full) == nullptr) {
            error = m_store.change([&](CRegDocument& document) {
                document.makeKey(*full);
                return registryError::success;
            });
        }
        if (error == registryError::success)
            key = add({*full, true, false});
        return error;
    });
}

void CStoredRegistry::closeKey(RegistryKey key) {
    const std::lock_guard lock(m_mutex);
    m_openKeys.erase(key);
}

RegistryError CStoredRegistry::queryValue(RegistryKey key, const char* name, std::uint32_t& type, void* data,
                                          std::uint32_t& size) {
    return guarded(m_mutex, [&]() -> RegistryError {
        const std::optional<OpenKey> open = find(key);
        if (!open)
            return registryError::invalidHandle;
        const CRegistryTree& tree = m_store.tree();
        if (const RegistryError error = check(*open, tree); error != registryError::success)
            return error;
        const CRegistryTree::Key* const found = tree.find(open->path);
        if (found == nullptr)
            return registryError::fileNotFound;
        const auto value = found->values.find(std::string_view(name != nullptr ? name : ""));
        if (value == found->values.end())
            return registryError::fileNotFound;
        return handOut(value->second, type, data, size);
    });
}

RegistryError CStoredRegistry::setString(RegistryKey key, std::string_view name, std::string_view text,
                                         std::uint32_t type) {
    if (type != registryType::string && type != registryType::expandString)
        return registryError::invalidParameter;
    return guarded(m_mutex, [&] { return setValue(key, name, {type, std::string(text) + '\0'}); });
}

RegistryError CStoredRegistry::setDword(RegistryKey key, std::string_view name, std::uint32_t value) {
    return guarded(m_mutex, [&] {
        std::string data;
        for (int shift = 0; shift < 32; shift += 8)
            data += static_cast<char>((value >> shift) & 0xFF);
        return setValue(key, name, {registryType::dword, std::move(data)});
    });
}

RegistryError CStoredRegistry::setBinary(RegistryKey key, std::string_view name, const void* data,
                                         std::size_t size) {
    if (data == nullptr && size > 0)
        return registryError::invalidParameter;
    return guarded(m_mutex, [&] {
        return setValue(key, name, {registryType::binary, std::string(static_cast<const char*>(data), size)});
    });
}

RegistryError CStoredRegistry::setValue(RegistryKey key, std::string_view name, const RegistryValue& value) {
    if (!isValidValueName(name))
        return registryError::invalidParameter;
    const std::optional<OpenKey> open = find(key);
    if (!open)
        return registryError::invalidHandle;
    if (!open->isWritable)
        return registryError::accessDenied;
    return m_store.change([&](CRegDocument& document) -> RegistryError {
        const RegistryError error = check(*open, document.tree());
        if (error == registryError::success)
            document.setValue(open->path, name, value);
        return error;
    });
}

RegistryError CStoredRegistry::deleteValue(RegistryKey key, std::string_view name) {
    return guarded(m_mutex, [&]() -> RegistryError {
        const std::optional<OpenKey> open = find(key);
        if (!open)
            return registryError::invalidHandle;
        if (!open->isWritable)
            return registryError::accessDenied;
        return m_store.change([&](CRegDocument& document) -> RegistryError {
            const CRegistryTree tree = document.tree();
            if (const RegistryError error = check(*open, tree); error != registryError::success)
                return error;
            const CRegistryTree::Key* const found = tree.find(open->path);
            if (found == nullptr || !found->values.contains(name))
                return registryError::fileNotFound;
            document.removeValue(open->path, name);
            return registryError::success;
        });
    });
}

RegistryError CStoredRegistry::deleteKey(RegistryKey parent, std::string_view path) {
    return removeKey(parent, path, Below::mustBeEmpty);
}

RegistryError CStoredRegistry::deleteTree(RegistryKey parent, std::string_view path) {
    return removeKey(parent, path, Below::goesToo);
}

RegistryError CStoredRegistry::removeKey(RegistryKey parent, std::string_view path, Below below) {
    if (path.empty())
        return registryError::invalidParameter;
    return guarded(m_mutex, [&]() -> RegistryError {
        const std::optional<OpenKey> above = find(parent);
        if (!above)
            return registryError::invalidHandle;
        const std::optional<std::string> full = joinPath(above->path, path);
        if (!full || *full == above->path)
            return registryError::badPathname;
        return m_store.change([&](CRegDocument& document) -> RegistryError {
            const CRegistryTree tree = document.tree();
            const CRegistryTree::Key* const found = tree.find(*full);
            if (found == nullptr)
                return registryError::fileNotFound;
            if (below == Below::mustBeEmpty && !found->subkeys.empty())
                return registryError::accessDenied;
            document.removeKey(*full);
            return registryError::success;
        });
    });
}

RegistryError CStoredRegistry::subkeys(RegistryKey key, std::vector<std::string>& names) {
    names.clear();
    return guarded(m_mutex, [&]() -> RegistryError {
        const std::optional<OpenKey> open = find(key);
        if (!open)
            return registryError::invalidHandle;
        const CRegistryTree& tree = m_store.tree();
        const RegistryError error = check(*open, tree);
        if (const CRegistryTree::Key* const found = tree.find(open->path); found != nullptr) {
            for (const auto& [name, subkey] : found->subkeys)
                names.push_back(name);
        }
        return error;
    });
}

std::optional<CStoredRegistry::OpenKey> CStoredRegistry::find(RegistryKey key) const {
    if (key == localMachine || key == classesRoot)
        return OpenKey{pathFromFile(key == localMachine ? "HKLM" : "HKCR").value(), true, true};
    const auto open = m_openKeys.find(key);
    if (open == m_openKeys.end())
        return std::nullopt;
    return open->second;
}

RegistryKey CStoredRegistry::add(OpenKey key) {
    const RegistryKey number = m_nextKey++;
    m_openKeys.emplace(number, std::move(key));
    return number;
}

RegistryError CStoredRegistry::check(const OpenKey& key, const CRegistryTree& tree) {
    const bool isThere = key.isRoot || tree.find(key.path) != nullptr;
    return isThere ? registryError::success : registryError::keyDeleted;
}

} // namespace tarvo::platform
