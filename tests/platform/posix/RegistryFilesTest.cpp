#include "platform/posix/RegistryFiles.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tarvo::platform {
namespace {

TEST(RegistryFiles, nameOneAlone) {
    const tests::CTemporaryFolder folder;
    tests::writeFile(folder / "user.reg", "");
    EXPECT_EQ(chooseRegistryFiles("/named.reg", folder / "user.reg", "/etc/x.reg"),
              (RegistryFiles{"/named.reg", "/named.reg", false}));
}

TEST(RegistryFiles, areTheUsersBeforeTheSystems) {
    const tests::CTemporaryFolder folder;
    const std::string users = folder / "user.reg";
    EXPECT_EQ(chooseRegistryFiles(nullptr, users, "/etc/x.reg"), (RegistryFiles{"/etc/x.reg", users, true}));
    tests::writeFile(users, "");
    EXPECT_EQ(chooseRegistryFiles("", users, "/etc/x.reg"), (RegistryFiles{users, users, true}));
    EXPECT_EQ(chooseRegistryFiles(nullptr, "", "/etc/x.reg"), (RegistryFiles{"/etc/x.reg", "", true}));
}

TEST(RegistryFiles, lieInTheUsersConfigurationFolder) {
    EXPECT_EQ(usersRegistryFile("/config", "/home/me"), "/config/tarvo/registry.reg");
    EXPECT_EQ(usersRegistryFile(nullptr, "/home/me"), "/home/me/.config/tarvo/registry.reg");
    EXPECT_EQ(usersRegistryFile("", "/home/me"), "/home/me/.config/tarvo/registry.reg");
    EXPECT_EQ(usersRegistryFile("relative", "/home/me"), "/home/me/.config/tarvo/registry.reg");
    EXPECT_EQ(usersRegistryFile(nullptr, nullptr), "");
    EXPECT_EQ(usersRegistryFile(nullptr, "relative"), "");
}

TEST(RegistryFiles, followTheEnvironment) {
    setenv("TARVO_REGISTRY", "/named.reg", 1);
    EXPECT_EQ(registryFiles(), (RegistryFiles{"/named.reg", "/named.reg", false}));
    unsetenv("TARVO_REGISTRY");
    const tests::CTemporaryFolder folder;
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    EXPECT_EQ(registryFiles().write, folder / "tarvo/registry.reg");
    EXPECT_EQ(registryFiles().read, "/etc/tarvo/registry.reg");
}

} // namespace
} // namespace tarvo::platform
