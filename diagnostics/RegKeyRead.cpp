#include "diagnostics/RegKeyRead.h"

#include <thread>

namespace tarvo::diagnostics {
namespace {

using platform::RegistryError;
using platform::RegistryKey;

bool isWorthAnotherAttempt(RegistryError error) {
    return error == platform::registryError::invalidHandle ||
           error == platform::registryError::insufficientBuffer;
}

RegistryKey openWithRetries(platform::IRegistry& registry, RegistryKey parent, const char* name,
                            const Sleeper& sleep) {
    using std::chrono::milliseconds;
    constexpr milliseconds step{10};
    constexpr milliseconds limit{50};
    milliseconds delay{0};
    RegistryError error;
    RegistryKey key = platform::noRegistryKey;
    do {
        key = platform::noRegistryKey;
        error = registry.openKey(parent, name, key);
        sleep(delay);
        delay += step;
    } while (isWorthAnotherAttempt(error) && delay < limit);
    return error == platform::registryError::success ? key : platform::noRegistryKey;
}

} // namespace

RegKeyRead::RegKeyRead(const RegKeyRead& parent, const char* name, const Sleeper& sleep)
    : m_registry(parent.m_registry), m_key(openWithRetries(parent.m_registry, parent.m_key, name, sleep)) {}

void RegKeyRead::close() {
    if (isOpen()) {
        m_registry.closeKey(m_key);
        m_key = platform::noRegistryKey;
    }
}

RegistryError RegKeyRead::readDword(const char* name, std::uint32_t& value) const {
    std::uint32_t type = platform::registryType::none;
    std::uint32_t read = 0;
    std::uint32_t size = sizeof read;
    const RegistryError error = m_registry.queryValue(m_key, name, type, &read, size);
    if (error != platform::registryError::success) {
        return error;
    }
    if (type != platform::registryType::dword) {
        return platform::registryError::invalidDatatype;
    }
    value = read;
    return error;
}

RegistryError RegKeyRead::readString(const char* name, char* buffer, std::uint32_t size) const {
    std::uint32_t type = platform::registryType::none;
    const RegistryError error = m_registry.queryValue(m_key, name, type, buffer, size);
    if (error != platform::registryError::success) {
        return error;
    }
    const bool isText =
        type == platform::registryType::string || type == platform::registryType::expandString;
    return isText ? error : platform::registryError::invalidDatatype;
}

void RegKeyRead::sleepOnThisThread(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

} // namespace tarvo::diagnostics
