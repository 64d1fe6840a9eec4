#include "platform/Registry.h"
#include "tests/apps/AppTest.h"
#include "tests/apps/PrivateRegistry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace tarvo::apps {
namespace {

const std::string classKey = "CLSID\\{0ED28648-4566-44E3-90B0-A35A83711240}";

/// The default value of a key below HKEY_CLASSES_ROOT, none without the key.
std::optional<std::string> registered(const std::string& path) {
    platform::IRegistry& registry = platform::systemRegistry();
    platform::RegistryKey key = platform::noRegistryKey;
    if (registry.openKey(platform::classesRoot, path.c_str(), key) != platform::registryError::success) {
        return std::nullopt;
    }
    char text[1000] = {};
    std::uint32_t type = 0;
    std::uint32_t size = sizeof text;
    EXPECT_EQ(registry.queryValue(key, nullptr, type, text, size), platform::registryError::success) << path;
    registry.closeKey(key);
    return text;
}

void expectRegistered() {
    const auto module = registered(classKey + "\\InprocServer32");
    ASSERT_TRUE(module);
    EXPECT_TRUE(std::filesystem::equivalent(*module, TARVO_PRODUCT_MODULE)) << *module;
    EXPECT_EQ(registered("TarvoVideoTransform.DewarpingTransform\\CLSID"),
              "{0ED28648-4566-44E3-90B0-A35A83711240}");
}

TEST(RegisterCommand, registersAndTakesItBack) {
    const tests::CPrivateRegistry registry;
    EXPECT_EQ(registered(classKey), std::nullopt);
    for (int time = 0; time < 2; ++time) {
        const Outcome outcome = run({"register"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out + outcome.err, "");
        expectRegistered();
    }
    const Outcome outcome = run({"unregister", "--module", TARVO_PRODUCT_MODULE});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(registered(classKey), std::nullopt);
    EXPECT_EQ(registered("TarvoVideoTransform.DewarpingTransform"), std::nullopt);
}

TEST(RegisterCommand, leavesTheRegistrationWhenTheModuleIsWrong) {
    const tests::CPrivateRegistry registry;
    ASSERT_EQ(run({"register"}).status, 0);
    EXPECT_EQ(run({"register", "--module", TARVO_PLAIN_LIBRARY}).status, 1);
    EXPECT_EQ(run({"unregister", "--module", TARVO_PLAIN_LIBRARY}).status, 1);
    expectRegistered();
    EXPECT_EQ(run({"unregister"}).status, 0);
}

} // namespace
} // namespace tarvo::apps
