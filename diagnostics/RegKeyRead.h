#pragma once

#include "platform/Registry.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace tarvo::diagnostics {

/// Waits between attempts to open a key.
using Sleeper = std::function<void(std::chrono::milliseconds)>;

/// Owner of one registry key that is open for reading, or of none when opening failed.
class RegKeyRead {
public:
    /// Wraps a root; nothing is opened.
    RegKeyRead(platform::IRegistry& registry, platform::RegistryKey root)
        : m_registry(registry), m_key(root) {}

    /// Opens the same key again.
    RegKeyRead(const RegKeyRead& other) : RegKeyRead(other, "") {}
    RegKeyRead& operator=(const RegKeyRead&) = delete;

    /// Opens a subkey. A registry that is just being loaded answers for a moment that a handle is invalid or
    /// a buffer too small; then it is asked again, five times at most within a tenth of a second.
    RegKeyRead(const RegKeyRead& parent, const char* name, const Sleeper& sleep = sleepOnThisThread);

    ~RegKeyRead() { close(); }

    bool isOpen() const { return m_key != platform::noRegistryKey; }

    /// Reads a number; anything but success leaves `value` as it is, `invalidDatatype` when the type is
    /// another.
    platform::RegistryError readDword(const char* name, std::uint32_t& value) const;

    /// Reads a text with its terminator into `buffer` of `size` bytes. A value of another type answers
    /// `invalidDatatype`, but its bytes have been written all the same.
    platform::RegistryError readString(const char* name, char* buffer, std::uint32_t size) const;

    static void sleepOnThisThread(std::chrono::milliseconds duration);

protected:
    void close();

private:
    platform::IRegistry& m_registry;
    platform::RegistryKey m_key = platform::noRegistryKey;
};

} // namespace tarvo::diagnostics
