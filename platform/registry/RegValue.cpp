#include "platform/registry/RegValue.h"

#include "platform/Registry.h"
#include "platform/Utf16.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace tarvo::platform {
namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view hexDigits = "0123456789abcdef";
/// As many as the registry editor puts on a line, about.
constexpr std::size_t bytesOnALine = 25;

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

/// Nothing may follow the data but a comment.
bool isAtEnd(std::string_view rest) {
    skipBlanks(rest);
    return rest.empty() || rest.front() == ';';
}

bool takeWord(std::string_view& text, std::string_view word) {
    if (!isSameName(text.substr(0, word.size()), word))
        return false;
    text.remove_prefix(word.size());
    return true;
}

/// Reads up to eight hexadecimal digits.
std::optional<std::uint32_t> takeNumber(std::string_view& text) {
    std::uint32_t number = 0;
    const char* const begin = text.data();
    const auto [end, error] = std::from_chars(begin, begin + text.size(), number, 16);
    if (error != std::errc() || end - begin > 8)
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - begin));
    return number;
}

/// Reads a text in quotes, in which a backslash stands before a backslash or a quote.
std::optional<std::string> takeQuoted(std::string_view& text) {
    if (!text.starts_with('"'))
        return std::nullopt;
    std::string result;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return result;
        }
        if (text[i] == '\n')
            return std::nullopt;
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '\\' || text[i + 1] == '"'))
            ++i;
        result += text[i];
    }
    return std::nullopt;
}

std::optional<std::string> takeName(std::string_view& text) {
    skipBlanks(text);
    if (!text.starts_with('@'))
        return takeQuoted(text);
    text.remove_prefix(1);
    return std::string();
}

/// Reads bytes such as 0a,ff,\ and goes on in the next line.
std::optional<std::string> takeBytes(std::string_view text) {
    std::string bytes;
    bool needsComma = false;
    while (!isAtEnd(text)) {
        skipBlanks(text);
        if (text.front() == '\\' || (text.front() == ',' && needsComma)) {
            needsComma = needsComma && text.front() == '\\';
            text.remove_prefix(1);
            continue;
        }
        const std::size_t before = text.size();
        const std::optional<std::uint32_t> number = takeNumber(text);
        if (!number || needsComma || before - text.size() > 2)
            return std::nullopt;
        bytes += static_cast<char>(*number);
        needsComma = true;
    }
    return bytes;
}

bool isText(std::uint32_t type) {
    return type == registryType::string || type == registryType::expandString;
}

bool holdsText(std::uint32_t type) {
    return isText(type) || type == registryType::multiString;
}

/// Readers get narrow texts, and may rely on the terminator.
std::string textFromBytes(std::string bytes, std::uint32_t type, RegDialect dialect) {
    if (dialect == RegDialect::version5)
        bytes = utf8FromUtf16Bytes(bytes);
    if (isText(type) && !bytes.ends_with('\0'))
        bytes += '\0';
    return bytes;
}

std::optional<RegistryValue> parseHexadecimal(std::string_view data, RegDialect dialect) {
    std::uint32_t type = registryType::binary;
    if (takeWord(data, "(")) {
        const std::optional<std::uint32_t> number = takeNumber(data);
        if (!number || !takeWord(data, ")"))
            return std::nullopt;
        type = *number;
    }
    if (!takeWord(data, ":"))
        return std::nullopt;
    std::optional<std::string> bytes = takeBytes(data);
    if (!bytes)
        return std::nullopt;
    if (holdsText(type))
        bytes = textFromBytes(std::move(*bytes), type, dialect);
    return RegistryValue{type, std::move(*bytes)};
}

std::optional<RegistryValue> parseDword(std::string_view data) {
    skipBlanks(data);
    const std::optional<std::uint32_t> number = takeNumber(data);
    if (!number || !isAtEnd(data))
        return std::nullopt;
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>((*number >> shift) & 0xFF);
    return RegistryValue{registryType::dword, std::move(bytes)};
}

std::optional<RegistryValue> parseData(std::string_view data, RegDialect dialect) {
    if (takeWord(data, "dword:"))
        return parseDword(data);
    if (takeWord(data, "hex"))
        return parseHexadecimal(data, dialect);
    std::optional<std::string> text = takeQuoted(data);
    if (!text || !isAtEnd(data))
        return std::nullopt;
    return RegistryValue{registryType::string, std::move(*text) + '\0'};
}

void appendQuoted(std::string& result, std::string_view text) {
    result += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    result += '"';
}

void appendHexadecimal(std::string& result, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        result += hexDigits[(number >> shift) & 0xF];
}

void appendBytes(std::string& result, std::string_view bytes, std::string_view lineBreak) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0)
            result += ',';
        if (i > 0 && i % bytesOnALine == 0)
            result.append("\\").append(lineBreak).append("  ");
        appendHexadecimal(result, static_cast<unsigned char>(bytes[i]), 2);
    }
}

/// One terminator at the end and nothing that a quoted text cannot say.
bool canBeQuoted(const RegistryValue& value) {
    return value.type == registryType::string &&
           value.data.find_first_of(std::string_view("\0\r\n", 3)) + 1 == value.data.size();
}

void appendNumber(std::string& result, const std::string& data) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i)
        number = (number << 8) | static_cast<unsigned char>(data[i - 1]);
    result += "dword:";
    appendHexadecimal(result, number, 8);
}

void appendTyped(std::string& result, const RegistryValue& value, RegDialect dialect,
                 std::string_view lineBreak) {
    result += "hex";
    if (value.type != registryType::binary) {
        char digits[8];
        const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value.type, 16);
        result.append("(").append(digits, end.ptr).append(")");
    }
    result += ':';
    const bool isWritten = dialect == RegDialect::regedit4 || !holdsText(value.type);
    appendBytes(result, isWritten ? value.data : utf16BytesFromUtf8(value.data), lineBreak);
}

} // namespace

std::string_view::size_type regDataStart(std::string_view statement) {
    std::string_view rest = statement;
    if (!takeName(rest))
        return std::string_view::npos;
    skipBlanks(rest);
    if (!rest.starts_with('='))
        return std::string_view::npos;
    rest.remove_prefix(1);
    skipBlanks(rest);
    return statement.size() - rest.size();
}

std::optional<RegValueLine> parseRegValue(std::string_view statement, RegDialect dialect) {
    const std::size_t start = regDataStart(statement);
    if (start == std::string_view::npos)
        return std::nullopt;
    std::string_view data = statement.substr(start);
    RegValueLine line{takeName(statement).value(), std::nullopt};
    if (data.starts_with('-') && isAtEnd(data.substr(1)))
        return line;
    line.value = parseData(data, dialect);
    if (!line.value || !isValidValueName(line.name))
        return std::nullopt;
    return line;
}

std::string formatRegValue(std::string_view name, const RegistryValue& value, RegDialect dialect,
                           std::string_view lineBreak) {
    std::string result;
    if (name.empty())
        result += '@';
    else
        appendQuoted(result, name);
    result += '=';
    if (canBeQuoted(value))
        appendQuoted(result, std::string_view(value.data).substr(0, value.data.size() - 1));
    else if (value.type == registryType::dword && value.data.size() == 4)
        appendNumber(result, value.data);
    else
        appendTyped(result, value, dialect, lineBreak);
    return result;
}

} // namespace tarvo::platform
