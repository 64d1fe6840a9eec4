#pragma once

#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/PictureFile.h"

#include <algorithm>
#include <filesystem>
#include <string>

namespace tarvo::apps {

/// The path of a picture to write. Its ending must say what the file is going to be.
inline std::filesystem::path readOutputPath(const std::string& option, const std::string& text) {
    const std::filesystem::path path = pathFromText(text);
    std::u8string ending = path.extension().u8string();
    std::ranges::transform(ending, ending.begin(), [](char8_t c) {
        return c >= u8'A' && c <= u8'Z' ? static_cast<char8_t>(c - u8'A' + u8'a') : c;
    });
    if (ending != u8".png") {
        refuseValue(option, text, "the name of a file that ends in .png");
    }
    return path;
}

/// Adds the positional argument OUTPUT; `target` must outlive the parsing.
inline void addOutputArgument(CLI::App& command, std::filesystem::path& target) {
    addValue(command, "OUTPUT", target, readOutputPath, "FILE",
             "Picture to write; its name ends in .png. An existing file is replaced.")
        ->required();
}

} // namespace tarvo::apps
