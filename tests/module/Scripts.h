#pragma once

#include "module/ScriptScanner.h"
#include "tests/module/ExpectedKeys.h"
#include "tests/support/TemporaryFolder.h"

#include <string>

namespace tarvo::tests {

/// The text of a registration script of the product, such as "DewarpingTransform".
inline std::string scriptOf(const std::string& name) {
    return readFile(TARVO_MODULE_FOLDER "/" + name + ".rgs");
}

inline module::Replacements replacementsFor(const std::string& id, const std::string& path) {
    return {{"CLSID", id}, {"TYPELIB", libraryId}, {"MODULE", path}};
}

} // namespace tarvo::tests
