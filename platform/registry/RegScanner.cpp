#include "platform/registry/RegScanner.h"

#include <algorithm>
#include <cctype>

namespace tarvo::platform {
namespace {

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = line.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return line.substr(begin, line.find_last_not_of(blanks) + 1 - begin);
}

/// Bytes that go on from the line above: "0a,". Asked for so that a backslash too many does not swallow what
/// follows.
bool beginsWithByte(std::string_view line) {
    return line.size() >= 2 && std::isxdigit(static_cast<unsigned char>(line[0])) != 0 &&
           (line[1] == ',' || std::isxdigit(static_cast<unsigned char>(line[1])) != 0);
}

bool isHeader(std::string_view line) {
    return line == "REGEDIT4" || line.starts_with("Windows Registry Editor Version ");
}

} // namespace

bool CRegScanner::next(RegStatement& statement) {
    if (m_position >= m_text.size())
        return false;
    statement = {};
    statement.begin = m_position;
    statement.end = statementEnd();
    const std::string_view line = trimmed(m_text.substr(statement.begin, statement.end - statement.begin));
    if (line.starts_with('['))
        readKey(line, statement);
    else if (line == "REGEDIT4")
        m_dialect = RegDialect::regedit4;
    else if (!line.empty() && line.front() != ';' && !isHeader(line))
        readValue(line, statement);
    m_position = statement.end;
    return true;
}

std::size_t CRegScanner::lineEnd(std::size_t position) const {
    const std::size_t lineFeed = m_text.find('\n', position);
    return lineFeed == std::string_view::npos ? m_text.size() : lineFeed + 1;
}

/// Only hexadecimal data goes on in the next line; a quoted text may well end with a backslash before its
/// quote.
std::size_t CRegScanner::statementEnd() const {
    std::size_t begin = m_position;
    std::size_t end = lineEnd(begin);
    const std::string_view firstLine = trimmed(m_text.substr(begin, end - begin));
    const std::size_t data = regDataStart(firstLine);
    if (data == std::string_view::npos || !isSameName(firstLine.substr(data, 3), "hex"))
        return end;
    while (end < m_text.size() && trimmed(m_text.substr(begin, end - begin)).ends_with('\\') &&
           beginsWithByte(trimmed(m_text.substr(end, std::min<std::size_t>(lineEnd(end) - end, 80))))) {
        begin = end;
        end = lineEnd(begin);
    }
    return end;
}

void CRegScanner::readKey(std::string_view line, RegStatement& statement) {
    m_isInKey = false;
    statement.kind = RegStatement::Kind::foreignKey;
    // Names of keys may hold brackets too.
    const std::size_t bracket = line.rfind(']');
    if (bracket == std::string_view::npos)
        return;
    std::string_view spelled = line.substr(1, bracket - 1);
    const bool isDeleted = spelled.starts_with('-');
    if (isDeleted)
        spelled.remove_prefix(1);
    std::optional<std::string> path = pathFromFile(spelled);
    if (!path)
        return;
    statement.path = std::move(*path);
    statement.kind = isDeleted ? RegStatement::Kind::deletedKey : RegStatement::Kind::key;
    m_isInKey = !isDeleted;
}

void CRegScanner::readValue(std::string_view line, RegStatement& statement) const {
    std::optional<RegValueLine> value;
    if (m_isInKey)
        value = parseRegValue(line, m_dialect);
    statement.kind = value ? RegStatement::Kind::value : RegStatement::Kind::unknown;
    if (value)
        statement.value = std::move(*value);
}

} // namespace tarvo::platform
