#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::platform {

/// Result of a registry call: 0 is success, the others are Windows' own numbers on every system. Plain
/// numbers, and not enumerations, since the systems may return any other too.
using RegistryError = std::int32_t;

namespace registryError { // NOLINT(readability-identifier-naming): reads like an enumeration
inline constexpr RegistryError success = 0;
inline constexpr RegistryError fileNotFound = 2;
inline constexpr RegistryError pathNotFound = 3;
inline constexpr RegistryError accessDenied = 5;
inline constexpr RegistryError invalidHandle = 6;
inline constexpr RegistryError outOfMemory = 14;
inline constexpr RegistryError invalidParameter = 87;
inline constexpr RegistryError diskFull = 112;
inline constexpr RegistryError insufficientBuffer = 122;
inline constexpr RegistryError badPathname = 161;
inline constexpr RegistryError busy = 170;
inline constexpr RegistryError moreData = 234;
inline constexpr RegistryError noMoreItems = 259;
inline constexpr RegistryError registryIoFailed = 1016;
inline constexpr RegistryError keyDeleted = 1018;
inline constexpr RegistryError invalidDatatype = 1804;
} // namespace registryError

/// Types of registry values, by Windows' numbers.
namespace registryType { // NOLINT(readability-identifier-naming): likewise
inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t string = 1;
inline constexpr std::uint32_t expandString = 2;
inline constexpr std::uint32_t binary = 3;
inline constexpr std::uint32_t dword = 4;
inline constexpr std::uint32_t multiString = 7;
} // namespace registryType

/// An open key; 0 is no key. The two roots are always open and need no closing.
using RegistryKey = std::uintptr_t;
inline constexpr RegistryKey noRegistryKey = 0;
inline constexpr RegistryKey classesRoot = 0x80000000U;
inline constexpr RegistryKey localMachine = 0x80000002U;

/// The configuration store of the system: keys in a tree, named by paths with backslashes, each with values.
/// Names are found in any case of their letters and keep the spelling they were made with.
///
/// On Windows it is the registry. Elsewhere it is a text file in the format that Windows' registry editor
/// exports: the one which the environment variable TARVO_REGISTRY names, else tarvo/registry.reg in the
/// user's configuration folder (XDG_CONFIG_HOME, else ~/.config), else /etc/tarvo/registry.reg. There only
/// ASCII letters have two cases, classesRoot is localMachine's SOFTWARE\Classes, and a file that another
/// process changes is read anew.
///
/// Any thread may call; nothing is thrown. An unreadable store is an empty one to the readers; the writers
/// fail.
class IRegistry {
public:
    virtual ~IRegistry() = default;

    /// Opens the subkey `path` of `parent` for reading; an empty or null path opens `parent` again. `key` is
    /// none after a failure: fileNotFound, invalidHandle, keyDeleted.
    virtual RegistryError openKey(RegistryKey parent, const char* path, RegistryKey& key) = 0;
    /// Opens the subkey for reading and writing, made with all the keys above it where absent.
    virtual RegistryError createKey(RegistryKey parent, std::string_view path, RegistryKey& key) = 0;
    /// Closes a key from one of the above; anything else is let pass.
    virtual void closeKey(RegistryKey key) = 0;

    /// Reads a value into `data`; an empty or null name is the key's default value. `size` is the room in
    /// bytes and becomes the size of the value, which is all that happens (with success) when `data` is null.
    /// What does not fit gives moreData, its type and its size. Texts (string, expandString) come in the
    /// system's narrow encoding, with a terminator that the size counts; natively UTF-8.
    virtual RegistryError queryValue(RegistryKey key, const char* name, std::uint32_t& type, void* data,
                                     std::uint32_t& size) = 0;

    /// The writers take names and texts as UTF-8 without terminator and keys from createKey: others are
    /// accessDenied. A change is complete and on disk, or it has not happened.
    /// `type` is string or expandString.
    virtual RegistryError setString(RegistryKey key, std::string_view name, std::string_view text,
                                    std::uint32_t type = registryType::string) = 0;
    virtual RegistryError setDword(RegistryKey key, std::string_view name, std::uint32_t value) = 0;
    virtual RegistryError setBinary(RegistryKey key, std::string_view name, const void* data,
                                    std::size_t size) = 0;
    virtual RegistryError deleteValue(RegistryKey key, std::string_view name) = 0;
    /// Deletes a subkey that has no subkeys of its own; accessDenied when it has some, invalidParameter for
    /// an empty path.
    virtual RegistryError deleteKey(RegistryKey parent, std::string_view path) = 0;
    /// Deletes a subkey with everything below it; invalidParameter for an empty path.
    virtual RegistryError deleteTree(RegistryKey parent, std::string_view path) = 0;
    /// Names of the subkeys, UTF-8, in alphabetical order.
    virtual RegistryError subkeys(RegistryKey key, std::vector<std::string>& names) = 0;
};

/// The system's own; lives until the module or program that asks is unloaded.
IRegistry& systemRegistry();

} // namespace tarvo::platform
