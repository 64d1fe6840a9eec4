#include "tests/house/HouseRules.h"

#include "tests/house/SourceScan.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace tarvo::house {
namespace {

/// The standard library's headers alone have neither a dot nor a slash in their names.
bool isStandardHeader(const std::string& name) {
    static const std::regex pattern("[a-z0-9_]+");
    return std::regex_match(name, pattern);
}

/// What is wrong with an include; empty if nothing is.
std::string judgeInclude(const CRoomTable& table, const Room& room, const Include& include) {
    if (include.form == IncludeForm::computed)
        return "the include of " + include.target + " hides what it includes";
    const Room* target = table.roomOf(include.target);
    if (include.form == IncludeForm::angled) {
        if (target != nullptr && include.target.find('/') != std::string::npos)
            return "our own <" + include.target + "> belongs in quotes";
        if (room.standardLibraryOnly && !isStandardHeader(include.target))
            return room.name + " includes nothing but the standard library, not <" + include.target + ">";
        return {};
    }
    if (target == nullptr)
        return "\"" + include.target + "\" does not start with a room: includes are written from the root";
    if (!mayInclude(room, *target))
        return room.name + " must not know " + target->name + ": \"" + include.target + "\"";
    return {};
}

class CChecker {
public:
    CChecker(const CRoomTable& table, std::string_view path) : m_table(table), m_path(path) {}

    std::vector<Violation> check(std::string_view text) {
        const Room* room = m_table.roomOf(m_path);
        if (room == nullptr) {
            add(0, "belongs to no room");
            return m_violations;
        }
        const SourceScan scan = scanSource(text);
        for (const Include& include : scan.includes) {
            if (const std::string message = judgeInclude(m_table, *room, include); !message.empty())
                add(include.line, message);
        }
        static const std::regex systemCheck(
            R"(\b(_WIN32|_WIN64|__MINGW32__|__MINGW64__|__linux__|__unix__)\b|<\s*[Ww]indows\.h\s*>)");
        static const std::regex wideString(R"(\bwstring(_view)?\b)");
        if (!room->systemChecksAllowed)
            addMatches(scan.code, systemCheck, "asks which system it is on: ");
        if (!room->anything) {
            addMatches(scan.code, wideString, "use an alias over OLECHAR instead of std::");
            for (const int line : scan.wideLiteralLines)
                add(line, "write OLESTR(\"…\") or a u literal instead of a wide literal");
        }
        std::ranges::stable_sort(m_violations, {}, &Violation::line);
        return m_violations;
    }

private:
    void add(int line, const std::string& message) { m_violations.push_back({m_path, line, message}); }

    void addMatches(const std::string& code, const std::regex& pattern, const std::string& message) {
        std::istringstream lines(code);
        int number = 1;
        for (std::string line; std::getline(lines, line); ++number) {
            if (std::smatch match; std::regex_search(line, match, pattern))
                add(number, message + match.str());
        }
    }

    const CRoomTable& m_table;
    std::string m_path;
    std::vector<Violation> m_violations;
};

} // namespace

std::vector<Violation> checkSource(const CRoomTable& table, std::string_view path, std::string_view text) {
    return CChecker(table, path).check(text);
}

} // namespace tarvo::house
