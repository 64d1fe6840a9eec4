#pragma once

#include "platform/registry/RegistryTree.h"

#include <optional>
#include <string>
#include <string_view>

namespace tarvo::platform {

/// How a registry file writes texts as bytes: in UTF-16 (version 5) or as they are (REGEDIT4).
enum class RegDialect { version5, regedit4 };

/// One value as a registry file writes it: "name"=data, where @ stands for the default value. No data:
/// "name"=-, which deletes it.
struct RegValueLine {
    std::string name;
    std::optional<RegistryValue> value;
};

/// Reads such a statement; hexadecimal data may go on over lines that end with a backslash. None if it is no
/// value, or of a form not known here.
std::optional<RegValueLine> parseRegValue(std::string_view statement, RegDialect dialect);

/// Writes it, with line breaks inside long data but none at the end.
std::string formatRegValue(std::string_view name, const RegistryValue& value, RegDialect dialect,
                           std::string_view lineBreak);

/// Where the data of a value statement begins, behind the equals sign; npos if it is none.
std::string_view::size_type regDataStart(std::string_view statement);

} // namespace tarvo::platform
