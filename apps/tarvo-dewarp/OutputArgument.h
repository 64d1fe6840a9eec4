#pragma once

#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/WholeFile.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

namespace tarvo::apps {

/// Whether a file's name ends in `ending`, which is in small letters; capitals count as such.
inline bool endsIn(const std::filesystem::path& path, std::u8string_view ending) {
    std::u8string own = path.extension().u8string();
    std::ranges::transform(own, own.begin(), [](char8_t c) {
        return c >= u8'A' && c <= u8'Z' ? static_cast<char8_t>(c - u8'A' + u8'a') : c;
    });
    return own == ending;
}

/// The path of a picture to write. Its ending must say what the file is going to be.
inline std::filesystem::path readOutputPath(const std::string& option, const std::string& text) {
    const std::filesystem::path path = pathFromText(text);
    if (!endsIn(path, u8".png")) {
        refuseValue(option, text, "the name of a file that ends in .png");
    }
    return path;
}

/// The same, or that of a file for the bytes of a frame.
inline std::filesystem::path readPictureOrFramePath(const std::string& option, const std::string& text) {
    const std::filesystem::path path = pathFromText(text);
    if (!endsIn(path, u8".png") && !endsIn(path, u8".raw")) {
        refuseValue(option, text, "the name of a file that ends in .png or .raw");
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
