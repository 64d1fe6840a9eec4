#include "module/ScriptScanner.h"

namespace tarvo::module {
namespace {

constexpr std::string_view space = " \t\r\n";

bool isSpace(char c) {
    return space.find(c) != std::string_view::npos;
}

bool isControl(char c) {
    return (c >= '\0' && c < ' ') || c == '\x7F';
}

} // namespace

CScriptError::CScriptError(int line, std::string_view message)
    : CComError(HRESULT_FROM_WIN32(ERROR_INVALID_DATA)), m_line(line),
      m_text("line " + std::to_string(line) + ": " + std::string(message)) {}

ScriptToken CScriptScanner::next() {
    skipSpace();
    ScriptToken token;
    token.line = m_line;
    if (m_position == m_script.size())
        return token;
    token.kind = ScriptToken::Kind::word;
    if (m_script[m_position] == '\'')
        readQuoted(token);
    else
        readPlain(token);
    return token;
}

void CScriptScanner::skipSpace() {
    for (; m_position < m_script.size() && isSpace(m_script[m_position]); ++m_position) {
        if (m_script[m_position] == '\n')
            ++m_line;
    }
}

void CScriptScanner::readQuoted(ScriptToken& token) {
    token.isLiteral = true;
    for (++m_position;;) {
        if (m_position == m_script.size() || m_script[m_position] == '\n')
            throw CScriptError(m_line, "a quoted text does not end");
        if (m_script[m_position] == '\'') {
            ++m_position;
            if (m_position == m_script.size() || isSpace(m_script[m_position]))
                return;
            if (m_script[m_position] != '\'')
                throw CScriptError(m_line, "no space behind a quoted text");
        }
        readCharacter(token);
    }
}

void CScriptScanner::readPlain(ScriptToken& token) {
    while (m_position < m_script.size() && !isSpace(m_script[m_position])) {
        if (m_script[m_position] == '\'')
            throw CScriptError(m_line, "a quote inside a word");
        readCharacter(token);
    }
    if (token.isLiteral)
        return;
    if (token.text == "{")
        token.kind = ScriptToken::Kind::open;
    else if (token.text == "}")
        token.kind = ScriptToken::Kind::close;
    else if (token.text == "=")
        token.kind = ScriptToken::Kind::equals;
}

void CScriptScanner::readCharacter(ScriptToken& token) {
    const char c = m_script[m_position++];
    if (isControl(c))
        throw CScriptError(m_line, "a control character");
    if (c != '%') {
        token.text += c;
        return;
    }
    const std::size_t end = m_script.find_first_of("%'\r\n\t ", m_position);
    if (end == std::string_view::npos || m_script[end] != '%')
        throw CScriptError(m_line, "a percent sign without its second one");
    const std::string_view name = m_script.substr(m_position, end - m_position);
    m_position = end + 1;
    if (name.empty()) {
        token.text += '%';
        return;
    }
    const auto replacement = m_replacements.find(name);
    if (replacement == m_replacements.end())
        throw CScriptError(m_line, "nothing known to replace %" + std::string(name) + "% by");
    token.text += replacement->second;
    token.isLiteral = true;
}

} // namespace tarvo::module
