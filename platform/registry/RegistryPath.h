#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::platform {

// Paths here are canonical: below localMachine, without its name, no backslash at either end; empty is
// localMachine itself. What classesRoot holds lies below SOFTWARE\Classes.

/// The canonical path of a key as files spell it, such as HKEY_CLASSES_ROOT\CLSID; none for another hive or
/// for a path that no key can have.
std::optional<std::string> pathFromFile(std::string_view spelled);

/// How files spell it.
std::string pathForFile(std::string_view path);

/// `path` with the subkey path a caller gave behind it, which may be empty; none if no key can have such a
/// path.
std::optional<std::string> joinPath(std::string_view path, std::string_view subpath);

/// The names of the keys on the way.
std::vector<std::string_view> pathNames(std::string_view path);

/// The key above; localMachine's own is itself.
std::string_view parentPath(std::string_view path);

/// True for the same key and for every key below it.
bool isSameOrBelow(std::string_view path, std::string_view ancestor);

/// Names are compared without regard to the case of ASCII letters.
bool isSameName(std::string_view a, std::string_view b);

struct NameLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
};

/// Whether a file can carry it as the name of a value.
bool isValidValueName(std::string_view name);

} // namespace tarvo::platform
