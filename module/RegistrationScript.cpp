#include "module/RegistrationScript.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

namespace tarvo::module {
namespace {

using Kind = ScriptToken::Kind;
using Rule = ScriptKey::Rule;

constexpr int mostLevels = 64;
constexpr std::size_t longestName = 255;

char lowered(char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

/// Whether a token is the script's own word, given in small letters.
bool isWord(const ScriptToken& token, std::string_view word) {
    return token.kind == Kind::word && !token.isLiteral && std::ranges::equal(token.text, word, {}, lowered);
}

bool isPrintable(char c) {
    return c >= ' ' && c <= '~';
}

std::uint32_t parseNumber(const ScriptToken& token) {
    std::string_view digits = token.text;
    const bool isHexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (isHexadecimal)
        digits.remove_prefix(2);
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, isHexadecimal ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != end)
        throw CScriptError(token.line, "no number of 32 bits");
    return number;
}

std::vector<std::byte> parseBytes(const ScriptToken& token) {
    std::vector<std::byte> bytes;
    const char* position = token.text.data();
    const char* const end = position + token.text.size();
    for (; position != end; position += 2) {
        unsigned char byte = 0;
        if (end - position < 2 || std::from_chars(position, position + 2, byte, 16).ptr != position + 2)
            throw CScriptError(token.line, "bytes are pairs of hexadecimal digits");
        bytes.push_back(std::byte{byte});
    }
    return bytes;
}

class CParser {
public:
    CParser(std::string_view script, const Replacements& replacements) : m_scanner(script, replacements) {
        advance();
    }

    std::vector<ScriptRoot> script() {
        std::vector<ScriptRoot> roots;
        do
            roots.push_back(root());
        while (m_token.kind != Kind::end);
        return roots;
    }

private:
    void advance() { m_token = m_scanner.next(); }

    [[noreturn]] void fail(std::string_view message) const { throw CScriptError(m_token.line, message); }

    void expect(Kind kind, std::string_view message) {
        if (m_token.kind != kind)
            fail(message);
        advance();
    }

    bool take(std::string_view word) {
        if (!isWord(m_token, word))
            return false;
        advance();
        return true;
    }

    ScriptRoot root() {
        ScriptRoot root;
        if (take("hkcr") || take("hkey_classes_root"))
            root.key = platform::classesRoot;
        else if (take("hklm") || take("hkey_local_machine"))
            root.key = platform::localMachine;
        else
            fail("HKCR or HKLM should stand here");
        root.content.rule = Rule::noRemove;
        if (m_token.kind != Kind::open)
            fail("a root needs its braces");
        block(root.content, 1);
        return root;
    }

    /// What stands in the braces behind a key.
    void block(ScriptKey& key, int level) {
        const int line = m_token.line;
        if (level > mostLevels)
            fail("too many levels");
        advance();
        while (m_token.kind != Kind::close) {
            if (m_token.kind == Kind::end)
                fail("the brace of line " + std::to_string(line) + " is not closed");
            if (take("val"))
                key.values.push_back(value());
            else
                key.keys.push_back(this->key(level));
        }
        advance();
    }

    ScriptKey key(int level) {
        ScriptKey key;
        if (take("noremove"))
            key.rule = Rule::noRemove;
        else if (take("forceremove"))
            key.rule = Rule::forceRemove;
        else if (take("delete"))
            key.rule = Rule::remove;
        key.name = name("the name of a key should stand here");
        if (key.name.find('\\') != std::string::npos)
            fail("a key's name has no backslash: each level is a key of its own");
        advance();
        if (key.rule == Rule::remove)
            return key;
        if (m_token.kind == Kind::equals) {
            advance();
            key.values.push_back({{}, data()});
        }
        if (m_token.kind == Kind::open)
            block(key, level + 1);
        return key;
    }

    ScriptValue value() {
        ScriptValue value;
        value.name = name("the name of a value should stand here");
        advance();
        expect(Kind::equals, "a value needs \"=\", its type and its data");
        value.data = data();
        return value;
    }

    /// The token's text as a name; it stays the token, for messages that follow.
    std::string name(std::string_view message) const {
        if (m_token.kind != Kind::word)
            fail(message);
        if (m_token.text.empty() || m_token.text.size() > longestName ||
            !std::ranges::all_of(m_token.text, isPrintable))
            fail("names are 1 to 255 printable ASCII characters");
        return m_token.text;
    }

    ScriptData data() {
        const bool isText = isWord(m_token, "s");
        const bool isNumber = isWord(m_token, "d");
        if (!isText && !isNumber && !isWord(m_token, "b"))
            fail("the type of the data, s, d or b, should stand here");
        advance();
        if (m_token.kind != Kind::word)
            fail("data should stand here");
        ScriptData data;
        if (isText)
            data = m_token.text;
        else if (isNumber)
            data = parseNumber(m_token);
        else
            data = parseBytes(m_token);
        advance();
        return data;
    }

    CScriptScanner m_scanner;
    ScriptToken m_token;
};

} // namespace

std::vector<ScriptRoot> parseRegistrationScript(std::string_view script, const Replacements& replacements) {
    return CParser(script, replacements).script();
}

} // namespace tarvo::module
