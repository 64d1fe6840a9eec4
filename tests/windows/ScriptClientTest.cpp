// Scripts know the component by its registered name alone: the product is registered, the system's script
// host creates and steers its objects, and the registration is taken back.

#include "tests/windows/RegisteredProduct.h"
#include "tests/windows/RegistryTurn.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <windows.h>

namespace tarvo::tests {
namespace {

/// With a drive: the script host takes what begins with a slash for an option.
std::string fullPath(const char* path) {
    char full[MAX_PATH] = {};
    EXPECT_NE(GetFullPathNameA(path, MAX_PATH, full, nullptr), 0U);
    return full;
}

bool isClassKnown() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, "TarvoVideoTransform.DewarpingTransform", 0, KEY_READ, &key) !=
        ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

TEST(ScriptClient, steersTheTransformByName) {
    const CRegistryTurn turn;
    {
        const CRegisteredProduct product;
        EXPECT_TRUE(isClassKnown());
        const Ended ended = run("cscript.exe //nologo \"" + fullPath(TARVO_SCRIPT_CLIENT) + '"');
        EXPECT_EQ(ended.status, 0U) << ended.output;
        std::smatch counts;
        ASSERT_TRUE(
            std::regex_search(ended.output, counts, std::regex("([0-9]+) checks, ([0-9]+) failed\\s*$")))
            << ended.output;
        EXPECT_GT(std::stoi(counts[1]), 100) << "a script that ended early";
        EXPECT_EQ(counts[2], "0") << ended.output;
    }
    EXPECT_FALSE(isClassKnown());
}

} // namespace
} // namespace tarvo::tests
