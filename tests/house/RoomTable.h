#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarvo::house {

/// One line of cmake/rooms.txt, where the rules are explained.
struct Room {
    std::string name;
    int tier = 0;
    /// Of the lower tiers these rooms alone; empty without such a rule.
    std::vector<std::string> only;
    bool standardLibraryOnly = false;
    bool systemChecksAllowed = false;
    bool anything = false;
};

/// The rooms and who may include whom.
class CRoomTable {
public:
    /// Reads the table's text; throws std::invalid_argument for a line it does not understand, a room that
    /// stands there twice and an empty table.
    explicit CRoomTable(std::string_view text);

    /// The room of a file or folder, by its path from the root of the repository with forward slashes: the
    /// one with the longest name. Null if it is in no room; the pointer lives as long as the table.
    const Room* roomOf(std::string_view path) const;

    const std::vector<Room>& rooms() const { return m_rooms; }

private:
    std::vector<Room> m_rooms;
};

/// Whether a file of one room may include a header of the other.
bool mayInclude(const Room& from, const Room& to);

} // namespace tarvo::house
