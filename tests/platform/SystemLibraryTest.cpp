#include "platform/SystemLibrary.h"

#include "tests/platform/ProbeModule.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

namespace tarvo::platform {
namespace {

TEST(SystemLibrary, findsSymbols) {
    const CSystemLibrary library(TARVO_PROBE_MODULE);
    ASSERT_TRUE(library);
    EXPECT_NE(library.symbol("probeModulePath"), nullptr);
    EXPECT_EQ(library.symbol("absent"), nullptr);
    EXPECT_EQ(library.symbol(""), nullptr);
    EXPECT_EQ(library.symbol(nullptr), nullptr);
    const auto probe = library.function<ProbeModulePath>("probeModulePath");
    ASSERT_NE(probe, nullptr);
    EXPECT_NE(probe(), nullptr);
}

TEST(SystemLibrary, isNothingWithoutALibrary) {
    for (const char* name : {"tarvo-no-such-library", "", "/", static_cast<const char*>(nullptr)}) {
        const CSystemLibrary library(name);
        EXPECT_FALSE(library);
        EXPECT_EQ(library.symbol("probeModulePath"), nullptr);
    }
    EXPECT_FALSE(CSystemLibrary());
    EXPECT_EQ(CSystemLibrary().function<void()>("x"), nullptr);
}

TEST(SystemLibrary, liesInAFolderOfAnyName) {
    const tests::CTemporaryFolder folder;
    // Letters of no one code page: u with diaeresis, Polish l, Greek omega, a Chinese sign.
    const std::filesystem::path place = std::filesystem::path(folder.path()) / u8"\u00fc\u0142\u03a9\u5e73";
    ASSERT_TRUE(std::filesystem::create_directory(place));
    const std::filesystem::path copy = place / std::filesystem::path(TARVO_PROBE_MODULE).filename();
    ASSERT_TRUE(std::filesystem::copy_file(TARVO_PROBE_MODULE, copy));
    const std::u8string path = copy.u8string();
    const CSystemLibrary library(reinterpret_cast<const char*>(path.c_str()));
    ASSERT_TRUE(library);
    const auto probe = library.function<ProbeModulePath>("probeModulePath");
    ASSERT_NE(probe, nullptr);
    EXPECT_EQ(std::filesystem::path(reinterpret_cast<const char8_t*>(probe())), copy)
        << "it knows its own name, too";
}

TEST(SystemLibrary, moves) {
    CSystemLibrary library(TARVO_PROBE_MODULE);
    CSystemLibrary other(std::move(library));
    EXPECT_TRUE(other);
    CSystemLibrary third;
    third = std::move(other);
    EXPECT_NE(third.symbol("probeModulePath"), nullptr);
}

} // namespace
} // namespace tarvo::platform
