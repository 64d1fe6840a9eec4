#pragma once

#include <string>

namespace tarvo::platform {

/// The file which the registry is read from and the one it is written to, either empty if there is none.
struct RegistryFiles {
    std::string read;
    std::string write;
    /// Whether the folder of the written one is made where absent: the user's own is, that of a named file
    /// not.
    bool makesFolder = false;

    bool operator==(const RegistryFiles&) const = default;
};

/// The rule: a named file is the only one. Otherwise the user's, if it is there, hides the system's, and is
/// the one written. A user who has no file yet and changes something gets a copy of the system's with the
/// change.
RegistryFiles chooseRegistryFiles(const char* named, const std::string& users, const std::string& systems);

/// The user's file, from the values of XDG_CONFIG_HOME and HOME, either perhaps null; empty without a home.
std::string usersRegistryFile(const char* configurationHome, const char* home);

/// The choice for this process at this moment.
RegistryFiles registryFiles();

} // namespace tarvo::platform
