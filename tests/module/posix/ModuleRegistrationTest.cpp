#include "tests/module/ExpectedKeys.h"
#include "tests/module/LoadedModule.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

/// A registry file of the test's own, which the module finds through the environment.
class ModuleRegistration : public testing::Test {
protected:
    ModuleRegistration() { setenv("TARVO_REGISTRY", m_file.c_str(), 1); }
    ~ModuleRegistration() override { unsetenv("TARVO_REGISTRY"); }

    Snapshot keys() const { return snapshotOf(readFile(m_file)); }

    CTemporaryFolder m_folder;
    std::string m_file = m_folder / "registry.reg";
};

TEST_F(ModuleRegistration, writesEverythingAndRemovesIt) {
    const CLoadedModule module;
    const std::string path = std::filesystem::canonical(TARVO_PROBE_MODULE).string();
    Snapshot expected = allClassKeys(path);
    expected.merge(mediaObjectKeys());
    ASSERT_EQ(module.registerServer(), S_OK);
    EXPECT_EQ(keys(), expected);
    ASSERT_EQ(module.registerServer(), S_OK);
    EXPECT_EQ(keys(), expected);

    ASSERT_EQ(module.unregisterServer(), S_OK);
    EXPECT_EQ(keys(), (Snapshot{{"CLSID", {}},
                                {"DirectShow", {}},
                                {"DirectShow\\MediaObjects", {}},
                                {"DirectShow\\MediaObjects\\Categories", {}},
                                {"DirectShow\\MediaObjects\\Categories\\"
                                 "D990EE14-776C-4723-BE46-3DA2F56F10B9",
                                 {}}}));
    EXPECT_EQ(module.unregisterServer(), HRESULT(0x80070002U)) << "the media object is not there";
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST_F(ModuleRegistration, removesNothingIfTheMediaObjectIsNotRecorded) {
    const CLoadedModule module;
    ASSERT_EQ(module.registerServer(), S_OK);
    std::string text = readFile(m_file);
    text += "[-HKEY_CLASSES_ROOT\\DirectShow]\r\n";
    writeFile(m_file, text);
    EXPECT_EQ(module.unregisterServer(), HRESULT(0x80070002U));
    EXPECT_EQ(readFile(m_file), text);
}

TEST_F(ModuleRegistration, keepsTheRestOfTheFile) {
    const std::string before = "; mine\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo]\n\"DBGView\"=dword:00000002\n";
    writeFile(m_file, before);
    const CLoadedModule module;
    ASSERT_EQ(module.registerServer(), S_OK);
    EXPECT_TRUE(readFile(m_file).starts_with(before));
    ASSERT_EQ(module.unregisterServer(), S_OK);
    EXPECT_TRUE(readFile(m_file).starts_with(before));
}

TEST_F(ModuleRegistration, reportsAStoreThatCannotBeWritten) {
    setenv("TARVO_REGISTRY", (m_folder / "absent/registry.reg").c_str(), 1);
    const CLoadedModule module;
    EXPECT_EQ(module.registerServer(), HRESULT(0x80070003U));
    EXPECT_TRUE(FAILED(module.unregisterServer()));
    EXPECT_EQ(m_folder.count(), 0);
}

/// The lines that a program prints.
std::vector<std::string> linesOf(const std::string& command) {
    std::vector<std::string> lines;
    FILE* const pipe = popen(command.c_str(), "r");
    EXPECT_NE(pipe, nullptr);
    char line[1000];
    while (pipe != nullptr && fgets(line, sizeof line, pipe) != nullptr) {
        const std::string text(line);
        lines.push_back(text.substr(0, text.find('\n')));
    }
    if (pipe != nullptr) {
        EXPECT_EQ(pclose(pipe), 0) << command;
    }
    return lines;
}

/// The names of the symbols that others can see.
std::vector<std::string> exportedNames(const std::string& module) {
    std::vector<std::string> names = linesOf("LC_ALL=C nm -D --defined-only '" + module + "'");
    for (std::string& name : names)
        name.erase(0, name.rfind(' ') + 1);
    return names;
}

class ModuleExports : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Modules, ModuleExports, testing::Values(TARVO_PROBE_MODULE, TARVO_PRODUCT_MODULE),
                         [](const auto& parameters) { return parameters.index == 0 ? "probe" : "product"; });

TEST_P(ModuleExports, areFour) {
    EXPECT_EQ(exportedNames(GetParam()),
              (std::vector<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                        "DllUnregisterServer"}));
}

TEST_P(ModuleExports, needNothingButTheStandardLibrary) {
    const std::vector<std::string> allowed{"libstdc++.so", "libm.so", "libgcc_s.so", "libc.so", "ld-linux",
                                           // of builds that are watched over
                                           "libasan.so", "libubsan.so", "libtsan.so"};
    int count = 0;
    for (const std::string& line : linesOf("LC_ALL=C objdump -p '" + std::string(GetParam()) + "'")) {
        if (line.find("NEEDED") == std::string::npos)
            continue;
        ++count;
        const std::string library = line.substr(line.rfind(' ') + 1);
        EXPECT_TRUE(std::ranges::any_of(allowed, [&](const std::string& start) {
            return library.starts_with(start);
        })) << library;
    }
    EXPECT_GT(count, 0);
}

} // namespace
} // namespace tarvo::module
