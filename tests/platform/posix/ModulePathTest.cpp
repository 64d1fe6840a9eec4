#include "platform/ModulePath.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace tarvo::platform {
namespace {

TEST(PosixModulePath, doesNotDependOnTheCurrentFolder) {
    const std::string before = modulePath();
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(modulePath(), before);
    char real[4096];
    const ssize_t length = readlink("/proc/self/exe", real, sizeof real);
    ASSERT_GT(length, 0);
    EXPECT_EQ(before, std::string(real, static_cast<std::size_t>(length)));
}

} // namespace
} // namespace tarvo::platform
