#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarvo::house {

/// How an include directive names its file.
enum class IncludeForm { quoted, angled, computed };

/// One include directive of a source text.
struct Include {
    /// Counted from 1.
    int line;
    IncludeForm form;
    /// What stands between the quotes or brackets; for a computed include the macro.
    std::string target;
};

/// What the house rules want to know of a source text.
struct SourceScan {
    /// The text line by line without comments and without the insides of its literals, so that a rule does
    /// not trip over a word somebody merely writes about.
    std::string code;
    std::vector<Include> includes;
    /// Lines (from 1) with a wide string or character literal.
    std::vector<int> wideLiteralLines;
};

/// Scans C++ source text. Knows comments, literals (raw ones too) and digit separators, and nothing else of
/// the language; an unfinished literal ends with its line, an unfinished comment with the text.
SourceScan scanSource(std::string_view text);

} // namespace tarvo::house
