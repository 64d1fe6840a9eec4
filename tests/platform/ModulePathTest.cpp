#include "platform/ModulePath.h"

#include "platform/SystemLibrary.h"
#include "tests/platform/ProbeModule.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tarvo::platform {
namespace {

TEST(ModulePath, namesTheProgram) {
    const std::filesystem::path path = modulePath();
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_EQ(path.stem(), "test_platform");
    EXPECT_TRUE(std::filesystem::exists(path)) << path;
}

TEST(ModulePath, namesTheLibraryThatAsks) {
    const CSystemLibrary library(TARVO_PROBE_MODULE);
    ASSERT_TRUE(library);
    const std::filesystem::path path = library.function<ProbeModulePath>("probeModulePath")();
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_TRUE(std::filesystem::equivalent(path, TARVO_PROBE_MODULE)) << path;
}

} // namespace
} // namespace tarvo::platform
