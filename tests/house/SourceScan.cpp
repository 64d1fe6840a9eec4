#include "tests/house/SourceScan.h"

#include <algorithm>
#include <cctype>

namespace tarvo::house {
namespace {

bool isWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

class CSourceScanner {
public:
    explicit CSourceScanner(std::string_view text) : m_text(text) {}

    SourceScan scan() {
        while (m_position < m_text.size()) {
            const char c = m_text[m_position];
            if (startsWith("//"))
                skipTo(m_text.find('\n', m_position));
            else if (startsWith("/*"))
                skipComment();
            else if (c == '"' || c == '\'')
                scanQuote(c);
            else if (c == '#' && atLineStart())
                scanDirective();
            else
                keep(1);
        }
        return std::move(m_scan);
    }

private:
    bool startsWith(std::string_view what) const { return m_text.substr(m_position).starts_with(what); }

    bool atLineStart() const {
        const std::size_t last = m_scan.code.find_last_not_of(" \t");
        return last == std::string::npos || m_scan.code[last] == '\n';
    }

    /// The word which the kept code ends with, such as the L before a wide literal.
    std::string_view wordBefore() const {
        std::size_t start = m_scan.code.size();
        while (start > 0 && isWordCharacter(m_scan.code[start - 1]))
            --start;
        return std::string_view(m_scan.code).substr(start);
    }

    void keep(std::size_t count) { advance(m_position + count, true); }
    void skipTo(std::size_t end) { advance(end, false); }

    /// Line breaks are kept even where the rest is not: positions stay true to the line.
    void advance(std::size_t end, bool keepAll) {
        for (end = std::min(end, m_text.size()); m_position < end; ++m_position) {
            const char c = m_text[m_position];
            if (keepAll || c == '\n')
                m_scan.code += c;
            m_line += c == '\n' ? 1 : 0;
        }
    }

    void skipComment() {
        const std::size_t end = m_text.find("*/", m_position + 2);
        skipTo(end == std::string_view::npos ? end : end + 2);
        // A comment parts words as a blank does.
        m_scan.code += ' ';
    }

    void scanQuote(char quote) {
        const std::string_view word = wordBefore();
        const bool isRaw =
            quote == '"' && (word == "R" || word == "LR" || word == "uR" || word == "UR" || word == "u8R");
        const bool isPlain = word.empty() || word == "L" || word == "u" || word == "U" || word == "u8";
        if (quote == '\'' && !isPlain) {
            // Between the digits of a number.
            keep(1);
            return;
        }
        if (word == "L" || word == "LR")
            m_scan.wideLiteralLines.push_back(m_line);
        keep(1);
        if (isRaw)
            skipRawLiteral();
        else
            skipLiteral(quote);
        m_scan.code += quote;
    }

    void skipLiteral(char quote) {
        std::size_t end = m_position;
        while (end < m_text.size() && m_text[end] != quote && m_text[end] != '\n')
            end += m_text[end] == '\\' ? 2 : 1;
        skipTo(end);
        if (startsWith({&quote, 1}))
            skipTo(m_position + 1);
    }

    void skipRawLiteral() {
        const std::size_t open = m_text.find('(', m_position);
        if (open == std::string_view::npos)
            return;
        const std::string close = ")" + std::string(m_text.substr(m_position, open - m_position)) + "\"";
        const std::size_t end = m_text.find(close, open);
        skipTo(end == std::string_view::npos ? end : end + close.size());
    }

    /// Include directives must be read before their quotes are taken for a literal's.
    void scanDirective() {
        keep(1);
        skipBlanks();
        std::size_t end = m_position;
        while (end < m_text.size() && isWordCharacter(m_text[end]))
            ++end;
        const bool isInclude = m_text.substr(m_position, end - m_position) == "include";
        keep(end - m_position);
        if (!isInclude)
            return;
        skipBlanks();
        if (startsWith("\""))
            addInclude(IncludeForm::quoted, m_position + 1, "\"\n");
        else if (startsWith("<"))
            addInclude(IncludeForm::angled, m_position + 1, ">\n");
        else
            addInclude(IncludeForm::computed, m_position, " \t\n");
    }

    void addInclude(IncludeForm form, std::size_t start, std::string_view terminators) {
        const std::size_t end = std::min(m_text.find_first_of(terminators, start), m_text.size());
        m_scan.includes.push_back({m_line, form, std::string(m_text.substr(start, end - start))});
        advance(end + (form == IncludeForm::computed ? 0 : 1), form != IncludeForm::quoted);
    }

    void skipBlanks() {
        while (startsWith(" ") || startsWith("\t"))
            keep(1);
    }

    std::string_view m_text;
    std::size_t m_position = 0;
    int m_line = 1;
    SourceScan m_scan;
};

} // namespace

SourceScan scanSource(std::string_view text) {
    return CSourceScanner(text).scan();
}

} // namespace tarvo::house
