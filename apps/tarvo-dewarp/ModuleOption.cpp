#include "apps/tarvo-dewarp/ModuleOption.h"

#include "apps/host/Module.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/WholeFile.h"

namespace tarvo::apps {

std::filesystem::path ModuleSettings::path() const {
    return file.empty() ? host::defaultModulePath() : file;
}

void addModuleOption(CLI::App& command, ModuleSettings& settings) {
    const auto read = [](const std::string& option, const std::string& text) {
        if (text.empty()) {
            refuseValue(option, text, "the name of a file");
        }
        return pathFromText(text);
    };
    addValue(command, "--module", settings.file, read, "FILE",
             "The module to load. By default the one beside this program or, if there\n"
             "is none, in the folder lib beside the program's.");
}

} // namespace tarvo::apps
