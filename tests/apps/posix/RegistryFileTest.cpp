#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace tarvo::apps {
namespace {

class RegistryFile : public CAppTest {
protected:
    ~RegistryFile() override { unsetenv("TARVO_REGISTRY"); }
};

TEST_F(RegistryFile, keepsWhatElseStandsInIt) {
    const std::string before = "; mine\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarvo]\n\"DBGView\"=dword:00000002\n";
    writeBytes(file("registry.reg"), before);
    setenv("TARVO_REGISTRY", fileText("registry.reg").c_str(), 1);
    const auto contents = [&] {
        const auto bytes = readBytes(file("registry.reg"));
        return std::string(bytes.begin(), bytes.end());
    };
    ASSERT_EQ(run({"register"}).status, 0);
    EXPECT_THAT(contents(), testing::StartsWith(before));
    EXPECT_GT(contents().size(), before.size());
    ASSERT_EQ(run({"unregister"}).status, 0);
    EXPECT_THAT(contents(), testing::StartsWith(before));
}

TEST_F(RegistryFile, thatCannotBeWrittenIsReported) {
    setenv("TARVO_REGISTRY", fileText("absent/registry.reg").c_str(), 1);
    for (const std::string command : {"register", "unregister"}) {
        const Outcome outcome = run({command});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, testing::StartsWith("tarvo-dewarp: " + command + "ing the module failed: "));
    }
    EXPECT_TRUE(names().empty());
}

} // namespace
} // namespace tarvo::apps
