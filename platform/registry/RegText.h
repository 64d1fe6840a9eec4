#pragma once

#include <string>
#include <string_view>

namespace tarvo::platform {

/// The text of a registry file in UTF-8, and what is needed to write it the way it was found.
struct RegText {
    enum class Encoding { utf8, utf8WithMark, utf16LittleEndian };

    std::string text;
    Encoding encoding = Encoding::utf8;
};

/// Reads the bytes of a file. UTF-16 is known by its byte order mark, as the registry editor writes it; all
/// else is UTF-8, whose text is taken as it stands.
RegText decodeRegText(std::string_view bytes);
std::string encodeRegText(const RegText& text);

} // namespace tarvo::platform
