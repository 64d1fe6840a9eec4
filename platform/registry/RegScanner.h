#pragma once

#include "platform/registry/RegValue.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarvo::platform {

/// One statement of a registry file: a line, or several where data goes on.
struct RegStatement {
    enum class Kind {
        text,       ///< header, blank line or comment
        unknown,    ///< nothing understood here, a value of a foreign key included
        key,        ///< [KEY]: the values that follow belong to it
        deletedKey, ///< [-KEY]
        foreignKey, ///< either of them for a hive or path not known here
        value       ///< of the key in force
    };

    Kind kind = Kind::text;
    /// Where it stands in the text, line end included.
    std::size_t begin = 0;
    std::size_t end = 0;
    /// The canonical path of `key` and `deletedKey`.
    std::string path;
    /// What `value` says.
    RegValueLine value;
};

/// Reads the text of a registry file statement by statement; together they are the whole text. No text is
/// refused.
class CRegScanner {
public:
    /// The text must outlive the scanner.
    explicit CRegScanner(std::string_view text) : m_text(text) {}

    /// False at the end.
    bool next(RegStatement& statement);
    /// Known once the header, which comes first, has been passed.
    RegDialect dialect() const { return m_dialect; }

private:
    std::size_t lineEnd(std::size_t position) const;
    std::size_t statementEnd() const;
    void readKey(std::string_view line, RegStatement& statement);
    void readValue(std::string_view line, RegStatement& statement) const;

    std::string_view m_text;
    std::size_t m_position = 0;
    RegDialect m_dialect = RegDialect::version5;
    bool m_isInKey = false;
};

} // namespace tarvo::platform
