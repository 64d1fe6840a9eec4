#include "tests/house/HouseRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tarvo::house {
namespace {

namespace fs = std::filesystem;

const fs::path root = TARVO_SOURCE_DIR;

std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool isSource(const fs::path& path) {
    static constexpr std::array<std::string_view, 6> extensions{".h", ".hpp", ".inl", ".c", ".cc", ".cpp"};
    return std::ranges::find(extensions, path.extension().string()) != extensions.end();
}

/// What is made, not written: build folders, the demo's pictures, hidden folders.
bool isProduced(const fs::path& topFolder) {
    const std::string name = topFolder.filename().string();
    return name.starts_with(".") || name.starts_with("build") || name == "demo-output";
}

/// All source files by their paths from the root.
std::vector<std::string> sourceFiles() {
    std::vector<std::string> result;
    for (const fs::directory_entry& top : fs::directory_iterator(root)) {
        if (top.is_regular_file() && isSource(top.path()))
            result.push_back(top.path().filename().generic_string());
        if (!top.is_directory() || isProduced(top.path()))
            continue;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top.path())) {
            if (entry.is_regular_file() && isSource(entry.path()))
                result.push_back(entry.path().lexically_relative(root).generic_string());
        }
    }
    std::ranges::sort(result);
    return result;
}

TEST(Tree, isRead) {
    const std::vector<std::string> files = sourceFiles();
    EXPECT_TRUE(std::ranges::binary_search(files, "tests/house/TreeTest.cpp"));
    EXPECT_TRUE(std::ranges::binary_search(files, "tests/house/RoomTable.h"));
}

TEST(Tree, keepsTheHouseRules) {
    const CRoomTable table(readFile(root / "cmake/rooms.txt"));
    for (const std::string& file : sourceFiles()) {
        for (const Violation& violation : checkSource(table, file, readFile(root / file)))
            ADD_FAILURE() << violation.path << ":" << violation.line << ": " << violation.message;
    }
}

} // namespace
} // namespace tarvo::house
