#include "platform/registry/RegDocument.h"

#include "platform/registry/RegScanner.h"

#include <utility>
#include <vector>

namespace tarvo::platform {
namespace {

using Kind = RegStatement::Kind;

struct Range {
    std::size_t begin;
    std::size_t end;
};

void cut(std::string& text, const std::vector<Range>& ranges) {
    std::string kept;
    std::size_t position = 0;
    for (const Range& range : ranges) {
        kept.append(text, position, range.begin - position);
        position = range.end;
    }
    text = kept.append(text, position);
}

/// Where in a document a value stands, or would have to.
struct ValuePlace {
    /// Behind the last statement of the last section that makes up the key; 0 if none does.
    std::size_t sectionEnd = 0;
    /// The statement in that section which is in force.
    Range statement{0, 0};
    RegDialect dialect = RegDialect::version5;
};

ValuePlace findPlace(std::string_view text, std::string_view path, std::string_view name) {
    ValuePlace place;
    CRegScanner scanner(text);
    bool isInSection = false;
    for (RegStatement statement; scanner.next(statement);) {
        const bool isAny = statement.kind == Kind::value || statement.kind == Kind::unknown;
        if (statement.kind == Kind::deletedKey && isSameOrBelow(path, statement.path))
            place = {};
        if (statement.kind != Kind::text && !isAny)
            isInSection = statement.kind == Kind::key && isSameName(statement.path, path);
        if (!isInSection || statement.kind == Kind::text)
            continue;
        place.sectionEnd = statement.end;
        if (statement.kind == Kind::key)
            place.statement = {0, 0};
        if (statement.kind == Kind::value && isSameName(statement.value.name, name))
            place.statement = {statement.begin, statement.end};
    }
    place.dialect = scanner.dialect();
    return place;
}

} // namespace

CRegDocument::CRegDocument(std::string_view bytes) : m_text(decodeRegText(bytes)) {
    // Lines that end the Windows way are read on every system.
    if (m_text.text.empty())
        m_text.text = "Windows Registry Editor Version 5.00\r\n";
}

CRegistryTree CRegDocument::tree() const {
    CRegistryTree tree;
    CRegistryTree::Key* key = nullptr;
    CRegScanner scanner(m_text.text);
    for (RegStatement statement; scanner.next(statement);) {
        if (statement.kind == Kind::key) {
            key = &tree.make(statement.path);
        } else if (statement.kind == Kind::deletedKey) {
            tree.remove(statement.path);
            key = nullptr;
        }
        if (statement.kind != Kind::value || key == nullptr)
            continue;
        if (statement.value.value)
            key->values[statement.value.name] = std::move(*statement.value.value);
        else
            key->values.erase(statement.value.name);
    }
    return tree;
}

void CRegDocument::makeKey(std::string_view path) {
    if (tree().find(path) == nullptr)
        appendKey(path);
}

void CRegDocument::setValue(std::string_view path, std::string_view name, const RegistryValue& value) {
    if (findPlace(m_text.text, path, name).sectionEnd == 0)
        appendKey(path);
    const ValuePlace place = findPlace(m_text.text, path, name);
    std::string line = formatRegValue(name, value, place.dialect, lineBreak());
    if (place.statement.end == 0) {
        insertLine(place.sectionEnd, std::move(line));
        return;
    }
    m_text.text.erase(place.statement.begin, place.statement.end - place.statement.begin);
    insertLine(place.statement.begin, std::move(line));
}

void CRegDocument::removeValue(std::string_view path, std::string_view name) {
    std::vector<Range> ranges;
    bool isInKey = false;
    CRegScanner scanner(m_text.text);
    for (RegStatement statement; scanner.next(statement);) {
        if (statement.kind == Kind::key)
            isInKey = isSameName(statement.path, path);
        else if (statement.kind == Kind::value && isInKey && isSameName(statement.value.name, name))
            ranges.push_back({statement.begin, statement.end});
    }
    cut(m_text.text, ranges);
}

void CRegDocument::removeKey(std::string_view path) {
    const std::string parent(parentPath(path));
    const bool hadParent = tree().find(parent) != nullptr;
    cutKeySections(path);
    // It may have been there only because this key was.
    if (hadParent)
        makeKey(parent);
}

/// A section ends behind its last value: comments after that rather belong to what follows.
void CRegDocument::cutKeySections(std::string_view path) {
    std::vector<Range> ranges;
    bool isCutting = false;
    CRegScanner scanner(m_text.text);
    for (RegStatement statement; scanner.next(statement);) {
        if (statement.kind == Kind::text)
            continue;
        if (statement.kind == Kind::key || statement.kind == Kind::deletedKey) {
            isCutting = isSameOrBelow(statement.path, path);
            if (isCutting)
                ranges.push_back({statement.begin, statement.end});
        } else if (statement.kind == Kind::foreignKey) {
            isCutting = false;
        } else if (isCutting) {
            ranges.back().end = statement.end;
        }
    }
    cut(m_text.text, ranges);
}

std::string_view CRegDocument::lineBreak() const {
    const std::size_t lineFeed = m_text.text.find('\n');
    const bool isPlain =
        lineFeed != std::string::npos && (lineFeed == 0 || m_text.text[lineFeed - 1] != '\r');
    return isPlain ? "\n" : "\r\n";
}

void CRegDocument::insertLine(std::size_t position, std::string line) {
    line += lineBreak();
    if (position > 0 && m_text.text[position - 1] != '\n')
        line.insert(0, lineBreak());
    m_text.text.insert(position, line);
}

void CRegDocument::appendKey(std::string_view path) {
    insertLine(m_text.text.size(), "");
    insertLine(m_text.text.size(), "[" + pathForFile(path) + "]");
}

} // namespace tarvo::platform
