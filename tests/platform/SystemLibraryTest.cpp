#include "platform/SystemLibrary.h"

#include "tests/platform/ProbeModule.h"

#include <gtest/gtest.h>

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
