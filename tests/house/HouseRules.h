#pragma once

#include "tests/house/RoomTable.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarvo::house {

/// A place where a source file breaks a rule of the house.
struct Violation {
    std::string path;
    /// Counted from 1; 0 for the file as a whole.
    int line;
    std::string message;
};

/// Checks one source file, named by its path from the root of the repository, against the rules which no
/// compiler knows:
/// - includes are written from the root and lead to the own room or where the table allows;
/// - nothing asks for the system it is compiled for, except where the table allows;
/// - rooms write no wide literals and no std::wstring: wchar_t is as wide as the interfaces' characters on
/// one
///   system only.
std::vector<Violation> checkSource(const CRoomTable& table, std::string_view path, std::string_view text);

} // namespace tarvo::house
