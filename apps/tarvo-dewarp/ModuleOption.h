#pragma once

#include <filesystem>

namespace CLI {
class App;
}

namespace tarvo::apps {

/// The module that a command drives.
struct ModuleSettings {
    std::filesystem::path file; ///< empty for the one that came with the program

    /// The file to load.
    std::filesystem::path path() const;
};

/// Adds the option --module; `settings` must outlive the parsing.
void addModuleOption(CLI::App& command, ModuleSettings& settings);

} // namespace tarvo::apps
