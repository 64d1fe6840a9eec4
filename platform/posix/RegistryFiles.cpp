#include "platform/posix/RegistryFiles.h"

#include <cstdlib>
#include <unistd.h>

namespace tarvo::platform {

RegistryFiles chooseRegistryFiles(const char* named, const std::string& users, const std::string& systems) {
    if (named != nullptr && *named != '\0')
        return {named, named, false};
    const bool isUsers = !users.empty() && access(users.c_str(), F_OK) == 0;
    return {isUsers ? users : systems, users, true};
}

std::string usersRegistryFile(const char* configurationHome, const char* home) {
    // A relative folder would be another one in each process.
    if (configurationHome != nullptr && *configurationHome == '/')
        return std::string(configurationHome) + "/tarvo/registry.reg";
    if (home != nullptr && *home == '/')
        return std::string(home) + "/.config/tarvo/registry.reg";
    return {};
}

RegistryFiles registryFiles() {
    return chooseRegistryFiles(std::getenv("TARVO_REGISTRY"),
                               usersRegistryFile(std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME")),
                               "/etc/tarvo/registry.reg");
}

} // namespace tarvo::platform
