#include "tests/house/RoomTable.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace tarvo::house {
namespace {

constexpr std::string_view onlyRule = "only:";

Room parseRoom(const std::string& line) {
    std::istringstream words(line);
    Room room;
    if (!(words >> room.name >> room.tier) || room.tier < 0)
        throw std::invalid_argument("no name and tier in: " + line);
    for (std::string rule; words >> rule;) {
        if (rule.starts_with(onlyRule) && rule.size() > onlyRule.size())
            room.only.push_back(rule.substr(onlyRule.size()));
        else if (rule == "standard-library-only")
            room.standardLibraryOnly = true;
        else if (rule == "system-checks-allowed")
            room.systemChecksAllowed = true;
        else if (rule == "anything")
            room.anything = true;
        else
            throw std::invalid_argument("no rule \"" + rule + "\", in: " + line);
    }
    return room;
}

bool isInside(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

CRoomTable::CRoomTable(std::string_view text) {
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        Room room = parseRoom(line);
        if (std::ranges::find(m_rooms, room.name, &Room::name) != m_rooms.end())
            throw std::invalid_argument("a second room " + room.name);
        m_rooms.push_back(std::move(room));
    }
    if (m_rooms.empty())
        throw std::invalid_argument("a table without rooms");
}

const Room* CRoomTable::roomOf(std::string_view path) const {
    const Room* best = nullptr;
    for (const Room& room : m_rooms) {
        if (isInside(path, room.name) && (best == nullptr || room.name.size() > best->name.size()))
            best = &room;
    }
    return best;
}

bool mayInclude(const Room& from, const Room& to) {
    if (from.name == to.name || from.anything)
        return true;
    if (from.standardLibraryOnly || to.tier >= from.tier)
        return false;
    return from.only.empty() || std::ranges::find(from.only, to.name) != from.only.end();
}

} // namespace tarvo::house
