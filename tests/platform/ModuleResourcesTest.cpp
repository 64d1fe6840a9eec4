#include "platform/ModuleResources.h"

#include "platform/SystemLibrary.h"
#include "tests/platform/ProbeModule.h"

#include <gtest/gtest.h>

#include <string>

namespace tarvo::platform {
namespace {

std::string textOf(std::span<const std::byte> resource) {
    return {reinterpret_cast<const char*>(resource.data()), resource.size()};
}

TEST(ModuleResources, areFoundByTypeAndId) {
    EXPECT_EQ(textOf(findModuleResource("PS", 214)), "first\n");
    EXPECT_EQ(textOf(findModuleResource("PS", 65535)), "second\n");
    EXPECT_EQ(textOf(findModuleResource("VS", 214)), "second\n");
}

TEST(ModuleResources, holdEveryByte) {
    // The file has each of them twice.
    const std::span<const std::byte> bytes = findModuleResource("BYTES", 1);
    ASSERT_EQ(bytes.size(), 512U);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        ASSERT_EQ(bytes[i], static_cast<std::byte>(i & 0xFF)) << i;
}

TEST(ModuleResources, areEmptyWhenAbsent) {
    EXPECT_TRUE(findModuleResource("PS", 215).empty());
    EXPECT_TRUE(findModuleResource("PSX", 214).empty());
    EXPECT_TRUE(findModuleResource("P", 214).empty());
    EXPECT_TRUE(findModuleResource("", 214).empty());
    EXPECT_TRUE(findModuleResource("PS", 0).empty());
    EXPECT_TRUE(findModuleResource(nullptr, 214).empty());
}

TEST(ModuleResources, areThoseOfTheLibraryThatAsks) {
    const CSystemLibrary library(TARVO_PROBE_MODULE);
    ASSERT_TRUE(library);
    const auto probe = library.function<ProbeResource>("probeResource");
    std::size_t size = 0;
    const void* const data = probe("PS", 214, &size);
    EXPECT_EQ(std::string(static_cast<const char*>(data), size), "second\n");
    probe("VS", 214, &size);
    EXPECT_EQ(size, 0U);
}

} // namespace
} // namespace tarvo::platform
