#pragma once

#include "com/Guarded.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace tarvo::module {

/// What %NAME% in a registration script stands for, by NAME; UTF-8.
using Replacements = std::map<std::string, std::string, std::less<>>;

/// A registration script that cannot be read; its result is that of Windows' ERROR_INVALID_DATA.
class CScriptError final : public com::CComError {
public:
    CScriptError(int line, std::string_view message);

    /// "line 3: what is wrong there"
    const char* what() const noexcept override { return m_text.c_str(); }
    /// From 1.
    int line() const noexcept { return m_line; }

private:
    int m_line;
    std::string m_text;
};

/// A piece of a registration script.
struct ScriptToken {
    enum class Kind { word, open, close, equals, end };

    Kind kind = Kind::end;
    /// Of a word: quotes taken away, replacements put in.
    std::string text;
    /// A word in quotes or with a replacement in it: never one of the script's own words.
    bool isLiteral = false;
    int line = 1;
};

/// Cuts a registration script into its pieces. White space parts them: a brace or an equals sign stands alone
/// or belongs to a word, such as {GUID}. Quoted words ('it''s one') end on their line. %NAME% is replaced in
/// both, %% is a percent sign; what was put in is not looked at again.
class CScriptScanner {
public:
    /// Both must outlive the scanner.
    CScriptScanner(std::string_view script, const Replacements& replacements)
        : m_script(script), m_replacements(replacements) {}

    /// The next piece; `end` again and again after the last. Throws CScriptError.
    ScriptToken next();

private:
    void skipSpace();
    void readQuoted(ScriptToken& token);
    void readPlain(ScriptToken& token);
    /// Reads one character of a word, or a replacement, into the token.
    void readCharacter(ScriptToken& token);

    std::string_view m_script;
    const Replacements& m_replacements;
    std::size_t m_position = 0;
    int m_line = 1;
};

} // namespace tarvo::module
