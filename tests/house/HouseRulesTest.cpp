#include "tests/house/HouseRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarvo::house {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// "line: message" of each violation a planted file is found guilty of.
std::vector<std::string> check(std::string_view path, std::string_view text) {
    static const CRoomTable table("shapes 0 standard-library-only\n"
                                  "system 0 system-checks-allowed\n"
                                  "paint  1\n"
                                  "stage  2\n"
                                  "model  3 only:shapes\n"
                                  "tests  4 anything\n");
    std::vector<std::string> result;
    for (const Violation& violation : checkSource(table, path, text)) {
        EXPECT_EQ(violation.path, path);
        result.push_back(std::to_string(violation.line) + ": " + violation.message);
    }
    return result;
}

TEST(HouseRules, acceptAnOrderlyFile) {
    EXPECT_THAT(check("stage/A.cpp",
                      "#include \"stage/A.h\"\n#include \"paint/fast/B.h\"\n#include <vector>\n"
                      "#include <d3d11.h>\nauto a = u\"x\"; // _WIN32, L\"y\"\n"),
                IsEmpty());
}

TEST(HouseRules, refuseAnIncludeUpwardsAndSideways) {
    EXPECT_THAT(check("paint/A.h", "\n#include \"stage/B.h\"\n"),
                ElementsAre("2: paint must not know stage: \"stage/B.h\""));
    EXPECT_THAT(check("system/A.h", "#include \"shapes/B.h\"\n"),
                ElementsAre("1: system must not know shapes: \"shapes/B.h\""));
    EXPECT_THAT(check("model/A.h", "#include \"shapes/B.h\"\n#include \"paint/B.h\"\n"),
                ElementsAre("2: model must not know paint: \"paint/B.h\""));
}

TEST(HouseRules, refuseAnIncludeNotWrittenFromTheRoot) {
    EXPECT_THAT(check("paint/A.cpp", "#include \"A.h\"\n"),
                ElementsAre("1: \"A.h\" does not start with a room: includes are written from the root"));
    EXPECT_THAT(
        check("tests/ATest.cpp", "#include \"../paint/A.h\"\n"),
        ElementsAre("1: \"../paint/A.h\" does not start with a room: includes are written from the root"));
    EXPECT_THAT(check("paint/A.cpp", "#include <stage/B.h>\n"),
                ElementsAre("1: our own <stage/B.h> belongs in quotes"));
    EXPECT_THAT(check("paint/A.cpp", "#include HEADER\n"),
                ElementsAre("1: the include of HEADER hides what it includes"));
}

TEST(HouseRules, holdPureComputationToTheStandardLibrary) {
    EXPECT_THAT(check("shapes/A.cpp", "#include <cmath>\n#include \"shapes/A.h\"\n"), IsEmpty());
    EXPECT_THAT(check("shapes/A.cpp", "#include <math.h>\n#include <sys/types.h>\n#include \"system/B.h\"\n"),
                ElementsAre("1: shapes includes nothing but the standard library, not <math.h>",
                            "2: shapes includes nothing but the standard library, not <sys/types.h>",
                            "3: shapes must not know system: \"system/B.h\""));
}

TEST(HouseRules, refuseSystemChecksWhereTheTableDoesNotAllowThem) {
    const std::string_view text = "#ifdef _WIN32\n#include <windows.h>\n#elif defined(__linux__)\n#endif\n";
    EXPECT_THAT(check("paint/A.cpp", text), ElementsAre("1: asks which system it is on: _WIN32",
                                                        "2: asks which system it is on: <windows.h>",
                                                        "3: asks which system it is on: __linux__"));
    EXPECT_THAT(check("tests/A.cpp", text).size(), 3U);
    EXPECT_THAT(check("system/A.cpp", text), IsEmpty());
    EXPECT_THAT(check("paint/A.cpp", "#if __has_include( <Windows.h> )\n#endif\nint MY_WIN32_THING;\n"),
                ElementsAre("1: asks which system it is on: <Windows.h>"));
}

TEST(HouseRules, refuseWideCharactersInRooms) {
    const std::string_view text = "auto a = L\"x\";\n\nstd::wstring b;\nstd::wstring_view c = LR\"(y)\";\n";
    EXPECT_THAT(check("system/A.cpp", text),
                ElementsAre("1: write OLESTR(\"…\") or a u literal instead of a wide literal",
                            "3: use an alias over OLECHAR instead of std::wstring",
                            "4: use an alias over OLECHAR instead of std::wstring_view",
                            "4: write OLESTR(\"…\") or a u literal instead of a wide literal"));
    EXPECT_THAT(check("tests/A.cpp", text), IsEmpty());
}

TEST(HouseRules, refuseAFileInNoRoom) {
    EXPECT_THAT(check("attic/A.cpp", "int a;\n"), ElementsAre("0: belongs to no room"));
}

} // namespace
} // namespace tarvo::house
