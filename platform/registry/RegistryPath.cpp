#include "platform/registry/RegistryPath.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tarvo::platform {
namespace {

constexpr std::string_view classesPath = "SOFTWARE\\Classes";

// Windows' own limits. They also keep a tree built from any file from growing out of proportion to it.
constexpr std::size_t longestKeyName = 255;
constexpr std::size_t longestValueName = 16383;
constexpr std::size_t mostLevels = 512;

struct Hive {
    std::string_view name;
    std::string_view path;
};

constexpr std::array<Hive, 4> hives{
    {{"HKEY_LOCAL_MACHINE", ""}, {"HKLM", ""}, {"HKEY_CLASSES_ROOT", classesPath}, {"HKCR", classesPath}}};

unsigned char lowered(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

bool hasControlCharacters(std::string_view name) {
    // A file cannot say them outside quoted and hexadecimal data.
    return name.find_first_of(std::string_view("\0\r\n", 3)) != std::string_view::npos;
}

bool isValidPath(std::string_view path) {
    if (path.empty())
        return true;
    const std::vector<std::string_view> names = pathNames(path);
    return names.size() <= mostLevels && std::ranges::all_of(names, [](std::string_view name) {
               return !name.empty() && name.size() <= longestKeyName && !hasControlCharacters(name);
           });
}

} // namespace

std::optional<std::string> pathFromFile(std::string_view spelled) {
    const std::size_t end = std::min(spelled.find('\\'), spelled.size());
    const auto* const hive = std::ranges::find_if(
        hives, [&](const Hive& candidate) { return isSameName(candidate.name, spelled.substr(0, end)); });
    if (hive == hives.end())
        return std::nullopt;
    return joinPath(hive->path, spelled.substr(std::min(end + 1, spelled.size())));
}

std::string pathForFile(std::string_view path) {
    if (isSameOrBelow(path, classesPath) && path.size() > classesPath.size())
        return "HKEY_CLASSES_ROOT" + std::string(path.substr(classesPath.size()));
    return path.empty() ? "HKEY_LOCAL_MACHINE" : "HKEY_LOCAL_MACHINE\\" + std::string(path);
}

std::optional<std::string> joinPath(std::string_view path, std::string_view subpath) {
    if (subpath.ends_with('\\'))
        subpath.remove_suffix(1);
    std::string joined(path);
    if (!joined.empty() && !subpath.empty())
        joined += '\\';
    joined += subpath;
    if (!isValidPath(joined))
        return std::nullopt;
    return joined;
}

std::vector<std::string_view> pathNames(std::string_view path) {
    std::vector<std::string_view> names;
    if (path.empty())
        return names;
    for (std::size_t start = 0;;) {
        const std::size_t end = path.find('\\', start);
        names.push_back(path.substr(start, end - start));
        if (end == std::string_view::npos)
            return names;
        start = end + 1;
    }
}

std::string_view parentPath(std::string_view path) {
    const std::size_t end = path.rfind('\\');
    return end == std::string_view::npos ? std::string_view() : path.substr(0, end);
}

bool isSameOrBelow(std::string_view path, std::string_view ancestor) {
    if (ancestor.empty())
        return true;
    return isSameName(path.substr(0, ancestor.size()), ancestor) &&
           (path.size() == ancestor.size() || path[ancestor.size()] == '\\');
}

bool isSameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lowered, lowered);
}

bool NameLess::operator()(std::string_view a, std::string_view b) const {
    return std::ranges::lexicographical_compare(a, b, {}, lowered, lowered);
}

bool isValidValueName(std::string_view name) {
    return name.size() <= longestValueName && !hasControlCharacters(name);
}

} // namespace tarvo::platform
