#pragma once

#include "diagnostics/Log.h"
#include "diagnostics/LogLine.h"
#include "platform/Registry.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace tarvo::tests {

/// Writes a configuration into the system's registry, which the caller has redirected, and expects a log over
/// the system's services to follow it.
inline void expectLogFollowsTheRegistry() {
    using namespace diagnostics;
    const CTemporaryFolder folder;
    const std::string path = folder / "configured.log";
    platform::IRegistry& registry = platform::systemRegistry();
    platform::RegistryKey key = platform::noRegistryKey;
    ASSERT_EQ(
        registry.createKey(platform::localMachine, "SOFTWARE\\Tarvo\\TARVO Dewarping Transform DMO", key),
        platform::registryError::success);
    ASSERT_EQ(registry.setDword(key, "DBGView", 2), platform::registryError::success);
    ASSERT_EQ(registry.setDword(key, "DBGFile", 2), platform::registryError::success);
    ASSERT_EQ(registry.setDword(key, "FileSizeKB", 1), platform::registryError::success);
    ASSERT_EQ(registry.setDword(key, "NbrFiles", 2), platform::registryError::success);
    ASSERT_EQ(registry.setString(key, "logpath", path, platform::registryType::string),
              platform::registryError::success);
    registry.closeKey(key);

    Log log(systemLogServices());
    EXPECT_EQ(log.Register("TvVideoTransform", "TARVO Dewarping Transform DMO"), 1);
    TARVO_LOG(log, LogCategory::information, 1, "TARVO Dewarping Transform DMO", "initializing");
    const std::string text = readText(path);
    EXPECT_EQ(text.rfind("Log File (#0)\n", 0), 0U) << text;
    EXPECT_NE(text.find(" TvVideoTransform:_:[1] - TARVO Dewarping Transform DMO - initializing\n"),
              std::string::npos)
        << text;
    TARVO_LOG(log, LogCategory::error, 0, "", "%s", std::string(1000, 'x').c_str());
    EXPECT_EQ(readText(path), "Log File (#1)\n");
    EXPECT_EQ(readText(path + " 0.log").rfind(text, 0), 0U);
}

} // namespace tarvo::tests
